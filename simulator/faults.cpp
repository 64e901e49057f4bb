#include "simulator/faults.h"

#include <algorithm>
#include <functional>

namespace simulator
{
namespace
{
enum class Lasting { Once, Onwards };

using Setter = std::function<bool(const std::string &value, Misbehaviour *effect)>;

struct Kind {
    std::string name;
    Lasting lasting;
    std::optional<Command> command; // counted where the text names none
    Setter set;                     // false where the value does not do
    std::string help;
};

Setter flag(bool Misbehaviour::*member)
{
    return [member](const std::string &value, Misbehaviour *effect) {
        effect->*member = true;
        return value.empty();
    };
}

Setter number(std::optional<std::size_t> Misbehaviour::*member, std::size_t unsaid)
{
    return [member, unsaid](const std::string &value, Misbehaviour *effect) {
        unsigned long parsed = unsaid;
        if (!value.empty() && !parseNumber(value, &parsed))
            return false;
        effect->*member = parsed;
        return true;
    };
}

bool setDelay(const std::string &value, Misbehaviour *effect)
{
    return parseSeconds(value, &effect->delay);
}

bool setFirstByte(const std::string &value, Misbehaviour *effect)
{
    Bytes bytes{0xFF};
    if (!value.empty() && (!fromHex(value, &bytes) || bytes.size() != 1))
        return false;
    effect->firstByte = bytes[0];
    return true;
}

bool setRawReply(const std::string &value, Misbehaviour *effect)
{
    Bytes bytes;
    if (!fromHex(value, &bytes))
        return false;
    effect->rawReply = bytes;
    return true;
}

bool setVersion(const std::string &value, Misbehaviour *effect)
{
    Bytes bytes;
    if (!fromHex(value, &bytes) || bytes.size() != 2)
        return false;
    effect->version = static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
    return true;
}

const std::vector<Kind> &kinds()
{
    static const std::vector<Kind> all{
        {"silent",
         Lasting::Onwards,
         {},
         flag(&Misbehaviour::silent),
         "no answer; bytes are echoed"},
        {"dead", Lasting::Onwards, {}, flag(&Misbehaviour::dead), "no answer and no echo"},
        {"unplug", Lasting::Once, {}, flag(&Misbehaviour::unplug), "the cable is pulled"},
        {"lost-echo",
         Lasting::Once,
         {},
         flag(&Misbehaviour::lostEcho),
         "the last byte of the command is not echoed"},
        {"bad-checksum",
         Lasting::Once,
         {},
         flag(&Misbehaviour::wrongChecksum),
         "the answer's checksum is wrong"},
        {"bad-stx",
         Lasting::Once,
         {},
         flag(&Misbehaviour::wrongStx),
         "the answer begins with 00 in place of 55"},
        {"truncate[=BYTES]",
         Lasting::Once,
         {},
         number(&Misbehaviour::truncateTo, 4),
         "the answer ends after BYTES, or 4"},
        {"wrong-reply[=HEX]",
         Lasting::Once,
         {},
         setFirstByte,
         "the answer's first payload byte is HEX, or FF"},
        {"reply=HEX", Lasting::Once, {}, setRawReply, "these bytes in place of the answer"},
        {"lazy",
         Lasting::Once,
         {},
         flag(&Misbehaviour::lazy),
         "an answer as if done, the memory stays"},
        {"flip-bit[=BIT]", Lasting::Once, Command::Write, number(&Misbehaviour::flippedBit, 0),
         "a written row has bit BIT, or 0, turned over"},
        {"slow=SECONDS", Lasting::Onwards, {}, setDelay, "the answer waits"},
        {"slow-erase=SECONDS", Lasting::Onwards, Command::Erase, setDelay,
         "the answer to an erase waits"},
        {"version=XXYY", Lasting::Onwards, {}, setVersion, "another bootloader version"},
    };
    return all;
}

std::string bareName(const Kind &kind)
{
    return kind.name.substr(0, kind.name.find_first_of("[="));
}

bool parseWhen(std::string when, Fault *fault)
{
    if (!when.empty() && when.back() == '+') {
        fault->onwards = true;
        when.pop_back();
    }
    const std::size_t colon = when.find(':');
    std::string count = when;
    const std::string word = when.substr(0, colon);
    if (const std::optional<Command> command = commandByName(word)) {
        fault->command = command;
        count = colon == std::string::npos ? "1" : when.substr(colon + 1);
    }
    unsigned long parsed = 0;
    if (!parseNumber(count, &parsed) || parsed == 0)
        return false;
    fault->at = static_cast<unsigned>(parsed);
    return true;
}

void join(Misbehaviour *sum, const Misbehaviour &more)
{
    sum->silent |= more.silent;
    sum->dead |= more.dead;
    sum->lostEcho |= more.lostEcho;
    sum->unplug |= more.unplug;
    sum->lazy |= more.lazy;
    sum->wrongChecksum |= more.wrongChecksum;
    sum->wrongStx |= more.wrongStx;
    sum->delay += more.delay;
    if (more.truncateTo)
        sum->truncateTo = more.truncateTo;
    if (more.flippedBit)
        sum->flippedBit = more.flippedBit;
    if (more.firstByte)
        sum->firstByte = more.firstByte;
    if (more.rawReply)
        sum->rawReply = more.rawReply;
    if (more.version)
        sum->version = more.version;
}
} // namespace

std::optional<Fault> parseFault(const std::string &text, std::string *error)
{
    const std::size_t at = text.find('@');
    const std::string what = text.substr(0, at);
    const std::size_t equals = what.find('=');
    const std::string name = what.substr(0, equals);
    const std::string value = equals == std::string::npos ? std::string() : what.substr(equals + 1);

    for (const Kind &kind : kinds()) {
        if (bareName(kind) != name)
            continue;
        Fault fault;
        fault.text = text;
        fault.command = kind.command;
        fault.onwards = kind.lasting == Lasting::Onwards;
        if ((equals != std::string::npos && value.empty()) || !kind.set(value, &fault.effect)) {
            *error = "the fault is written " + kind.name + "[@WHEN]";
            return std::nullopt;
        }
        if (at != std::string::npos && !parseWhen(text.substr(at + 1), &fault)) {
            *error = "\"" + text.substr(at + 1) + "\" is neither N, COMMAND nor COMMAND:N";
            return std::nullopt;
        }
        return fault;
    }
    *error = "there is no fault \"" + name + "\"";
    return std::nullopt;
}

std::string faultHelp()
{
    std::string text;
    for (const Kind &kind : kinds()) {
        std::string line = "  " + kind.name;
        line.resize(std::max<std::size_t>(line.size() + 2, 24), ' ');
        text += line + kind.help + (kind.lasting == Lasting::Onwards ? " (lasting)\n" : "\n");
    }
    text +=
        "WHEN is N, COMMAND or COMMAND:N, the N-th command from now on, 1 where nothing is said;\n"
        "COMMAND is one of version, read, write, erase, eeprom-read, eeprom-write, verify-ok,\n"
        "reset, sync. A lasting fault stays in force; with \"+\" behind WHEN any fault does.\n";
    return text;
}

void FaultPlan::add(const Fault &fault)
{
    entries.push_back({fault, 0});
}

void FaultPlan::clear()
{
    entries.clear();
}

std::vector<std::string> FaultPlan::pending() const
{
    std::vector<std::string> texts;
    for (const Entry &entry : entries) {
        if (entry.fault.onwards || entry.seen < entry.fault.at)
            texts.push_back(entry.fault.text);
    }
    return texts;
}

Misbehaviour FaultPlan::strike(Command command)
{
    Misbehaviour sum;
    for (Entry &entry : entries) {
        if (entry.fault.command && *entry.fault.command != command)
            continue;
        if (entry.seen <= entry.fault.at)
            ++entry.seen;
        if (entry.seen == entry.fault.at || (entry.fault.onwards && entry.seen > entry.fault.at))
            join(&sum, entry.fault.effect);
    }
    return sum;
}

} // namespace simulator
