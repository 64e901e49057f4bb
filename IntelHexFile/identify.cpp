#include "IntelHexFile/bootloader.h"
#include "IntelHexFile/rs232.h"

namespace IntelHexFile
{
namespace
{
constexpr unsigned char sync[] = {STX, STX, STX};

/// Finds the version behind "CA" in what arrives.
class Answer
{
public:
    explicit Answer(unsigned char *version) : version(version) {}

    void take(unsigned char byte)
    {
        static constexpr unsigned char expected[] = {'C', 'A'};
        if (matched < sizeof expected)
            matched += byte == expected[matched] ? 1 : 0;
        else if (taken < versionSize)
            version[taken++] = byte;
    }

    bool isComplete() const { return taken == versionSize; }

private:
    static constexpr std::size_t versionSize = 2;
    unsigned char *version;
    std::size_t matched = 0;
    std::size_t taken = 0;
};

/// Shows that the tool is still waiting.
class Spinner
{
public:
    void show(std::clock_t elapsed)
    {
        static const char *const pictures[] = {"    ", ".   ", "..  ", "... ", "...."};
        const auto picture = static_cast<int>(elapsed * 4 / CLOCKS_PER_SEC % 10 / 2);
        if (picture == shown)
            return;
        shown = picture;
        std::printf("%s\b\b\b\b", pictures[picture]);
        std::fflush(stdout);
    }

private:
    int shown = -1;
};

} // namespace

std::uint32_t bootloader_identify(unsigned char *buffer, int port, IdentifyTimes times)
{
    Answer answer(buffer);
    Spinner spinner;
    const std::clock_t start = std::clock();
    std::clock_t lastSign = start;
    for (;;) {
        unsigned char polled[replySize];
        const int size = PollComport(port, polled, sizeof polled);
        for (int i = 0; i < size; ++i)
            answer.take(polled[i]);
        if (answer.isComplete())
            return identified;

        // Processor time, like every time here: the loop must not sleep.
        const std::clock_t now = std::clock();
        if (now - start > times.giveUp)
            return identifyTimeout;
        spinner.show(now - start);
        if (size > 0) {
            lastSign = now;
        } else if (now - lastSign >= times.syncInterval) {
            if (SendBuf(port, sync, sizeof sync) == -1)
                return syncFailed;
            lastSign = now;
        }
    }
}

} // namespace IntelHexFile
