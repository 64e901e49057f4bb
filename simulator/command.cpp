#include "simulator/command.h"

#include <utility>

namespace simulator
{
namespace
{
const std::pair<Command, const char *> names[] = {
    {Command::Version, "version"},
    {Command::Reset, "reset"},
    {Command::Read, "read"},
    {Command::Write, "write"},
    {Command::Erase, "erase"},
    {Command::ReadEeprom, "eeprom-read"},
    {Command::WriteEeprom, "eeprom-write"},
    {Command::VerifyOk, "verify-ok"},
    {Command::Sync, "sync"},
};
} // namespace

Command commandOf(const Bytes &payload)
{
    if (payload.size() == 1 && payload[0] == 0x08)
        return Command::VerifyOk;
    if (payload.size() == 2 && payload[0] == 0x00)
        return payload[1] == 0x00   ? Command::Reset
               : payload[1] == 0x02 ? Command::Version
                                    : Command::Unknown;
    if (payload.size() < commandLength)
        return Command::Unknown;
    const bool withData = payload.size() > commandLength;
    switch (payload[0]) {
    case 0x01:
        return withData ? Command::Unknown : Command::Read;
    case 0x02:
        return withData ? Command::Write : Command::Unknown;
    case 0x03:
        return withData ? Command::Unknown : Command::Erase;
    case 0x04:
        return withData ? Command::Unknown : Command::ReadEeprom;
    case 0x05:
        return withData ? Command::WriteEeprom : Command::Unknown;
    default:
        return Command::Unknown;
    }
}

std::string commandName(Command command)
{
    for (const auto &name : names) {
        if (name.first == command)
            return name.second;
    }
    return "unknown";
}

std::optional<Command> commandByName(const std::string &text)
{
    for (const auto &name : names) {
        if (name.second == text)
            return name.first;
    }
    return std::nullopt;
}

} // namespace simulator
