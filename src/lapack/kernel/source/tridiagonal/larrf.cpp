// SLARRF: a representation for a cluster of eigenvalues, with the shift a little outside one end of it.
#include "lapack/calls/mrrr.hpp"

namespace qrv::lapack {
namespace {

constexpr float eps = machine::precision;
constexpr float growthLimit = 8; // of the largest pivot, beside the spectral diameter
constexpr int moreTries = 1;

// L+ D+ L+' = L D L' - shift by the stationary transform, in double up to the rounding of the result. Roundings on the
// way would act as changes of L and D, and those move an eigenvector of a cluster by so much over its relative gap.
struct Candidate {
    float shift;
    float *d, *l;
    float growth = 0; // the largest pivot
    bool bad = false; // a pivot was too small, or is no number

    void factor(const Representation& x, float leastPivot) {
        growth = 0;
        bad = false;
        double s = -shift;
        for (int i = 0; i < x.n; ++i) {
            double pivot = x.d[i] + s;
            if (std::fabs(pivot) < leastPivot) {
                pivot = -leastPivot;
                bad = true;
            }
            d[i] = static_cast<float>(pivot);
            growth = std::max(growth, std::fabs(d[i]));
            bad = bad || d[i] != d[i];
            if (i < x.n - 1) {
                const double multiplier = double{x.d[i]} * x.l[i] / pivot;
                l[i] = static_cast<float>(multiplier);
                s = s * x.l[i] * multiplier - shift;
            }
        }
    }

    // The growth that the eigenvector of the value next to the shift sees: large pivots do no harm where it is small.
    bool fits_vector(int n, float diameter) const {
        float largest = std::fabs(d[n - 1]), squares = 1, product = 1, before = 1;
        for (int i = n - 2; i >= 0; --i) {
            if (product <= eps)
                product = d[i + 1] * l[i + 1] / (d[i] * l[i]) * before;
            else
                product *= std::fabs(l[i]);
            before = product;
            squares += product * product;
            largest = std::max(largest, std::fabs(d[i] * product));
        }
        return largest / (diameter * std::sqrt(squares)) <= growthLimit;
    }
};

} // namespace

bool larrf(const Representation& parent, const Values& values, int first, int last, float diameter, ClusterGaps gaps,
           float leastPivot, float& shift, float* dPlus, float* lPlus, float* work) {
    const int n = parent.n;
    const auto [w, werr, wgap, number] = values;
    const float width = std::fabs(w[last] - w[first]) + werr[last] + werr[first];
    const float averageGap = width / static_cast<float>(last - first), gap = std::min(gaps.left, gaps.right);
    const float farthest = gap / 4 + 2 * leastPivot; // that a shift may move in one try
    const float tolerated = static_cast<float>(n - 1) * gap / (diameter * std::sqrt(eps));

    Candidate left{std::min(w[first], w[last]) - werr[first], dPlus, lPlus};
    Candidate right{std::max(w[first], w[last]) + werr[last], work, work + n};
    left.shift -= std::fabs(left.shift) * 2 * eps;
    right.shift += std::fabs(right.shift) * 2 * eps;
    float leftStep = std::min(farthest, std::max(averageGap, wgap[first]) / 2);
    float rightStep = std::min(farthest, std::max(averageGap, wgap[last - 1]) / 2);

    const auto accept = [&](const Candidate& chosen) {
        shift = chosen.shift;
        if (chosen.d != dPlus) {
            std::copy(chosen.d, chosen.d + n, dPlus);
            std::copy(chosen.l, chosen.l + n - 1, lPlus);
        }
        return true;
    };
    float bestShift = 0, bestGrowth = 1 / machine::safeMinimum;
    bool any = false;
    const auto remember = [&](const Candidate& x) {
        if (!x.bad && x.growth <= bestGrowth) {
            bestGrowth = x.growth;
            bestShift = x.shift;
            any = true;
        }
    };
    for (int tries = 0; tries <= moreTries; ++tries) {
        left.factor(parent, leastPivot);
        if (!left.bad && left.growth <= growthLimit * diameter)
            return accept(left);
        right.factor(parent, leastPivot);
        if (!right.bad && right.growth <= growthLimit * diameter)
            return accept(right);
        remember(left);
        remember(right);
        if (!left.bad && !right.bad && width < gap / 128 && std::min(left.growth, right.growth) < tolerated) {
            const Candidate& better = right.growth <= left.growth ? right : left;
            if (better.fits_vector(n, diameter))
                return accept(better);
        }
        left.shift -= leftStep;
        right.shift += rightStep;
        leftStep = std::min(2 * leftStep, farthest);
        rightStep = std::min(2 * rightStep, farthest);
    }
    if (!any)
        return false;
    left.shift = bestShift;
    left.factor(parent, leastPivot);
    return accept(left);
}

} // namespace qrv::lapack
