// SSTEBZ: chosen eigenvalues of a symmetric tridiagonal matrix by bisection.
//
// The matrix is cut where elements beside its diagonal are negligible. The number of negative pivots of T - x, block by
// block, is the number of eigenvalues below x, so an interval with some is halved until it is narrow. Indices are
// turned into an interval first; if rounding puts more values into it than were asked for, the outermost are taken out.
// Source: W. Kahan, Accurate eigenvalues of a symmetric tri-diagonal matrix, Stanford CS41 (1966).
#include <algorithm>
#include <cmath>

#include "lapack/calls/symmetric.hpp"
#include "lapack/kernel/source/tridiagonal/bisection.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

constexpr float ulp = machine::precision;
constexpr float fudge = 2.1F; // by how many roundings more a row may be wrong
constexpr float relative = 2 * ulp;

// Squares the elements beside the diagonal, with 0 where the matrix comes apart, and stores the last row of each block,
// from 1. Result: the number of blocks.
int split(int n, const float* d, const float* e, float* e2, int* ends) {
    int blocks = 0;
    for (int i = 0; i < n - 1; ++i) {
        e2[i] = e[i] * e[i];
        if (std::fabs(d[i + 1] * d[i]) * (ulp * ulp) + machine::safeMinimum > e2[i]) {
            e2[i] = 0;
            ends[blocks++] = i + 1;
        }
    }
    ends[blocks++] = n;
    return blocks;
}

float least_pivot(int n, const float* e2) {
    float largest = 1;
    for (int i = 0; i < n - 1; ++i)
        largest = std::max(largest, e2[i]);
    return machine::safeMinimum * largest;
}

Interval rows_interval(int n, const float* d, const float* e) {
    Interval all = row_interval(n, d, e, 0);
    for (int i = 1; i < n; ++i)
        all.include(row_interval(n, d, e, i));
    return all;
}

// What is found, and how many eigenvalues lie up to the ends of the interval that was searched.
class Found {
public:
    Found(float* w, int* iblock) : w_(w), iblock_(iblock) {}

    int count = 0, upToLow = 0, upToHigh = 0;
    bool allConverged = true;

    void add(float value, int block, bool converged) {
        allConverged = allConverged && converged;
        w_[count] = value;
        iblock_[count++] = converged ? block : -block;
    }
    // Takes out the smallest, or the largest.
    void drop(int values, bool smallest) {
        for (; values > 0 && count > 0; --values) {
            int chosen = 0;
            for (int i = 1; i < count; ++i)
                if (smallest ? w_[i] < w_[chosen] : w_[i] > w_[chosen])
                    chosen = i;
            std::copy(w_ + chosen + 1, w_ + count, w_ + chosen);
            std::copy(iblock_ + chosen + 1, iblock_ + count, iblock_ + chosen);
            --count;
        }
    }
    void sort_ascending() {
        for (int i = 0; i < count - 1; ++i) {
            int least = i;
            for (int j = i + 1; j < count; ++j)
                if (w_[j] < w_[least])
                    least = j;
            std::swap(w_[i], w_[least]);
            std::swap(iblock_[i], iblock_[least]);
        }
    }

private:
    float* w_;
    int* iblock_;
};

} // namespace

StebzResult stebz(const Wanted& wanted, bool byBlock, int n, float abstol, const float* d, const float* e, float* w,
                  int* iblock, int* isplit, float* work, int* iwork) {
    if (n == 0)
        return {};
    float* const e2 = work;
    const BisectionStack stack{work + n, iwork};
    StebzResult result;
    result.blocks = split(n, d, e, e2, isplit);
    const Sturm whole{n, d, e2, least_pivot(n, e2)};
    const float pivot = whole.leastPivot;
    const bool byIndex = wanted.range == Range::indices && !(wanted.first == 1 && wanted.last == n);
    const bool all = wanted.range == Range::all || (wanted.range == Range::indices && !byIndex);

    Interval searched{wanted.low, wanted.high};
    bool lost = false; // the interval of all eigenvalues does not hold all
    if (byIndex) {
        Interval range = rows_interval(n, d, e);
        const float size = range.size();
        range.widen(fudge * size * ulp * static_cast<float>(n) + 2 * fudge * pivot);
        const BisectionTolerance tolerance{std::max(abstol <= 0 ? ulp * size : abstol, pivot), relative};
        const CountedInterval low = find_count(whole, range, wanted.first - 1, tolerance);
        const CountedInterval high = find_count(whole, range, wanted.last, tolerance);
        searched = {low.range.low, high.range.high};
        lost = low.below > wanted.first - 1 || high.upTo < wanted.last;
    }

    Found found(w, iblock);
    for (int block = 0, first = 0; block < result.blocks; first = isplit[block++]) {
        const int last = isplit[block] - 1, size = last - first + 1;
        const Sturm part = whole.block(first, last);
        CountedInterval range{searched, 0, size};
        if (size == 1) {
            range.below = !all && searched.low >= d[first] - pivot;
            range.upTo = all || searched.high >= d[first] - pivot;
            if (range.below < range.upTo)
                found.add(d[first], block + 1, true);
        } else {
            Interval rows = rows_interval(size, d + first, e + first);
            rows.widen(fudge * rows.size() * ulp * static_cast<float>(size) + fudge * pivot);
            const BisectionTolerance tolerance{std::max(abstol <= 0 ? ulp * rows.size() : abstol, pivot), relative};
            if (all) {
                range.range = rows;
            } else {
                range.range = {std::max(rows.low, searched.low), std::min(rows.high, searched.high)};
                const auto up_to = [&](float x) { return x >= rows.high ? size : x >= rows.low ? part.count(x) : 0; };
                range.below = up_to(searched.low);
                range.upTo = std::max(range.below, up_to(searched.high));
            }
            bisect(part, range, tolerance, stack,
                   [&](float value, float, int, bool converged) { found.add(value, block + 1, converged); });
        }
        found.upToLow += range.below;
        found.upToHigh += range.upTo;
    }

    bool tooFew = false;
    if (byIndex) {
        const int below = wanted.first - 1 - found.upToLow, above = found.upToHigh - wanted.last;
        tooFew = below < 0 || above < 0;
        found.drop(below, true);
        found.drop(above, false);
    }
    if (!byBlock && result.blocks > 1)
        found.sort_ascending();
    result.found = found.count;
    result.info = lost ? 4 : (found.allConverged ? 0 : 1) + (tooFew ? 2 : 0);
    return result;
}

} // namespace qrv::lapack
