// One level 1 operation on a team, told once for all: the region in which every thread calls the kernel on its slices,
// and what becomes of the results of functions.
#pragma once

#include <array>

#include "blas/calls.hpp"
#include "blas/native.hpp"
#include "blas/thread/common/level1/level1_threads.hpp"
#include "blas/thread/common/machine.hpp"
#include "blas/thread/common/slice.hpp"
#include "blas/thread/common/team_omp.hpp"
#include "service/work_pool.hpp"

namespace qrv {

// Calls body(slice) on each thread of a team of at most `threads`; the slices are those of n elements. A team of one
// gets the whole.
template <class Body>
void on_slices(int threads, int n, const Body& body) {
    on_team(threads, [&](int team, int thread) { body(vector_slice(n, team, thread)); });
}

// all(partial, count) of what of(slice) finds in the slices of n elements, in their order; so it depends on the team's
// size, and on nothing else. The calling thread does it by itself, in one slice, if there is no memory for the partial
// results of a very large team.
template <class Of, class All>
auto of_slices(int threads, int n, const Of& of, const All& all) {
    using Partial = decltype(of(Slice{}));
    constexpr int slotsOnStack = 128, alignment = 128;
    std::array<Partial, slotsOnStack> few;
    Partial* partial = few.data();
    void* block = nullptr;
    if (threads > slotsOnStack) {
        block = qrv_serv_allocate(sizeof(Partial) * static_cast<std::size_t>(threads), alignment);
        partial = static_cast<Partial*>(block);
        if (!partial) {
            few[0] = of(Slice{0, n});
            return all(few.data(), 1);
        }
    }
    int size = 1;
    on_team(threads, [&](int team, int thread) {
        partial[thread] = of(vector_slice(n, team, thread));
        if (thread == 0)
            size = team;
    });
    const auto result = all(partial, size);
    qrv_serv_deallocate(block);
    return result;
}

// The sum of partial results in extended precision, rounded once.
template <class Partial>
Partial sum(const Partial* partial, int count) {
    long double total = partial[0];
    for (int i = 1; i < count; ++i)
        total += partial[i];
    return static_cast<Partial>(total);
}
inline SingleComplex sum(const SingleComplex* partial, int count) {
    long double re = partial[0].re, im = partial[0].im;
    for (int i = 1; i < count; ++i) {
        re += partial[i].re;
        im += partial[i].im;
    }
    return {static_cast<float>(re), static_cast<float>(im)};
}

} // namespace qrv
