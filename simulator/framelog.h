#pragma once

#include "simulator/bytes.h"

#include <ostream>
#include <string>

namespace simulator
{
/// What goes over the line, a line of text each: "in  read 55 55 ...", "out read 55 55 ..." and
/// "--  left the bootloader" for what happens beside it.
class FrameLog
{
public:
    /// Writes to *stream, which must outlive the log; null writes nothing.
    explicit FrameLog(std::ostream *stream = nullptr) : stream(stream) {}

    void in(const std::string &command, const Bytes &frame) { line("in  " + command, frame); }
    void out(const std::string &command, const Bytes &frame) { line("out " + command, frame); }
    void note(const std::string &text) { line("--  " + text, {}); }

private:
    // Flushed line by line, so that a test can read along.
    void line(const std::string &head, const Bytes &frame)
    {
        if (stream)
            *stream << head << (frame.empty() ? "" : " ") << toHex(frame) << std::endl;
    }

    std::ostream *stream;
};

} // namespace simulator
