#include "fuzz/scriptedline.h"

#include "IntelHexFile/rs232.h"

#include <algorithm>
#include <ctime>

namespace
{
/// Processor time that a look at the clock costs: less than it takes to call the charger again.
constexpr std::clock_t ticksPerLook = 15000;

scriptedline::Script script;
simulator::Bytes allSent;
std::clock_t now = 0;
} // namespace

/// In place of the system's, which would let every frame without an end cost a second.
extern "C" std::clock_t clock() noexcept
{
    if (script.arrived.empty())
        now += ticksPerLook;
    return now;
}

namespace scriptedline
{
void play(Script newScript)
{
    script = std::move(newScript);
    allSent.clear();
    now = 0;
}

simulator::Bytes sent()
{
    return allSent;
}

} // namespace scriptedline

namespace IntelHexFile
{
int PollComport(int, unsigned char *buffer, int size)
{
    const std::size_t count =
        std::min({static_cast<std::size_t>(size), script.portion, script.arrived.size()});
    const auto end = script.arrived.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(script.arrived.begin(), end, buffer);
    script.arrived.erase(script.arrived.begin(), end);
    return static_cast<int>(count);
}

int SendBuf(int, const unsigned char *buffer, int size)
{
    allSent.insert(allSent.end(), buffer, buffer + size);
    if (script.echo)
        script.arrived.insert(script.arrived.end(), buffer, buffer + size);
    if (!script.reactions.empty()) {
        const simulator::Bytes &reaction = script.reactions.front();
        script.arrived.insert(script.arrived.end(), reaction.begin(), reaction.end());
        script.reactions.pop_front();
    }
    return size;
}

} // namespace IntelHexFile
