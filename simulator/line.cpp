#include "simulator/line.h"

#include <algorithm>

namespace simulator
{

void Line::fromClient(const Bytes &bytes, Clock::time_point now)
{
    for (const std::uint8_t byte : bytes)
        queue.push_back({byte, true, now});
}

Bytes Line::advance(Clock::time_point now, Clock::duration byteTime)
{
    Bytes toClient;
    while (!queue.empty() && !unplugged) {
        const Passing front = queue.front();
        const Clock::time_point passed = std::max(busyUntil, front.readyAt) + byteTime;
        if (now < passed)
            break;
        queue.pop_front();
        busyUntil = passed;
        if (!front.fromClient) {
            toClient.push_back(front.byte);
            continue;
        }
        const Charger::Reaction reaction = charger->receive(front.byte);
        if (reaction.unplug) {
            unplugged = true;
            queue.clear();
            break;
        }
        if (reaction.echo)
            toClient.push_back(front.byte);
        const auto delay = std::chrono::duration<double>(reaction.delay);
        const auto readyAt = passed + std::chrono::duration_cast<Clock::duration>(delay);
        for (const std::uint8_t byte : reaction.reply)
            queue.push_back({byte, false, readyAt});
    }
    return toClient;
}

std::optional<Line::Clock::time_point> Line::nextDue(Clock::duration byteTime) const
{
    if (queue.empty())
        return std::nullopt;
    return std::max(busyUntil, queue.front().readyAt) + byteTime;
}

void Line::clientGone()
{
    for (const Passing &passing : queue) {
        if (passing.fromClient)
            unplugged |= charger->receive(passing.byte).unplug;
    }
    queue.clear();
    busyUntil = {};
    charger->lineIdle();
}

bool Line::takeUnplugged()
{
    const bool was = unplugged;
    unplugged = false;
    return was;
}

} // namespace simulator
