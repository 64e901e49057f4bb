#pragma once

#include "simulator/charger.h"

#include <chrono>
#include <deque>
#include <optional>

namespace simulator
{
/// The half-duplex line between client and charger: one byte at a time, each taking its time on the
/// wire. A byte of the client is echoed and heard when it has passed; a reply follows the echo.
class Line
{
public:
    using Clock = std::chrono::steady_clock;

    /// The charger must outlive the line.
    explicit Line(Charger *charger) : charger(charger) {}

    /// Queues what the client has written.
    void fromClient(const Bytes &bytes, Clock::time_point now);
    /// Moves all bytes that have passed the wire by now, each taking byteTime; returns those that
    /// reach the client.
    Bytes advance(Clock::time_point now, Clock::duration byteTime);
    /// When the next byte will have passed; nothing while the line is idle.
    std::optional<Clock::time_point> nextDue(Clock::duration byteTime) const;

    /// The client is gone: the charger still hears what was sent, the answers are lost.
    void clientGone();

    /// A fault has pulled the cable. Says so once.
    bool takeUnplugged();

private:
    struct Passing {
        std::uint8_t byte;
        bool fromClient;
        Clock::time_point readyAt;
    };

    Charger *charger;
    std::deque<Passing> queue;
    Clock::time_point busyUntil;
    bool unplugged = false;
};

} // namespace simulator
