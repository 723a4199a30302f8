// Counts of eigenvalues and bisection by them, for SSTEBZ and for the roots of SSTEMR (SLARRD, SLAEBZ).
#pragma once

#include <algorithm>
#include <cmath>

#include "lapack/calls/symmetric.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {

// A range of a line. Its points are never NaN, whatever they are widened by.
struct Interval {
    float low, high;

    float size() const { return std::max(std::fabs(low), std::fabs(high)); }
    float middle() const { return (low + high) / 2; }
    void widen(float by) {
        low -= by;
        high += by;
    }
    void include(Interval x) {
        low = std::min(low, x.low);
        high = std::max(high, x.high);
    }
};

// A symmetric tridiagonal matrix by its diagonal and the squares beside it. Pivots smaller than the least one count as
// negative and are kept that large.
struct Sturm {
    int n;
    const float *d, *e2;
    float leastPivot;

    Sturm block(int first, int last) const { return {last - first + 1, d + first, e2 + first, leastPivot}; }

    // How many eigenvalues are at most x: the negative pivots of T - x.
    int count(float x) const {
        int negative = 0;
        float pivot = 1;
        for (int i = 0; i < n; ++i) {
            pivot = d[i] - x - (i > 0 ? e2[i - 1] / pivot : 0);
            if (pivot <= leastPivot) {
                ++negative;
                pivot = std::min(pivot, -leastPivot);
            }
        }
        return negative;
    }
};

// Row i of T alone says that there is no eigenvalue outside the union of these (Gershgorin).
inline Interval row_interval(int n, const float* d, const float* e, int i) {
    const float beside = (i > 0 ? std::fabs(e[i - 1]) : 0) + (i < n - 1 ? std::fabs(e[i]) : 0);
    return {d[i] - beside, d[i] + beside};
}

// Halvings until an interval of this width is down to the least pivot. 2 for NaN.
inline int bisection_steps(float width, float leastPivot) {
    const double steps = std::log2((double{width} + leastPivot) / leastPivot);
    return steps > 0 && steps < 1000 ? static_cast<int>(steps) + 2 : 2;
}

// When a bisection is fine enough.
struct BisectionTolerance {
    float absolute, relative;
    bool met_by(Interval x) const { return x.high - x.low < std::max(absolute, relative * x.size()); }
};

struct CountedInterval {
    Interval range;
    int below, upTo; // eigenvalues up to its ends
};

// Halves an interval until it is fine enough, which the result tells, but so many times at most. If eigenvalues lie in
// both halves it goes on with the lower one: put_aside(the upper one) tells whether there is room for that.
template <class PutAside>
bool narrow(const Sturm& t, CountedInterval& now, int steps, const BisectionTolerance& tolerance,
            const PutAside& put_aside) {
    for (int step = 0; step < steps && !tolerance.met_by(now.range); ++step) {
        const float middle = now.range.middle();
        const int count = std::clamp(t.count(middle), now.below, now.upTo);
        if (count == now.upTo) {
            now.range.high = middle;
        } else if (count == now.below) {
            now.range.low = middle;
        } else {
            if (!put_aside(CountedInterval{{middle, now.range.high}, count, now.upTo}))
                return false;
            now = {{now.range.low, middle}, now.below, count};
        }
    }
    return tolerance.met_by(now.range);
}

// The eigenvalues counted from `below` to `upTo` - 1 that lie in an interval, in ascending order: store(value, half the
// width of its interval, index, converged). stack: room for a pair of floats and of ints for each of them.
struct BisectionStack {
    float* floats;
    int* ints;

    void push(int place, const CountedInterval& x) const {
        floats[2 * place] = x.range.low;
        floats[2 * place + 1] = x.range.high;
        ints[2 * place] = x.below;
        ints[2 * place + 1] = x.upTo;
    }
    CountedInterval at(int place) const {
        return {{floats[2 * place], floats[2 * place + 1]}, ints[2 * place], ints[2 * place + 1]};
    }
};

template <class Store>
void bisect(const Sturm& t, CountedInterval whole, const BisectionTolerance& tolerance, BisectionStack stack,
            const Store& store) {
    const int steps = bisection_steps(whole.range.high - whole.range.low, t.leastPivot);
    int waiting = 0; // each for eigenvalues of its own, so there is room
    for (CountedInterval now = whole; now.below < now.upTo;) {
        const bool converged = narrow(t, now, steps, tolerance, [&](const CountedInterval& upper) {
            stack.push(waiting++, upper);
            return true;
        });
        for (int i = now.below; i < now.upTo; ++i)
            store(now.range.middle(), (now.range.high - now.range.low) / 2, i, converged);
        if (waiting == 0)
            break;
        now = stack.at(--waiting);
    }
}

// Around the place where the number of eigenvalues passes `wanted`: at most so many up to its low end, at least so many
// up to its high end.
inline CountedInterval find_count(const Sturm& t, Interval range, int wanted, int steps,
                                  const BisectionTolerance& tolerance) {
    CountedInterval now{range, t.count(range.low), t.count(range.high)};
    for (int step = 0; step < steps && !tolerance.met_by(now.range); ++step) {
        const float middle = now.range.middle();
        const int count = t.count(middle);
        if (count <= wanted)
            now.range.low = middle, now.below = count;
        if (count >= wanted)
            now.range.high = middle, now.upTo = count;
    }
    return now;
}

// Around the eigenvalue with this number, from 1.
inline Interval find_value(const Sturm& t, int number, Interval range, const BisectionTolerance& tolerance) {
    const int steps = bisection_steps(range.high - range.low, t.leastPivot);
    for (int step = 0; step < steps && !tolerance.met_by(range); ++step) {
        const float middle = range.middle();
        (t.count(middle) >= number ? range.high : range.low) = middle;
    }
    return range;
}

// ---- The eigenvalues that are wanted of a matrix in blocks (SLARRD) ----------------------------------------------

struct BlockSearch {
    Sturm whole;
    const float *d, *e;
    const int* ends; // last row of each block, from 1
    int blocks;
    float absolute; // tolerance; if it is not positive, it is the precision times the norm of a block
    float relative;
};
// For SLARRD, which is given a relative one.
constexpr float least_tolerance(float leastPivot) {
    return 4 * machine::safeMinimum + 4 * leastPivot;
}

// Where they go. Half the width of the interval and the number in the block are kept if there is room for them.
struct Found {
    float* w;
    int* iblock; // from 1, negative if not converged
    float* werr = nullptr;
    int* index = nullptr;
    int count = 0;
    bool allConverged = true;

    void add(float value, float halfWidth, int block, int number, bool converged) {
        allConverged = allConverged && converged;
        w[count] = value;
        iblock[count] = converged ? block : -block;
        if (werr) {
            werr[count] = halfWidth;
            index[count] = number;
        }
        ++count;
    }
};

struct SearchResult {
    Interval searched{}; // where they lie
    int count = 0;
    int info = 0; // 1: some are less accurate; 2: too few; 3: both; 4: the interval of all eigenvalues was wrong
    void store(int* toCount, float* toLow, float* toHigh, int* toInfo) const {
        *toCount = count;
        *toLow = searched.low;
        *toHigh = searched.high;
        *toInfo = info;
    }
};
// In ascending order, or in that order block by block. stack: room for 2 n floats and 2 n ints.
SearchResult larrd(const BlockSearch& search, const Wanted& wanted, bool byBlock, BisectionStack stack, Found found);

// ---- A list of intervals (SLAEBZ) ---------------------------------------------------------------------------------

// Of which `count` are given. ends, counts: the lower ones of all, then, from element `room` on, the upper ones.
struct IntervalList {
    int count, room;
    float* ends;
    int *counts, *wanted;

    CountedInterval at(int i) const { return {{ends[i], ends[room + i]}, counts[i], counts[room + i]}; }
    void put(int i, const CountedInterval& x) const {
        ends[i] = x.range.low;
        ends[room + i] = x.range.high;
        counts[i] = x.below;
        counts[room + i] = x.upTo;
    }
    void exchange(int i, int k) const {
        const CountedInterval x = at(i);
        put(i, at(k));
        put(k, x);
    }
};
enum class IntervalJob : int { count = 1, halve = 2, findCounts = 3 };
struct IntervalResult {
    int found = 0;
    int info = 0; // how many have not converged; one more than the room if that did not do; -1: no such job
    void store(int* toFound, int* toInfo) const {
        *toFound = found;
        *toInfo = info;
    }
};
IntervalResult laebz(IntervalJob job, const Sturm& t, int steps, const BisectionTolerance& tolerance,
                     IntervalList list);

} // namespace qrv::lapack
