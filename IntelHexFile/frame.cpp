#include "IntelHexFile/frame.h"

#include "IntelHexFile/rs232.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace IntelHexFile
{
namespace
{
constexpr std::uint32_t longestCommand = 263;
constexpr std::uint32_t longestFrame = 524;
constexpr std::uint32_t shortestReply = 5;
constexpr std::uint32_t longestReply = 526;
constexpr int pollSize = 280;
constexpr std::clock_t replyTicks = 999999;

bool needsEscape(unsigned char byte)
{
    return byte == STX || byte == ETX || byte == escape;
}

/// A frame that is being built.
class Frame
{
public:
    Frame()
    {
        bytes[length++] = STX;
        bytes[length++] = STX;
    }

    /// False as soon as the frame is longer than limit.
    bool append(const unsigned char *payload, std::uint32_t size, std::uint32_t limit)
    {
        for (std::uint32_t i = 0; i < size; ++i) {
            appendEscaped(payload[i]);
            sum += payload[i];
            if (length > limit)
                return false;
        }
        return true;
    }

    void close()
    {
        appendEscaped(static_cast<unsigned char>(0 - sum));
        bytes[length++] = ETX;
    }

    const unsigned char *data() const { return bytes; }
    std::uint32_t size() const { return length; }

private:
    void appendEscaped(unsigned char byte)
    {
        if (needsEscape(byte))
            bytes[length++] = escape;
        bytes[length++] = byte;
    }

    /// The longest frame, an escaped checksum and the ETX.
    unsigned char bytes[longestFrame + 3];
    std::uint32_t length = 0;
    std::uint32_t sum = 0;
};

/// What has arrived of a reply. Counts on when the buffer is full, so that a reply without an end
/// is told apart from one that is only late.
class Reception
{
public:
    explicit Reception(unsigned char *buffer) : buffer(buffer)
    {
        std::memset(buffer, 0xFF, replySize);
    }

    void append(const unsigned char *bytes, std::uint32_t size)
    {
        for (std::uint32_t i = 0; i < size; ++i) {
            if (count < replySize)
                buffer[count] = bytes[i];
            ++count;
            escapesBeforeLast = escapes;
            escapes = bytes[i] == escape ? escapes + 1 : 0;
            last = bytes[i];
        }
    }

    /// An ETX behind an odd number of escapes is data.
    bool isComplete() const
    {
        return count >= shortestReply && endsWithEtx() && escapesBeforeLast % 2 == 0;
    }

    bool endsWithEtx() const { return last == ETX; }
    std::uint32_t size() const { return count; }

private:
    unsigned char *buffer;
    std::uint32_t count = 0;
    std::uint32_t escapes = 0;
    std::uint32_t escapesBeforeLast = 0;
    unsigned char last = 0;
};

/// False when the reply did not become complete in time.
bool receive(Reception *reception, int port, std::uint32_t echoCount)
{
    const std::clock_t start = std::clock();
    unsigned char polled[pollSize];
    while (!reception->isComplete()) {
        const auto size = static_cast<std::uint32_t>(PollComport(port, polled, pollSize));
        const std::uint32_t echo = std::min(size, echoCount);
        echoCount -= echo;
        reception->append(polled + echo, size - echo);
        // The clock counts processor time, so this loop must not sleep.
        if (!reception->isComplete() && std::clock() - start > replyTicks)
            return false;
    }
    return true;
}

/// Oddities that are worth a word but do not fail a command.
void diagnose(const unsigned char *cmd, const unsigned char *buffer, const Reception &reception)
{
    if (buffer[0] != STX)
        std::printf("\nno stx char!");
    if (buffer[1] != STX)
        std::printf("\nno second stx char!");
    if (!reception.endsWithEtx())
        std::printf("\nno ending char!");
    const unsigned char received = buffer[2] == escape ? buffer[3] : buffer[2];
    if (received != cmd[0]) {
        std::printf("cmd does not match!");
        std::printf("%d != %d", received, cmd[0]);
    }
}

} // namespace

std::uint32_t sendcmd(const unsigned char *cmd, std::uint32_t cmdLen, const unsigned char *data,
                      std::uint32_t dataLen, int port)
{
    Frame frame;
    if (!frame.append(cmd, cmdLen, longestCommand) || !frame.append(data, dataLen, longestFrame))
        return 0;
    frame.close();
    const int written = SendBuf(port, frame.data(), static_cast<int>(frame.size()));
    return written == -1 ? 0 : static_cast<std::uint32_t>(written);
}

int receivecmd(const unsigned char *cmd, unsigned char *buffer, std::uint32_t *length, int port,
               std::uint32_t echoCount)
{
    Reception reception(buffer);
    if (!receive(&reception, port, echoCount)) {
        std::printf("\nTimeout!");
        return 0;
    }
    diagnose(cmd, buffer, reception);
    if (reception.size() > longestReply) {
        std::printf("no data!");
        return 0;
    }

    const std::uint32_t end = reception.size() - 1;
    std::uint32_t unescaped = 0;
    std::uint32_t sum = 0;
    for (std::uint32_t i = 2; i < end; ++i) {
        if (buffer[i] == escape && i + 1 < end)
            ++i;
        sum += buffer[i];
        buffer[unescaped++] = buffer[i];
    }
    // The walk ends with the checksum, which had its escape removed like the payload.
    *length = unescaped - 1;
    const unsigned char checksum = buffer[*length];
    const auto expected = static_cast<unsigned char>(checksum - sum);
    if (checksum != expected) {
        std::printf("checksum error: ");
        std::printf("%d != %d", checksum, expected);
        return 0;
    }
    buffer[*length] = '\0';
    return 1;
}

} // namespace IntelHexFile
