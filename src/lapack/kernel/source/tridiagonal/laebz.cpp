// SLAEBZ: eigenvalues counted at the ends of intervals, or intervals of them cut until they are narrow.
#include "lapack/calls/bisection.hpp"

namespace qrv::lapack {

IntervalResult laebz(IntervalJob job, const Sturm& t, int steps, const BisectionTolerance& tolerance,
                     IntervalList list) {
    IntervalResult result;
    if (job == IntervalJob::count) {
        for (int i = 0; i < list.count; ++i) {
            const Interval range = list.at(i).range;
            const CountedInterval counted{range, t.count(range.low), t.count(range.high)};
            list.put(i, counted);
            result.found += counted.upTo - counted.below;
        }
        return result;
    }
    if (job != IntervalJob::halve && job != IntervalJob::findCounts)
        return {0, -1};
    int converged = 0; // they come first; halves that were put aside wait at the end
    bool full = false;
    for (int i = 0; i < list.count && !full; ++i) {
        CountedInterval now = list.at(i);
        if (job == IntervalJob::findCounts) {
            now = find_count(t, now.range, list.wanted[i], steps, tolerance);
        } else if (now.below < now.upTo) {
            narrow(t, now, steps, tolerance, [&](const CountedInterval& upper) {
                full = list.count == list.room;
                if (!full)
                    list.put(list.count++, upper);
                return !full;
            });
        }
        list.put(i, now);
        if (now.below >= now.upTo || tolerance.met_by(now.range)) {
            if (job == IntervalJob::findCounts)
                std::swap(list.wanted[i], list.wanted[converged]);
            list.exchange(i, converged++);
        }
    }
    return {list.count, full ? list.room + 1 : list.count - converged};
}

} // namespace qrv::lapack
