// SLARRB: intervals of eigenvalues of L D L' halved until they are narrow enough.
#include "lapack/kernel/source/tridiagonal/mrrr.hpp"

namespace qrv::lapack {
namespace {

// Moves an end outward by more and more until it has passed, or the range of floats ends.
template <class Passed>
void move_out(float& end, float step, const Passed& passed) {
    constexpr int doublings = 260; // from the smallest to the largest number
    for (int i = 0; i < doublings && !passed(end); ++i, step *= 2)
        end += step;
}

} // namespace

void larrb(int n, const float* d, const float* lld, const Values& values, int first, int last,
           const RefineTolerance& tolerance, float leastPivot, float diameter, int twist) {
    const int steps = bisection_steps(diameter, leastPivot);
    const int r = twist >= 0 && twist < n ? twist : n - 1;
    const auto [w, werr, wgap, index] = values;
    float gapLeft = wgap[first];
    for (int i = first; i <= last; ++i) {
        const int number = values.index[i];
        const float gap = std::min(gapLeft, wgap[i]);
        gapLeft = wgap[i];
        Interval range{w[i] - werr[i], w[i] + werr[i]};
        const float step = std::max(werr[i], leastPivot);
        const auto count = [&](float x) { return laneg(n, d, lld, x, r); };
        const float low = range.low, high = range.high;
        move_out(range.low, -step, [&](float x) { return count(x) < number; });
        move_out(range.high, step, [&](float x) { return count(x) >= number; });
        bool changed = range.low != low || range.high != high;
        for (int k = 0; k < steps; ++k) {
            const float half = std::fabs(range.high - range.low) / 2;
            if (half <= std::max(tolerance.ofGap * gap, tolerance.ofValue * range.size()) || half <= 2 * leastPivot)
                break;
            const float middle = range.middle();
            (count(middle) < number ? range.low : range.high) = middle;
            changed = true;
        }
        if (changed) {
            w[i] = range.middle();
            werr[i] = range.high - w[i];
        }
    }
    for (int i = first + 1; i <= last; ++i)
        wgap[i - 1] = std::max(0.0F, w[i] - werr[i] - w[i - 1] - werr[i - 1]);
}

} // namespace qrv::lapack
