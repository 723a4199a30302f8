// A team for many short steps between which its caller works alone: formed once, for all of them.
//
// A region a step costs 0.4 us to form and end, and 0.2 us for each barrier in it; a step of a team that is kept 0.1
// us, and as much for a barrier; all three times as much where cores are far from each other. Meanwhile threads that
// wait ask again and again, so the caller's work between two steps is to be as short as the steps.
#pragma once

#include <algorithm>
#include <atomic>
#include <omp.h>
#include <thread>
#include <tuple>

#include "blas/thread/common/crowd.hpp"
#include "service/thread_budget.hpp"

namespace qrv {

class KeptTeam {
public:
    KeptTeam(const KeptTeam&) = delete;
    KeptTeam& operator=(const KeptTeam&) = delete;

    // body(team) on the caller, with a team of at most `threads`. Calls of BLAS in it have no other team.
    template <class Body>
    static void form(int threads, const Body& body) {
        if (goes_alone(ticks_now()))
            threads = std::min(threads, omp_get_thread_limit()); // as there would be
        KeptTeam team(threads);
        if (team.alone_)
            return body(team);
        Ticks ended = 0;
#pragma omp parallel num_threads(threads)
        if (const int thread = omp_get_thread_num(); thread == 0) {
            team.size_ = omp_get_num_threads();
            body(team);
            team.release();
            ended = ticks_now();
        } else {
            team.serve(thread);
        }
        if (team.size_ > 1)
            note_region(team.size_, 0, ended, ticks_now());
    }

    int size() const {
        return size_;
    }

    // Calls phase(team, thread) on each thread; the parts of a phase do not wait for each other, and each phase begins
    // when the one before is over. Where teams do not pay the caller does the parts of all, from then on.
    template <class... Phases>
    void run(const Phases&... phases) {
        const Ticks begun = ticks_now();
        if (!alone_ && goes_alone(begun))
            release();
        if (alone_) {
            const RegionOfOne region;
            return (perform_alone(phases), ...);
        }
        const std::tuple<const Phases&...> all(phases...);
        phases_ = &all;
        perform_ = [](const void* told, KeptTeam& team, int thread, unsigned& done) {
            std::apply([&](const auto&... phase) { team.take_part(thread, done, phase...); },
                       *static_cast<const std::tuple<const Phases&...>*>(told));
        };
        steps_.fetch_add(1, std::memory_order_release);
        perform_(phases_, *this, 0, done_);
        wait_for(done_);
        if (size_ > 1)
            note_region(size_, std::min(worked_[0], worked_[1]), begun, ticks_now());
    }

private:
    explicit KeptTeam(int threads) : size_(threads), alone_(threads < 2 || goes_alone(ticks_now())) {}

    template <class Phase>
    void perform_alone(const Phase& phase) {
        for (int thread = 0; thread < size_; ++thread)
            phase(size_, thread);
    }

    // done: phases of all steps, as this thread counts them.
    template <class... Phases>
    void take_part(int thread, unsigned& done, const Phases&... phases) {
        Ticks own = 0;
        const auto perform = [&](const auto& phase) {
            wait_for(done);
            const Ticks start = ticks_now();
            phase(size_, thread);
            own += ticks_now() - start;
            if (thread < 2)
                worked_[thread] = own;
            ++done;
            arrived_.fetch_add(1, std::memory_order_acq_rel);
        };
        (perform(phases), ...);
    }

    // Until all threads have done so many phases. Counts may begin again at 0.
    void wait_for(unsigned done) const {
        const unsigned all = done * static_cast<unsigned>(size_);
        wait([&] { return static_cast<int>(arrived_.load(std::memory_order_acquire) - all) >= 0; });
    }
    template <class Ready>
    static void wait(const Ready& ready) {
        constexpr int patience = 1000; // then teammates may wait for this core
        for (int asked = 0; !ready(); ++asked)
            if (asked < patience)
                __builtin_ia32_pause();
            else
                std::this_thread::yield();
    }

    void serve(int thread) {
        unsigned done = 0;
        for (unsigned step = 0;; ++step) {
            wait([&] { return steps_.load(std::memory_order_acquire) != step; });
            if (alone_)
                return;
            perform_(phases_, *this, thread, done);
        }
    }
    // The others leave.
    void release() {
        if (alone_)
            return;
        alone_ = true;
        steps_.fetch_add(1, std::memory_order_release);
    }

    int size_;
    bool alone_; // and what follows are written before a step begins
    const void* phases_ = nullptr;
    void (*perform_)(const void* phases, KeptTeam& team, int thread, unsigned& done) = nullptr;
    unsigned done_ = 0; // of the caller
    Ticks worked_[2] = {};
    alignas(64) std::atomic<unsigned> steps_ = 0;
    alignas(64) std::atomic<unsigned> arrived_ = 0; // parts that are done
};

} // namespace qrv
