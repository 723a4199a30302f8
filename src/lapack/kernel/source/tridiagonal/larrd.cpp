// SLARRD: the wanted eigenvalues of a symmetric tridiagonal matrix that has come apart, by bisection.
//
// The number of negative pivots of T - x, block by block, is the number of eigenvalues below x, so an interval with
// some is halved until it is narrow. Indices are turned into an interval first; if rounding puts more values into it
// than were asked for, the outermost are taken out.
#include "lapack/calls/bisection.hpp"

namespace qrv::lapack {
namespace {

constexpr float ulp = machine::precision;
constexpr float fudge = 2.1F; // by how many roundings more a row may be wrong

Interval rows_interval(int n, const float* d, const float* e) {
    Interval all = row_interval(n, d, e, 0);
    for (int i = 1; i < n; ++i)
        all.include(row_interval(n, d, e, i));
    return all;
}

// Takes out the smallest, or the largest: of equal ones that at the outer end, so that those of a block stay in a row.
void drop(Found& found, int values, bool smallest) {
    for (; values > 0 && found.count > 0; --values) {
        int chosen = 0;
        for (int i = 1; i < found.count; ++i)
            if (smallest ? found.w[i] < found.w[chosen] : found.w[i] >= found.w[chosen])
                chosen = i;
        const auto remove = [&](auto* list) {
            if (list)
                std::copy(list + chosen + 1, list + found.count, list + chosen);
        };
        remove(found.w);
        remove(found.iblock);
        remove(found.werr);
        remove(found.index);
        --found.count;
    }
}

void sort_ascending(const Found& found) {
    const auto exchange = [&](int i, int k) {
        std::swap(found.w[i], found.w[k]);
        std::swap(found.iblock[i], found.iblock[k]);
        if (found.werr) {
            std::swap(found.werr[i], found.werr[k]);
            std::swap(found.index[i], found.index[k]);
        }
    };
    for (int i = 0; i < found.count - 1; ++i) {
        int least = i;
        for (int j = i + 1; j < found.count; ++j)
            if (found.w[j] < found.w[least])
                least = j;
        exchange(i, least);
    }
}

} // namespace

SearchResult larrd(const BlockSearch& search, const Wanted& wanted, bool byBlock, BisectionStack stack, Found found) {
    const auto& [whole, d, e, ends, blocks, absolute, relative] = search;
    const int n = whole.n;
    if (n <= 0)
        return {};
    const float pivot = whole.leastPivot;
    const bool byIndex = wanted.range == Range::indices && !(wanted.first == 1 && wanted.last == n);
    const bool all = wanted.range == Range::all || (wanted.range == Range::indices && !byIndex);
    const float ofAll = absolute, ofValue = relative;
    const auto tolerance = [=](float size) {
        return BisectionTolerance{std::max(ofAll > 0 ? ofAll : ulp * size, pivot), ofValue};
    };

    Interval range = rows_interval(n, d, e);
    range.widen(fudge * range.size() * ulp * static_cast<float>(n) + 2 * fudge * pivot);
    Interval searched = range;
    bool lost = false, tooFew = false;
    if (byIndex) {
        const int steps = bisection_steps(range.high - range.low, pivot);
        const CountedInterval low = find_count(whole, range, wanted.first - 1, steps, tolerance(range.size()));
        const CountedInterval high = find_count(whole, range, wanted.last, steps, tolerance(range.size()));
        searched = {low.range.low, high.range.high};
        lost = low.below > wanted.first - 1 || high.upTo < wanted.last;
    } else if (!all) {
        searched = {wanted.low, wanted.high};
    }

    int upToLow = 0, upToHigh = 0; // eigenvalues up to its ends
    for (int block = 0, first = 0; block < blocks; first = ends[block++]) {
        const int last = ends[block] - 1, size = last - first + 1;
        const Sturm part = whole.block(first, last);
        CountedInterval here{searched, 0, size};
        if (size == 1) {
            here.below = !all && searched.low >= d[first] - pivot;
            here.upTo = all || searched.high >= d[first] - pivot;
            if (here.below < here.upTo)
                found.add(d[first], 0, block + 1, 1, true);
        } else {
            Interval rows = rows_interval(size, d + first, e + first);
            rows.widen(fudge * rows.size() * ulp * static_cast<float>(size) + fudge * pivot);
            here.range = rows;
            if (!all) {
                here.range = {std::max(rows.low, searched.low), std::min(rows.high, searched.high)};
                const auto up_to = [&](float x) { return x >= rows.high ? size : x >= rows.low ? part.count(x) : 0; };
                here.below = up_to(searched.low);
                here.upTo = std::max(here.below, up_to(searched.high));
            }
            const int number = block + 1;
            bisect(part, here, tolerance(rows.size()), stack,
                   [&found, number](float value, float halfWidth, int i, bool converged) {
                       found.add(value, halfWidth, number, i + 1, converged);
                   });
        }
        upToLow += here.below;
        upToHigh += here.upTo;
    }

    if (byIndex) {
        const int below = wanted.first - 1 - upToLow, above = upToHigh - wanted.last;
        tooFew = below < 0 || above < 0;
        drop(found, below, true);
        drop(found, above, false);
    }
    if (!byBlock && blocks > 1)
        sort_ascending(found);
    return {searched, found.count, lost ? 4 : (found.allConverged ? 0 : 1) + (tooFew ? 2 : 0)};
}

} // namespace qrv::lapack
