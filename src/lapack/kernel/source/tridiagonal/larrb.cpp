// SLARRB: intervals of eigenvalues of L D L' cut until they are narrow enough.
//
// Counts for several points cost no more than one, so several intervals go together, each with its share of the points:
// at first to move its ends outward as far as they must, then to cut it into as many parts.
#include "lapack/calls/mrrr.hpp"

namespace qrv::lapack {
namespace {

constexpr int intervalsAtOnce = pointsAtOnce / 2; // each needs a point for either end
constexpr int mostDoublings = 260;                // from the smallest to the largest number

struct Refinement {
    int place, number; // among the values of this call, and among all of the matrix
    float narrowOfGap; // half the width that is narrow enough for its gap
    Interval range;
    float stepDown, stepUp;
    int rounds = 0, cuts = 0;
    bool lowKnown = false, highKnown = false; // at least `number` - 1 values lie below, at least `number` do
    bool changed = false;

    bool cutting() const { return lowKnown && highKnown; }
    bool narrow(float ofValue, float leastPivot) const {
        const float half = std::fabs(range.high - range.low) / 2;
        return half <= std::max(narrowOfGap, ofValue * range.size()) || half <= 2 * leastPivot;
    }

    void choose_points(int count, float* x) const {
        if (cutting()) {
            const float width = range.high - range.low;
            for (int k = 0; k < count; ++k)
                x[k] = range.low + width * (static_cast<float>(k + 1) / static_cast<float>(count + 1));
            return;
        }
        float down = range.low, up = range.high, stepOfDown = stepDown, stepOfUp = stepUp;
        for (int k = 0; k + 1 < count; k += 2) {
            x[k] = down;
            x[k + 1] = up;
            down -= stepOfDown;
            up += stepOfUp;
            stepOfDown *= 2;
            stepOfUp *= 2;
        }
        if (count % 2 != 0)
            x[count - 1] = up;
    }

    // below[k]: values below x[k].
    void learn(int count, const float* x, const int* below) {
        ++rounds;
        if (cutting())
            return cut(count, x, below);
        for (int k = 0; k + 1 < count && !cutting(); k += 2) {
            move_end(lowKnown, below[k] < number, range.low, stepDown, -1);
            move_end(highKnown, below[k + 1] >= number, range.high, stepUp, 1);
        }
        if (rounds > mostDoublings)
            lowKnown = highKnown = true;
    }

private:
    // From a point that was looked at to the one that is next.
    void move_end(bool& known, bool passed, float& end, float& step, float sign) {
        known = known || passed;
        if (known)
            return;
        end += sign * step;
        step *= 2;
        changed = true;
    }
    void cut(int count, const float* x, const int* below) {
        changed = true;
        ++cuts;
        for (int k = 0; k < count; ++k) {
            if (below[k] >= number) {
                range.high = x[k];
                return;
            }
            range.low = x[k];
        }
    }
};

} // namespace

void larrb(int n, const float* d, const float* lld, const Values& values, int first, int last,
           const RefineTolerance& tolerance, float leastPivot, float diameter, int twist) {
    const int steps = bisection_steps(diameter, leastPivot);
    const int r = twist >= 0 && twist < n ? twist : n - 1;
    const auto [w, werr, wgap, number] = values;
    Refinement active[intervalsAtOnce];
    int count = 0;
    for (int next = first; next <= last || count > 0;) {
        for (; count < intervalsAtOnce && next <= last; ++next) {
            const float gap = std::min(wgap[next > first ? next - 1 : first], wgap[next]);
            const float step = std::max(werr[next], leastPivot);
            active[count++] = {.place = next,
                               .number = number + next,
                               .narrowOfGap = tolerance.ofGap * gap,
                               .range = {w[next] - werr[next], w[next] + werr[next]},
                               .stepDown = step,
                               .stepUp = step};
        }
        const int share = pointsAtOnce / count;
        float x[pointsAtOnce];
        int below[pointsAtOnce];
        for (int k = 0; k < pointsAtOnce; ++k)
            x[k] = active[0].range.low;
        for (int k = 0; k < count; ++k)
            active[k].choose_points(share, x + k * share);
        laneg(n, d, lld, x, r, below);
        for (int k = 0; k < count; ++k)
            active[k].learn(share, x + k * share, below + k * share);
        for (int k = count - 1; k >= 0; --k) {
            const Refinement& one = active[k];
            if (!one.cutting() || (one.cuts < steps && !one.narrow(tolerance.ofValue, leastPivot)))
                continue;
            if (one.changed) {
                w[one.place] = one.range.middle();
                werr[one.place] = one.range.high - w[one.place];
            }
            active[k] = active[--count];
        }
    }
    for (int i = first + 1; i <= last; ++i)
        wgap[i - 1] = std::max(0.0F, w[i] - werr[i] - w[i - 1] - werr[i - 1]);
}

} // namespace qrv::lapack
