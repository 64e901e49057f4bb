#include "simulator/charger.h"

namespace simulator
{
namespace
{
// First payload byte of an answer that tells that a command was refused: the command's own byte
// would mean success, and silence would look like a broken line.
constexpr std::uint8_t refused = 0xFF;

std::size_t addressOf(const Bytes &payload)
{
    return payload[2] | payload[3] << 8 | payload[4] << 16;
}

std::uint16_t versionFor(const Misbehaviour &how)
{
    return how.version.value_or(Charger::defaultVersion);
}

Bytes spoil(Bytes frame, const Misbehaviour &how)
{
    if (how.rawReply)
        return *how.rawReply;
    if (how.wrongStx)
        frame[0] = 0x00;
    if (how.truncateTo && *how.truncateTo < frame.size())
        frame.resize(*how.truncateTo);
    return frame;
}

// A frame whose checksum is off by one.
Bytes encodeWithWrongChecksum(const Bytes &payload)
{
    Bytes other = payload;
    other.back() = static_cast<std::uint8_t>(other.back() + 1);
    Bytes right = encodeFrame(payload);
    const Bytes wrong = encodeFrame(other);
    // Both frames end in checksum and ETX, with an escape before the checksum where it needs one.
    const auto tail = [](const Bytes &frame) {
        const std::size_t size = frame.size();
        const std::uint8_t checksum = frame[size - 2];
        const bool escaped = checksum == stx || checksum == etx || checksum == escape;
        return escaped ? size - 3 : size - 2;
    };
    right.resize(tail(right));
    right.insert(right.end(), wrong.begin() + static_cast<std::ptrdiff_t>(tail(wrong)),
                 wrong.end());
    return right;
}
} // namespace

Charger::Reaction Charger::receive(std::uint8_t byte)
{
    Reaction reaction;
    reaction.echo = !lineDead;
    if (lineDead || currentMode == Mode::Left)
        return reaction;
    if (currentMode == Mode::PowerOn)
        return receiveGreeting(byte);
    if (const std::optional<Frame> frame = decoder.take(byte))
        return execute(*frame);
    return reaction;
}

void Charger::lineIdle()
{
    decoder.reset();
    greetingBytes = 0;
}

void Charger::setMode(Mode mode)
{
    if (mode == currentMode)
        return;
    currentMode = mode;
    lineIdle();
    log->note(mode == Mode::Left         ? "left the bootloader"
              : mode == Mode::Bootloader ? "in the bootloader"
                                         : "powered on");
}

void Charger::clearFaults()
{
    faults.clear();
    lineDead = false;
}

Charger::Reaction Charger::receiveGreeting(std::uint8_t byte)
{
    constexpr int greetingLength = 3;
    greetingBytes = byte == stx ? greetingBytes + 1 : 0;
    if (greetingBytes < greetingLength)
        return {};
    log->in(commandName(Command::Sync), Bytes(greetingLength, stx));
    greetingBytes = 0;

    const Misbehaviour how = faults.strike(Command::Sync);
    Reaction reaction;
    reaction.unplug = how.unplug;
    reaction.delay = how.delay;
    lineDead = how.dead;
    if (how.silent || how.dead || how.unplug)
        return reaction;
    const std::uint16_t version = versionFor(how);
    reaction.reply = {'C', 'A', static_cast<std::uint8_t>(version >> 8),
                      static_cast<std::uint8_t>(version)};
    log->out(commandName(Command::Sync), reaction.reply);
    setMode(Mode::Bootloader);
    return reaction;
}

Charger::Reaction Charger::execute(const Frame &frame)
{
    const Command command = commandOf(frame.payload);
    log->in(commandName(command), frame.raw);
    Reaction reaction;
    if (!frame.checksumRight) {
        log->note("wrong checksum, no answer");
        return reaction;
    }
    ++commands;
    const Misbehaviour how = faults.strike(command);
    reaction.echo = !how.lostEcho && !how.dead;
    reaction.unplug = how.unplug;
    reaction.delay = how.delay;
    lineDead = how.dead;
    if (how.silent || how.dead || how.unplug)
        return reaction;

    Bytes payload = answer(command, frame.payload, how);
    if (payload.empty())
        return reaction;
    if (how.firstByte)
        payload[0] = *how.firstByte;
    reaction.reply =
        spoil(how.wrongChecksum ? encodeWithWrongChecksum(payload) : encodeFrame(payload), how);
    log->out(commandName(command), reaction.reply);
    return reaction;
}

Bytes Charger::answer(Command command, const Bytes &payload, const Misbehaviour &how)
{
    switch (command) {
    case Command::Version: {
        const std::uint16_t version = versionFor(how);
        return {payload[0],
                payload[1],
                0,
                0,
                static_cast<std::uint8_t>(version >> 8),
                static_cast<std::uint8_t>(version)};
    }
    case Command::Reset:
        setMode(Mode::Left);
        return {};
    case Command::Read:
    case Command::ReadEeprom: {
        Bytes reply(payload.begin(), payload.begin() + commandLength);
        const Bytes data = command == Command::Read ? flash.read(addressOf(payload), payload[1])
                                                    : eeprom.read(addressOf(payload), payload[1]);
        reply.insert(reply.end(), data.begin(), data.end());
        return reply;
    }
    case Command::Write: {
        const Bytes row(payload.begin() + commandLength, payload.end());
        if (payload[1] != 1 || (!how.lazy && !flash.writeRow(addressOf(payload), row)))
            return answerOf(false, payload[0]);
        if (how.flippedBit)
            flash.flipBit(addressOf(payload), *how.flippedBit);
        return answerOf(true, payload[0]);
    }
    case Command::WriteEeprom: {
        const Bytes row(payload.begin() + commandLength, payload.end());
        const bool whole = row.size() == payload[1] * EepromMemory::wordSize;
        return answerOf(whole && (how.lazy || eeprom.write(addressOf(payload), row)), payload[0]);
    }
    case Command::Erase:
        return answerOf(how.lazy || flash.erasePages(addressOf(payload), payload[1]), payload[0]);
    case Command::VerifyOk:
        return {payload[0]};
    case Command::Sync:
    case Command::Unknown:
        break;
    }
    return {};
}

Bytes Charger::answerOf(bool done, std::uint8_t command) const
{
    if (done)
        return {command};
    log->note("refused");
    return {refused};
}

} // namespace simulator
