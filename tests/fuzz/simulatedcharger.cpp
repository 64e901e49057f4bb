// What programs send to a simulated charger.
//
// An input: flags, then the bytes of the line, or pieces with a length byte each.

#include "fuzz/target.h"
#include "simulator/charger.h"

namespace
{
using simulator::Bytes;
using simulator::Charger;

enum Flag : std::uint8_t {
    Framed = 1, ///< the pieces are payloads, else the bytes are what arrives
    PowerOn = 2,
};

Bytes framed(fuzz::Input *input)
{
    Bytes line;
    while (!input->isEmpty()) {
        const std::size_t size = input->byte();
        const Bytes frame = simulator::encodeFrame(input->bytes(size));
        line.insert(line.end(), frame.begin(), frame.end());
    }
    return line;
}

/// The frames in a stream of bytes, each of which must be one that can be sent again.
void decode(const Bytes &line)
{
    simulator::FrameDecoder decoder;
    for (const std::uint8_t byte : line) {
        const std::optional<simulator::Frame> frame = decoder.take(byte);
        if (!frame)
            continue;
        fuzz::require(frame->raw.size() >= 3 && frame->raw.back() == simulator::etx,
                      "a frame has its control bytes");
        fuzz::require(frame->payload.size() < simulator::FrameDecoder::maximumLength,
                      "a frame is not longer than allowed");
        if (!frame->checksumRight)
            continue;
        simulator::FrameDecoder another;
        std::optional<simulator::Frame> again;
        for (const std::uint8_t sent : simulator::encodeFrame(frame->payload)) {
            fuzz::require(!again, "a frame ends with its last byte");
            again = another.take(sent);
        }
        fuzz::require(again && again->checksumRight && again->payload == frame->payload,
                      "what is sent is what arrives");
    }
}

/// An honest charger answers in frames. More words than fit a frame can be asked for all the same:
/// what comes back is then too long for the decoder.
void requireFrame(const Bytes &reply)
{
    if (reply.size() > simulator::FrameDecoder::maximumLength)
        return;
    simulator::FrameDecoder decoder;
    std::optional<simulator::Frame> frame;
    for (const std::uint8_t byte : reply) {
        fuzz::require(!frame, "a reply is one frame");
        frame = decoder.take(byte);
    }
    fuzz::require(frame && frame->checksumRight, "a reply is a good frame");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    const unsigned flags = input.byte();
    const Bytes line = flags & Framed ? framed(&input) : input.rest();
    decode(line);

    static simulator::FrameLog log;
    static const Charger newCharger(&log);
    Charger charger = newCharger; // quicker than filling its memory again
    if (flags & PowerOn)
        charger.setMode(Charger::Mode::PowerOn);
    for (const std::uint8_t byte : line) {
        const bool greeting = charger.mode() == Charger::Mode::PowerOn;
        const Charger::Reaction reaction = charger.receive(byte);
        if (!reaction.reply.empty() && !greeting)
            requireFrame(reaction.reply);
    }
    return 0;
}
