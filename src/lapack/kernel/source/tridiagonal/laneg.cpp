// SLANEG: Sturm counts of L D L' - x by a twisted factorization, from both ends to row r, for several x at once: the
// quotients of one x wait for each other, those of different x do not.
#include "blas/kernel/common/vec/unrolling.hpp"
#include "lapack/calls/mrrr.hpp"
#include "lapack/quads.hpp"

namespace qrv::lapack {
namespace {

constexpr int blockLength = 128; // rows between looks for a NaN
constexpr int quads = quads_of(pointsAtOnce);
using Integers = int __attribute__((vector_size(sizeof(Quad))));

// For each x what is carried from row to row, and the negative pivots so far.
struct Counts {
    Quad carried[quads];
    Integers negative[quads];

    bool unknown() const {
        return std::any_of(carried, carried + quads,
                           [](const Quad& s) { return s[0] != s[0] || s[1] != s[1] || s[2] != s[2] || s[3] != s[3]; });
    }
};

// pivot = add(i) + s, s = s / pivot * factor(i) - x. A pivot of 0 becomes a small one, so that nothing is divided by 0;
// the next quotient is 1 then. With `safe` a quotient of infinities has that limit too.
template <bool safe, class Add, class Factor>
Counts count_rows(int first, int end, const Quad* points, const Counts& before, const Add& add, const Factor& factor) {
    Counts now = before;
    Quad x[quads];
    QRV_UNROLL
    for (int k = 0; k < quads; ++k)
        x[k] = points[k];
    for (int i = first; i < end; ++i) {
        const float term = add(i), scale = factor(i), least = std::fabs(term) * 0x1p-40F + machine::safeMinimum;
        QRV_UNROLL
        for (int k = 0; k < quads; ++k) {
            Quad pivot = now.carried[k] + term;
            pivot = pivot == 0 ? spread(least) : pivot;
            Quad q = now.carried[k] / pivot;
            if constexpr (safe)
                q = q != q ? spread(1) : q;
            now.carried[k] = q * scale - x[k];
            now.negative[k] -= pivot < 0;
        }
    }
    return now;
}

template <class Add, class Factor>
void count_all(int rows, const Quad* x, Counts& counts, const Add& add, const Factor& factor) {
    for (int done = 0; done < rows; done += blockLength) {
        const int end = std::min(rows, done + blockLength);
        const Counts next = count_rows<false>(done, end, x, counts, add, factor);
        counts = next.unknown() ? count_rows<true>(done, end, x, counts, add, factor) : next;
    }
}

} // namespace

void laneg(int n, const float* d, const float* lld, const float* points, int r, int* below) {
    Quad x[quads];
    Counts down{}, up{};
    for (int k = 0; k < quads; ++k) {
        x[k] = load_rows(points + k * lanes, 1, lanes);
        down.carried[k] = -x[k];
        up.carried[k] = d[n - 1] - x[k];
    }
    count_all(
        r, x, down, [=](int i) { return d[i]; }, [=](int i) { return lld[i]; });
    count_all(
        n - 1 - r, x, up, [=](int k) { return lld[n - 2 - k]; }, [=](int k) { return d[n - 2 - k]; });
    for (int k = 0; k < pointsAtOnce; ++k) {
        const int q = k / lanes, l = k % lanes;
        below[k] = down.negative[q][l] + up.negative[q][l] + ((down.carried[q][l] + x[q][l]) + up.carried[q][l] < 0);
    }
}

int laneg(int n, const float* d, const float* lld, float x, int r) {
    float points[pointsAtOnce];
    int below[pointsAtOnce];
    std::fill_n(points, pointsAtOnce, x);
    laneg(n, d, lld, points, r, below);
    return below[0];
}

} // namespace qrv::lapack
