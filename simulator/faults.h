#pragma once

#include "simulator/command.h"

#include <optional>
#include <string>
#include <vector>

namespace simulator
{
/// How one command is to be treated beyond what an honest charger does.
struct Misbehaviour {
    bool silent = false;        ///< no answer
    bool dead = false;          ///< no answer, and no echo either until the faults are cleared
    bool lostEcho = false;      ///< the frame's last byte is not echoed
    bool unplug = false;        ///< the port goes away
    bool lazy = false;          ///< an answer as if done, but the memory stays as it was
    bool wrongChecksum = false; ///< in the answer
    bool wrongStx = false;      ///< the answer opens with 00 55 in place of 55 55
    double delay = 0;           ///< seconds of waiting before the answer
    std::optional<std::size_t> truncateTo; ///< bytes of the answer that are sent
    std::optional<std::size_t> flippedBit; ///< number of the bit in the row that is written
    std::optional<std::uint8_t> firstByte; ///< of the answer's payload
    std::optional<Bytes> rawReply;         ///< in place of the answer
    std::optional<std::uint16_t> version;  ///< bootloader version, major byte high
};

/// A fault to come: what goes wrong, and at which command.
struct Fault {
    std::string text; ///< as it was given
    Misbehaviour effect;
    std::optional<Command> command; ///< counts these commands alone; none counts all
    unsigned at = 1;                ///< the command it strikes, the next one being 1
    bool onwards = false;           ///< strikes all commands after it, too
};

/// Reads NAME[=VALUE][@WHEN], as told by faultHelp(). Nothing, with the reason in *error, for a
/// text that means no fault.
std::optional<Fault> parseFault(const std::string &text, std::string *error);

/// The faults and their grammar, for the help text; lines end in a line feed.
std::string faultHelp();

/// The faults in force. Counts commands for each from the moment it was added.
class FaultPlan
{
public:
    void add(const Fault &fault);
    void clear();
    /// The texts of faults that can still strike, in the order of adding.
    std::vector<std::string> pending() const;

    /// Counts a command and tells what is to happen to it.
    Misbehaviour strike(Command command);

private:
    struct Entry {
        Fault fault;
        unsigned seen = 0;
    };
    std::vector<Entry> entries;
};

} // namespace simulator
