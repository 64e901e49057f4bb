#pragma once

#include "simulator/bytes.h"

#include <deque>

/// The only serial line of the program: what arrives is written beforehand. It does not wait, and
/// it owns the clock: without anything to take, time flies.
namespace scriptedline
{
struct Script {
    simulator::Bytes arrived;               ///< is there at once
    std::deque<simulator::Bytes> reactions; ///< one arrives for each thing that is sent
    bool echo = false;                      ///< what is sent comes back before the reaction
    std::size_t portion = 1;                ///< most bytes that are taken at once, at least 1
};

void play(Script script);
/// Everything that was sent since then.
simulator::Bytes sent();

} // namespace scriptedline
