#pragma once

#include "simulator/bytes.h"

#include <optional>

namespace simulator
{
// A frame on the line: STX STX, payload, checksum, ETX. The escape stands before each payload or
// checksum byte that looks like a control byte. Payload and checksum add up to zero modulo 256.
constexpr std::uint8_t stx = 0x55;
constexpr std::uint8_t etx = 0x04;
constexpr std::uint8_t escape = 0x05;

/// The bytes that carry payload over the line.
Bytes encodeFrame(const Bytes &payload);

/// One frame as it was received.
struct Frame {
    Bytes raw;     ///< all bytes, control bytes included
    Bytes payload; ///< unescaped, without the checksum
    bool checksumRight = false;
};

/// Finds frames in a stream of bytes that arrives in any portions. Knows no commands. Bytes outside
/// of a frame are passed over, and an unescaped STX inside one begins a new frame.
class FrameDecoder
{
public:
    /// Longest payload with its checksum; what runs on beyond it is noise.
    static constexpr std::size_t maximumLength = 1024;

    /// Takes the next byte; returns the frame that it completes.
    std::optional<Frame> take(std::uint8_t byte);

    /// Forgets a frame in progress.
    void reset();

private:
    enum class State { Outside, FirstStx, Inside, Escaped };

    std::optional<Frame> finish();

    State state = State::Outside;
    Bytes raw;
    Bytes content; // payload and checksum
};

} // namespace simulator
