// Whether the two cores of a team are so near to each other that its many short steps pay.
//
// Threads whose cores share a cache tell each other something in 50 ns. Elsewhere it takes four times as long, and what
// one has written comes as slowly to the other: reductions of matrices that lie in a cache took up to 1.6 times as long
// as on one thread. Where the system has put threads changes, and nobody tells; so it is measured ahead of a call that
// is long enough.
#pragma once

#include <chrono>

#include "blas/thread/common/kept_team.hpp"
#include "qrv/service.h"
#include "service/vector_form.hpp"

namespace qrv {

// Empty steps on a team of two took 110 to 170 ns on near cores, 420 to 540 on far ones.
inline constexpr std::chrono::nanoseconds mostForNear{280};

inline bool cores_are_far(std::chrono::nanoseconds most = mostForNear) {
    constexpr int steps = 4, tries = 3; // one that is as short as on near cores tells enough
    bool far = false;
    KeptTeam::form(2, [&](KeptTeam& team) {
        far = team.size() == 2;
        for (int i = 0; i < tries && far; ++i) {
            const auto begun = std::chrono::steady_clock::now();
            for (int step = 0; step < steps; ++step)
                team.run([](int, int) {});
            far = std::chrono::steady_clock::now() - begun > most * steps;
        }
    });
    return far;
}

// Ahead of the reduction of a matrix of this order, for which a team pays on far cores from `below` on with AVX-512,
// and sooner with slower kernels. While it lives, the calling thread does the parts of all, with the bits of a team, if
// the team is of two and its cores are far from each other. Larger teams are not asked: their cores are hardly ever
// near.
class NearTeams {
public:
    NearTeams(int order, int below) : before_(withoutTeams) {
        constexpr int least = 256; // a shorter call has no time to ask
        const int limit = vector_form_in_use() == VectorForm::avx512 ? below : belowOfOthers;
        if (!before_ && order >= least && order < limit && qrv_serv_get_max_threads() == 2 && qrv_serv_get_dynamic() &&
            !goes_alone(ticks_now()))
            withoutTeams = cores_are_far();
    }
    ~NearTeams() { withoutTeams = before_; }
    NearTeams(const NearTeams&) = delete;
    NearTeams& operator=(const NearTeams&) = delete;

private:
    static constexpr int belowOfOthers = 450;

    bool before_;
};

} // namespace qrv
