#pragma once

#include "simulator/bytes.h"

#include <optional>
#include <string>

namespace simulator
{
/// What a charger can be asked. Sync is no frame: it is the greeting of a charger at power-on.
enum class Command {
    Version,
    Reset,
    Read,
    Write,
    Erase,
    ReadEeprom,
    WriteEeprom,
    VerifyOk,
    Sync,
    Unknown,
};

/// Length of what stands before the data in a payload: command, count and address.
constexpr std::size_t commandLength = 5;

/// Which command a payload holds; Unknown also where its bytes are too few.
Command commandOf(const Bytes &payload);

/// Lower-case word, such as "read" or "eeprom-write", the same in faults and in the log.
std::string commandName(Command command);
/// The command of that name, but none for "unknown".
std::optional<Command> commandByName(const std::string &name);

} // namespace simulator
