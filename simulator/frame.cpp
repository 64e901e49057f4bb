#include "simulator/frame.h"

#include <numeric>

namespace simulator
{
namespace
{
std::uint8_t sumOf(const Bytes &bytes)
{
    return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0u));
}

void appendEscaped(Bytes *frame, std::uint8_t byte)
{
    if (byte == stx || byte == etx || byte == escape)
        frame->push_back(escape);
    frame->push_back(byte);
}
} // namespace

Bytes encodeFrame(const Bytes &payload)
{
    Bytes frame{stx, stx};
    for (const std::uint8_t byte : payload)
        appendEscaped(&frame, byte);
    appendEscaped(&frame, static_cast<std::uint8_t>(0u - sumOf(payload)));
    frame.push_back(etx);
    return frame;
}

std::optional<Frame> FrameDecoder::take(std::uint8_t byte)
{
    switch (state) {
    case State::Outside:
        if (byte == stx) {
            raw = {byte};
            state = State::FirstStx;
        }
        return std::nullopt;
    case State::FirstStx:
        raw.push_back(byte);
        content.clear();
        state = byte == stx ? State::Inside : State::Outside;
        return std::nullopt;
    case State::Escaped:
        raw.push_back(byte);
        content.push_back(byte);
        state = State::Inside;
        break;
    case State::Inside:
        if (byte == stx) {
            // More than two STX in a row are still the opening of one frame.
            const bool opening = content.empty();
            raw = opening ? Bytes{stx, stx} : Bytes{stx};
            state = opening ? State::Inside : State::FirstStx;
            return std::nullopt;
        }
        raw.push_back(byte);
        if (byte == etx)
            return finish();
        if (byte == escape)
            state = State::Escaped;
        else
            content.push_back(byte);
        break;
    }
    if (content.size() > maximumLength)
        reset();
    return std::nullopt;
}

void FrameDecoder::reset()
{
    state = State::Outside;
    raw.clear();
    content.clear();
}

std::optional<Frame> FrameDecoder::finish()
{
    Frame frame;
    frame.raw = raw;
    frame.payload = content;
    frame.checksumRight = !content.empty() && sumOf(content) == 0;
    if (!content.empty())
        frame.payload.pop_back();
    reset();
    return frame;
}

} // namespace simulator
