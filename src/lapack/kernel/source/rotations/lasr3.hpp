// How several sequences of rotations are cut into blocks, and which way they are applied.
//
// Rotation i of sequence s has to wait for rotation i - 1 of its own sequence and for rotation i + 1 of the one before.
// Both lie on no later line i + s = constant, so the plane of rotations may be cut along such lines into blocks that
// are done one after the other (here forward, three sequences in blocks of three lines):
//
//   sequence 2      c c d d d
//   sequence 1    b c c c d d
//   sequence 0  b b b c c c d ...
//   rotation    0 1 2 3 4 5 6
//
// What goes backward is the same with rotations counted from the other end.
#pragma once

#include <algorithm>

#include "blas/matrix.hpp"
#include "blas/options.hpp"

namespace qrv::lapack {

enum class SweepRoute {
    oneByOne,   // each sequence on the whole matrix
    skewed,     // a team; each thread applies the sequences to its share, in blocks of rotations that stay in cache
    blocked,    // blocks of rotations are multiplied out and applied as products
    blockedTeam // the same, each product shared out
};

// `across` is the number of elements in a line that rotations turn; `team` and `block` are those of which a team, and
// products, are worth it; `threads` tells the budget.
template <class Threads>
SweepRoute sweep_route(int across, int team, int block, const Threads& threads) {
    if (across <= team)
        return across <= block ? SweepRoute::oneByOne : SweepRoute::blocked;
    const bool alone = threads() < 2;
    if (across > block)
        return alone ? SweepRoute::blocked : SweepRoute::blockedTeam;
    return alone ? SweepRoute::oneByOne : SweepRoute::skewed;
}

// By the tuning values, for so many threads.
SweepRoute tuned_sweep_route(Side side, int across, int threads);

struct Sweeps {
    Side side;
    Direct direct;
    int m, n, count;
    Matrix<const float> cs;
    Matrix<float> a;

    bool left() const { return side == Side::left; }
    int planes() const { return (left() ? m : n) - 1; }
    int across() const { return left() ? n : m; }
    // From a line on, from an element of the lines on.
    Matrix<float> at(int line, int element) const { return left() ? a.block(line, element) : a.block(element, line); }
};

// On at most so many threads. work as for lasr3, if the route forms products.
void apply_sweeps(const Sweeps& q, SweepRoute route, int threads, float* work);

// Those of two matrices at once, each as products by a thread of its own: no block waits for its factors to be
// multiplied out, as the other threads of a team on one matrix do.
void apply_both(const Sweeps (&both)[2], float* const (&work)[2]);

// Rotations of a sequence.
struct Planes {
    int first, count;
};

// Those of sequence s, of `planes` in all, on the lines from `from` to before `to`.
constexpr Planes planes_on_lines(Direct direct, int planes, int s, int from, int to) {
    const int first = std::max(0, from - s), last = std::max(first, std::min(planes, to - s));
    return {direct == Direct::forward ? first : planes - last, last - first};
}

// A block of rotations that turns `order` lines of the matrix from `first` on.
struct SweepBlock {
    int from, to; // lines of rotations
    int first, order;
    bool halves; // it is cut in the middle, and one quarter of its product is triangular
};

// Calls body(block) for the blocks of `sequences` sequences on `planes` planes, in order. Each has `sequences`
// rotations of each sequence but for the triangles that the first and the last one have in addition.
template <class Body>
void each_sweep_block(Direct direct, int planes, int sequences, const Body& body) {
    const int k = sequences, all = planes + k - 1;
    const auto mirrored = [&](SweepBlock block) {
        if (direct == Direct::backward)
            block.first = planes + 1 - block.order - block.first;
        body(block);
    };
    if (planes < 2 * k)
        return mirrored({0, all, 0, planes + 1, false});
    const int last = planes / k - 1;
    mirrored({0, 2 * k - 1, 0, 2 * k, true});
    for (int b = 1; b < last; ++b)
        mirrored({(b + 1) * k - 1, (b + 2) * k - 1, b * k, 2 * k, true});
    mirrored({(last + 1) * k - 1, all, last * k, planes + 1 - last * k, false});
}

} // namespace qrv::lapack
