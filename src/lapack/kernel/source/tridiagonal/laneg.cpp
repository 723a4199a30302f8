// SLANEG: Sturm counts of L D L' - x by a twisted factorization, from both ends to row r, for several x at once: the
// quotients of one x wait for each other, those of different x do not.
#include "lapack/calls/mrrr.hpp"

namespace qrv::lapack {
namespace {

constexpr int blockLength = 128; // rows between looks for a NaN

// For each x what is carried from row to row, and the negative pivots so far.
struct Counts {
    const float* x;
    float carried[pointsAtOnce];
    int negative[pointsAtOnce] = {};
};

// pivot = add(i) + s, s = s / pivot * factor(i) - x. A pivot of 0 becomes a small one, so that nothing is divided by 0;
// the next quotient is 1 then. With `safe` a quotient of infinities has that limit too.
template <bool safe, class Add, class Factor>
void count_rows(int first, int end, Counts& counts, const Add& add, const Factor& factor) {
    float s[pointsAtOnce], x[pointsAtOnce];
    int negative[pointsAtOnce];
    for (int k = 0; k < pointsAtOnce; ++k) {
        s[k] = counts.carried[k];
        x[k] = counts.x[k];
        negative[k] = counts.negative[k];
    }
    for (int i = first; i < end; ++i) {
        const float term = add(i), scale = factor(i), least = std::fabs(term) * 0x1p-40F + machine::safeMinimum;
        for (int k = 0; k < pointsAtOnce; ++k) {
            float pivot = term + s[k];
            pivot = pivot == 0 ? least : pivot;
            float q = s[k] / pivot;
            if constexpr (safe)
                q = q != q ? 1 : q;
            s[k] = q * scale - x[k];
            negative[k] += pivot < 0;
        }
    }
    for (int k = 0; k < pointsAtOnce; ++k) {
        counts.carried[k] = s[k];
        counts.negative[k] = negative[k];
    }
}

template <class Add, class Factor>
void count_all(int rows, Counts& counts, const Add& add, const Factor& factor) {
    for (int done = 0; done < rows; done += blockLength) {
        const int end = std::min(rows, done + blockLength);
        const Counts before = counts;
        count_rows<false>(done, end, counts, add, factor);
        if (std::any_of(counts.carried, counts.carried + pointsAtOnce, [](float s) { return s != s; })) {
            counts = before;
            count_rows<true>(done, end, counts, add, factor);
        }
    }
}

} // namespace

void laneg(int n, const float* d, const float* lld, const float* x, int r, int* below) {
    Counts down{x, {}}, up{x, {}};
    for (int k = 0; k < pointsAtOnce; ++k) {
        down.carried[k] = -x[k];
        up.carried[k] = d[n - 1] - x[k];
    }
    count_all(
        r, down, [=](int i) { return d[i]; }, [=](int i) { return lld[i]; });
    count_all(
        n - 1 - r, up, [=](int k) { return lld[n - 2 - k]; }, [=](int k) { return d[n - 2 - k]; });
    for (int k = 0; k < pointsAtOnce; ++k)
        below[k] = down.negative[k] + up.negative[k] + ((down.carried[k] + x[k]) + up.carried[k] < 0);
}

int laneg(int n, const float* d, const float* lld, float x, int r) {
    float points[pointsAtOnce];
    int below[pointsAtOnce];
    std::fill_n(points, pointsAtOnce, x);
    laneg(n, d, lld, points, r, below);
    return below[0];
}

} // namespace qrv::lapack
