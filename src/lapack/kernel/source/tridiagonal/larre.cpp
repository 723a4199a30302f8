// SLARRE, SLARRA: where T comes apart, a root representation for each block, and the eigenvalues relative to it.
//
// The shift of a root is just outside one end of the spectrum, that with more values near it: all pivots have one sign
// then, and dqds gives all values to high relative accuracy. If at most half of them are wanted, they come from
// bisection, and the shift lies beside those.
#include "lapack/calls/mrrr.hpp"

namespace qrv::lapack {
namespace {

constexpr float eps = machine::precision;
constexpr float endAccuracy = 100 * eps; // of the ends of the spectrum
constexpr float manyWanted = 0.5F;       // of a block, from which on all are computed
constexpr float growthLimit = 64;        // of the largest pivot, beside the spectral diameter
constexpr float perturbation = 4 * eps;  // of the elements of a root, so that no two values stay equal
constexpr int tries = 6;

// A block of T and what is wanted of it.
struct Part {
    int n;
    float *d, *e;
    Sturm sturm;
    Interval rows;   // holds all eigenvalues,
    Interval ends;   // closely
    int first, last; // wanted ones, from 1
    bool all;        // of T

    int wanted() const { return last - first + 1; }
    bool by_dqds() const { return all || static_cast<float>(wanted()) > manyWanted * static_cast<float>(n); }
};

Interval spectrum_ends(const Part& part) {
    Interval range = part.rows;
    range.widen(2 * range.size() * eps * static_cast<float>(part.n) + 4 * part.sturm.leastPivot);
    const BisectionTolerance tolerance{4 * part.sturm.leastPivot, endAccuracy};
    const float low = find_value(part.sturm, 1, range, tolerance).low;
    const float high = find_value(part.sturm, part.n, range, tolerance).high;
    return {std::max(part.rows.low, low - endAccuracy * std::fabs(low)),
            std::min(part.rows.high, high + endAccuracy * std::fabs(high))};
}

struct Shift {
    float sigma, step; // the step is for the next try, if this one fails
    int sign;          // 1 at the lower end, of all pivots; -1 at the upper one
};

Shift choose_root(const Part& part, const Mrrr& x, const Values& values) {
    const float pivot = part.sturm.leastPivot, diameter = part.ends.high - part.ends.low;
    const int m = part.wanted();
    if (!part.by_dqds() && m == 1)
        return {part.rows.low, values.werr[0], 1};
    Interval searched = part.ends;
    if (!part.by_dqds())
        searched = {std::max(searched.low, x.searched.low), std::min(searched.high, x.searched.high)};
    const float quarter = (searched.high - searched.low) / 4;
    const int nearLow = part.sturm.count(searched.low + quarter) - part.first;
    const int nearHigh = part.last - part.sturm.count(searched.high - quarter);
    Shift shift{searched.low, 0, 1};
    if (nearLow < nearHigh)
        shift = {searched.high, 0, -1};
    if (part.by_dqds()) {
        shift.step = std::max(diameter * eps * static_cast<float>(x.n) + 2 * pivot, 2 * eps * std::fabs(shift.sigma));
    } else {
        const float width = values.w[m - 1] + values.werr[m - 1] - values.w[0] - values.werr[0];
        const float averageGap = std::fabs(width / static_cast<float>(m - 1));
        const int gap = shift.sign > 0 ? 0 : m - 2, end = shift.sign > 0 ? 0 : m - 1;
        shift.step = std::max(std::max(values.wgap[gap], averageGap) / 2, values.werr[end]);
    }
    return shift;
}

// L D L' = T - sigma. Whether its pivots are not too large and, with a sign, all have that one.
bool factor(const Part& part, float sigma, int sign, float* d, float* l) {
    const float limit = growthLimit * (part.ends.high - part.ends.low);
    float pivot = part.d[0] - sigma;
    for (int i = 0;; ++i) {
        d[i] = pivot;
        if (!(std::fabs(pivot) <= limit) || static_cast<float>(sign) * pivot < 0)
            return false;
        if (i == part.n - 1)
            return true;
        l[i] = part.e[i] / pivot;
        pivot = part.d[i + 1] - sigma - l[i] * part.e[i];
    }
}

// Overwrites the block with its root. False if no shift does.
bool make_root(const Part& part, Shift shift, int n, float* work) {
    float *const d = work, *const l = work + part.n;
    const float diameter = part.ends.high - part.ends.low;
    bool found = false;
    for (int i = 0; i < tries && !found; ++i) {
        found = factor(part, shift.sigma, part.by_dqds() ? shift.sign : 0, d, l);
        if (found)
            break;
        const float sign = static_cast<float>(shift.sign);
        if (i == tries - 2) { // the last one is certain to be definite
            const float beyond = 2 * diameter * eps * static_cast<float>(n) + 4 * part.sturm.leastPivot;
            shift.sigma = (shift.sign > 0 ? part.rows.low : part.rows.high) - sign * beyond;
        } else {
            shift.sigma -= sign * shift.step;
            shift.step *= 2;
        }
    }
    if (!found)
        return false;
    std::copy(d, d + part.n, part.d);
    std::copy(l, l + part.n - 1, part.e);
    part.e[part.n - 1] = shift.sigma;
    return true;
}

void perturb(const Part& part, float* work) {
    int seed[] = {1, 1, 1, 1};
    larnv(Distribution::uniform11, seed, 2 * part.n - 1, work);
    for (int i = 0; i < part.n; ++i)
        part.d[i] *= 1 + perturbation * work[i];
    for (int i = 0; i < part.n - 1; ++i)
        part.e[i] *= 1 + perturbation * work[part.n + i];
}

// All values of the root, of which the wanted ones are stored. Result: that of larre.
int values_by_dqds(const Part& part, int sign, const Values& values, float* work) {
    const int n = part.n;
    for (int i = 0; i < n; ++i) {
        work[2 * i] = std::fabs(part.d[i]);
        work[2 * i + 1] = i < n - 1 ? part.e[i] * part.e[i] * work[2 * i] : 0;
    }
    if (lasq2(n, work) != 0)
        return -5;
    const float accuracy = std::log(static_cast<float>(n)) * 4 * eps;
    for (int i = 0; i < part.wanted(); ++i) {
        const int number = part.first + i;
        values.w[i] = sign > 0 ? work[n - number] : -work[number - 1];
        values.werr[i] = accuracy * std::fabs(values.w[i]);
        if (values.w[i] != values.w[i])
            return -6;
    }
    return 0;
}

// The values from bisection, relative to the root.
void values_by_bisection(const Part& part, const RefineTolerance& tolerance, const Values& values, float* work) {
    const float sigma = part.e[part.n - 1];
    for (int i = 0; i < part.wanted(); ++i) {
        values.w[i] -= sigma;
        values.werr[i] += std::fabs(values.w[i]) * eps;
    }
    for (int i = 0; i < part.n - 1; ++i)
        work[i] = part.d[i] * part.e[i] * part.e[i];
    larrb(part.n, part.d, work, values, 0, part.wanted() - 1, tolerance, part.sturm.leastPivot,
          part.ends.high - part.ends.low, part.n - 1);
}

void set_gaps(int m, float end, const Values& values) {
    for (int i = 0; i < m; ++i) {
        const float next = i < m - 1 ? values.w[i + 1] - values.werr[i + 1] : end;
        values.wgap[i] = std::max(0.0F, next - (values.w[i] + values.werr[i]));
    }
}

} // namespace

int larra(int n, const float* d, float* e, float* e2, float tolerance, float norm, int* isplit) {
    int blocks = 0;
    for (int i = 0; i < n - 1; ++i) {
        const float limit =
            tolerance < 0 ? -tolerance * norm : tolerance * std::sqrt(std::fabs(d[i])) * std::sqrt(std::fabs(d[i + 1]));
        if (std::fabs(e[i]) <= limit) {
            e[i] = 0;
            e2[i] = 0;
            isplit[blocks++] = i + 1;
        }
    }
    if (n > 0)
        isplit[blocks++] = n;
    return blocks;
}

int larre(const Wanted& wanted, Mrrr& x, const RefineTolerance& tolerance, float splitTolerance, float* work,
          int* iwork) {
    const int n = x.n;
    if (n <= 0)
        return 0;
    Interval all = row_interval(n, x.d, x.e, 0);
    float largest = 1;
    for (int i = 0; i < n; ++i) {
        const Interval row = row_interval(n, x.d, x.e, i);
        x.gershgorin[2 * i] = row.low;
        x.gershgorin[2 * i + 1] = row.high;
        all.include(row);
        if (i < n - 1)
            largest = std::max(largest, x.e2[i]);
    }
    x.leastPivot = machine::safeMinimum * largest;
    x.blocks = larra(n, x.d, x.e, x.e2, splitTolerance, all.high - all.low, x.isplit);
    const Sturm whole{n, x.d, x.e2, x.leastPivot};
    const bool everything = wanted.range == Range::all;
    x.searched = all;
    x.m = 0;
    if (!everything) {
        const float absolute = least_tolerance(x.leastPivot), relative = std::sqrt(eps) * 0.5e-3F;
        const SearchResult result = larrd({whole, x.d, x.e, x.isplit, x.blocks, absolute, relative}, wanted, true,
                                          {work, iwork}, {x.w, x.iblock, x.werr, x.indexw});
        if (result.info != 0)
            return -1;
        x.searched = result.searched;
        x.m = result.count;
    }

    int begin = 0;
    for (int block = 0; block < x.blocks; ++block) {
        const int first = x.first_row(block), last = x.last_row(block), size = last - first + 1;
        int m = 0;
        if (everything) {
            m = size;
            for (int i = 0; i < size; ++i) {
                x.iblock[begin + i] = block + 1;
                x.indexw[begin + i] = i + 1;
            }
            x.m += size;
        } else {
            m = x.count_in_block(begin, block);
        }
        const Values values{x.w + begin, x.werr + begin, x.wgap + begin, m > 0 ? x.indexw[begin] : 1};
        begin += m;
        if (size == 1) {
            x.e[last] = 0;
            for (int i = 0; i < m; ++i) {
                values.w[i] = x.d[last];
                values.werr[i] = 0;
                values.wgap[i] = 0;
            }
            continue;
        }
        if (m == 0) {
            x.e[last] = 0;
            continue;
        }
        Part part{size,          x.d + first,           x.e + first, whole.block(first, last), x.rows(block), {0, 0},
                  values.number, values.number + m - 1, everything};
        if (!everything)
            set_gaps(m, x.searched.high, values);
        part.ends = spectrum_ends(part);
        const Shift shift = choose_root(part, x, values);
        if (!make_root(part, shift, n, work))
            return 2;
        if (m > 1)
            perturb(part, work);
        if (part.by_dqds()) {
            if (const int info = values_by_dqds(part, shift.sign, values, work); info != 0)
                return info;
        } else {
            values_by_bisection(part, tolerance, values, work);
        }
        set_gaps(m, x.searched.high - x.e[last], values);
    }
    return 0;
}

} // namespace qrv::lapack
