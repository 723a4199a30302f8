// Whether teams pay on the cores that are free now.
//
// A region ends with its last thread. Where other work keeps cores busy, that thread may come a time slice late, some
// milliseconds, however short the call. Nobody tells beforehand which cores are free; so a region is timed, and after
// one that lost against a single thread callers do without teams for a while. On cores that stay busy this bounds what
// teams lose, to an eighth of the time; where the loss was an accident, a few calls take the time of one thread.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>

#include "qrv/service.h"

namespace qrv {

// Of the processor's clock, of which a millisecond has one to five million.
using Ticks = std::int64_t;
inline Ticks ticks_now() {
    return static_cast<Ticks>(__builtin_ia32_rdtsc());
}

inline constexpr Ticks leastDelay = 2000000; // of a time slice: threads that slept are there sooner
inline constexpr Ticks mostDelay = 64000000; // who comes later was stopped otherwise
inline constexpr int aloneForDelay = 8;
inline constexpr Ticks longestAlone = aloneForDelay * mostDelay;

// For how long callers do without teams, after a region of so many ticks in which a part took no more than `part`: one
// thread would have taken that for each.
//
//   team   part     region      alone
//   2      40000    12000000    96000000
//   2      40000    1900000     0           no time slice
//   2      8000000  15000000    0           faster than one thread
//   64     200000   7000000     0           the same
//   2      40000    9 * 10^9    512000000
constexpr Ticks ticks_alone(int team, Ticks part, Ticks region) {
    const bool lost = region > leastDelay && region > team * part;
    return lost ? aloneForDelay * std::min(region, mostDelay) : 0;
}

// No clock is trusted to go on: after a leap of it callers are not left alone for longer than was ever meant.
constexpr bool is_alone(Ticks until, Ticks now) {
    return until > now && until - now <= longestAlone;
}

inline std::atomic<Ticks> aloneUntil{0}; // for all threads of the process

// Of the calling thread, whatever was measured here (far_cores.hpp).
inline thread_local bool withoutTeams = false;

// With dynamic adjustment off teams are as requested.
inline bool goes_alone(Ticks now) {
    return (withoutTeams || is_alone(aloneUntil.load(std::memory_order_relaxed), now)) && qrv_serv_get_dynamic();
}

// Losses of a calling thread that do not count: of a new team, whose threads may begin on the caller's core until the
// system moves them. On idle cores a program's calls had the speed of two threads after 0.3 to 144 ms without this,
// half of them after 50, and after 0.3 to 85, half of them after 2, with it; three and five made no difference to two.
inline constexpr int lossesForgiven = 2;

inline void note_region(int team, Ticks part, Ticks begun, Ticks ended) {
    thread_local int losses = 0;
    if (const Ticks alone = ticks_alone(team, part, ended - begun); alone > 0 && ++losses > lossesForgiven)
        aloneUntil.store(ended + alone, std::memory_order_relaxed), losses = lossesForgiven;
}

} // namespace qrv
