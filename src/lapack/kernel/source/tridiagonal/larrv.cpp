// SLARRV: eigenvectors from the roots of all blocks, by the tree of their representations.
//
// A node is a run of eigenvalues with a representation. It is cut where gaps are large beside the values; a single
// value gets its vector, a cluster a representation of its own, which waits in the first two columns that its vectors
// will take.
//
// What is done with a value, or with a cluster, needs nothing of its neighbours but the gaps beside it as the node knew
// them, and no gap changes when a node is cut. So the parts of a node may be done in any order and on any thread with
// the same bits, and so may nodes. On a team a large node is shared out, in three phases of a region:
//
//   1. its values are refined, in slices
//   2. the gaps between slices are told, and where it is cut
//   3. vectors and new clusters, part by part
//
// Small nodes wait until the last region, in which whoever is free takes one with all that comes of it.
#include <atomic>
#include <cstdint>
#include <limits>
#include <new>

#include "blas/calls.hpp"
#include "blas/thread/common/machine.hpp"
#include "blas/thread/common/team_omp.hpp"
#include "blas/thread/common/work_threads.hpp"
#include "lapack/calls/mrrr.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {
namespace {

constexpr float eps = machine::precision;
constexpr float finest = 2 * eps;      // of a value, beyond which counts in float do not tell more
constexpr float vectorError = eps / 2; // of a vector, by the residual over the gap
constexpr float finestStep = 0x1p-48F; // of a value in double
constexpr int mostCorrections = 10;

// Room for so many doubles in twice as many floats and one more.
double* aligned_doubles(float* room, std::ptrdiff_t count) {
    const bool even = reinterpret_cast<std::uintptr_t>(room) % alignof(double) == 0;
    return new (room + (even ? 0 : 1)) double[static_cast<std::size_t>(count)];
}

struct Node {
    int first, last, depth;

    int size() const { return last - first + 1; }
};

// Nodes that wait, each for at least two values of its own: three ints for these.
class NodeStack {
public:
    explicit NodeStack(int* ints) : ints_(ints) {}
    bool empty() const { return count_ == 0; }
    int count() const { return count_; }
    Node operator[](int i) const {
        const int* const place = ints_ + 3 * std::ptrdiff_t{i};
        return {place[0], place[1], place[2]};
    }
    void push(const Node& x) {
        int* const place = ints_ + 3 * std::ptrdiff_t{count_++};
        place[0] = x.first, place[1] = x.last, place[2] = x.depth;
    }
    Node pop() { return (*this)[--count_]; }

private:
    int* ints_;
    int count_ = 0;
};

// Where a value lies: the interval that counts in float have told, with room for their roundings.
class Bracket {
public:
    Bracket() = default;
    Bracket(float w, float werr) : low_(w - room(w, werr)), high_(w + room(w, werr)) {}

    // Whether a step leads to the side where the value lies, and not out of the interval, which then ends at lambda.
    bool admits(bool down, double lambda, double step) {
        const double next = lambda + step;
        if (!((down ? step <= 0 : step >= 0) && low_ <= next && next <= high_))
            return false;
        (down ? high_ : low_) = lambda;
        return true;
    }

private:
    static double room(double w, double werr) { return werr + 4 * eps * std::fabs(w); }
    double low_ = 0, high_ = 0;
};

// A representation that is worked on, and room for the work of one thread.
struct Bench {
    int n;
    float *d, *l, *ld, *lld;
    float* scratch;  // 2 n floats
    double* doubles; // 4 n for each vector
    int atOnce;      // vectors
    float shift = 0; // of the representation from T

    Representation representation() const { return {n, d, l, ld, lld}; }
    void make_products() const {
        for (int i = 0; i < n - 1; ++i) {
            ld[i] = d[i] * l[i];
            lld[i] = ld[i] * l[i];
        }
    }

    // On room of a thread's own.
    static constexpr std::int64_t doublesOfOwn(int n) { return std::int64_t{20} * n; }
    static Bench on(double* room, int n) {
        auto* const floats = reinterpret_cast<float*>(room + std::ptrdiff_t{16} * n);
        return {n, floats, floats + n, floats + 2 * n, floats + 3 * n, floats + 4 * n, room, vectorsAtOnce};
    }
    // The same representation with that room.
    Bench with_room_of(const Bench& own) const {
        Bench x = *this;
        x.scratch = own.scratch, x.doubles = own.doubles, x.atOnce = own.atOnce;
        return x;
    }
};

// One block of T, with m values that are wanted.
class Tree {
public:
    Tree(const Mrrr& x, int block, int begin, int m, const VectorsWanted& vectors, const RefineTolerance& tolerance,
         Matrix<float> z, int* isuppz, float* work, double* doubles, int* iwork)
        : firstRow_(x.first_row(block)), n_(x.last_row(block) - firstRow_ + 1),
          m_(m), vectors_{vectors.first - begin, vectors.last - begin, vectors.gap}, leastPivot_(x.leastPivot),
          low_(x.searched.low), tolerance_(tolerance),
          w_(x.w + begin), relative_{work + begin, x.werr + begin, x.wgap + begin, x.indexw[begin]},
          z_(z.block(firstRow_, begin)), isuppz_(isuppz + 2 * std::ptrdiff_t{begin}),
          ints_(iwork), root_{n_,
                              x.d + firstRow_,
                              x.e + firstRow_,
                              work + x.n + firstRow_,
                              work + 2 * std::ptrdiff_t{x.n} + firstRow_,
                              work + 3 * std::ptrdiff_t{x.n},
                              doubles,
                              vectorsAtOnce} {
        if (!doubles) { // which lie in the rest of the floats then, as long as these are not used
            root_.doubles = aligned_doubles(root_.scratch, 4 * std::ptrdiff_t{x.n});
            root_.atOnce = 1;
        }
        root_.shift = root_.l[n_ - 1];
        diameter_ = x.rows(block).high - x.rows(block).low;
        for (int i = 0; i < m; ++i) {
            relative_.w[i] = w_[i];
            w_[i] += root_.shift;
        }
    }

    bool grow() {
        Bench bench = root_;
        return grow_from({0, m_ - 1, 0}, bench);
    }

    // rooms: of each thread its own.
    bool grow_on_team(int threads, double* rooms) {
        const auto own = [&](int thread) { return Bench::on(rooms + thread * Bench::doublesOfOwn(n_), n_); };
        NodeStack large(ints_ + 2 * std::ptrdiff_t{m_}), small(ints_ + 4 * std::ptrdiff_t{m_});
        int* const starts = ints_ + 6 * std::ptrdiff_t{m_};
        std::atomic<bool> fails = false;
        large.push({0, m_ - 1, 0});
        while (!large.empty() && !fails) {
            const Node node = large.pop();
            if (node.depth > m_)
                return false;
            load(node, root_);
            std::atomic<int> nextSlice = node.depth > 0 ? 0 : slices_of(node), nextRun = 0;
            int runs = 0;
            const auto refine = [&](int, int) {
                for (int slice; (slice = nextSlice++) < slices_of(node);)
                    refine_slice(node, slice, root_);
            };
            const auto cut = [&](int, int thread) {
                if (thread != 0)
                    return;
                join_slices(node);
                for (int first = node.first, last; first <= node.last; first = last + 1) {
                    const bool cluster = is_cluster(first, node.last);
                    last = end_of_run(first, node.last);
                    starts[runs++] = cluster ? ~first : first;
                }
            };
            const auto run_at = [&](int run) {
                const auto place = [&](int r) { return r < runs ? std::max(starts[r], ~starts[r]) : node.last + 1; };
                return Run{place(run), place(run + 1) - 1, starts[run] < 0};
            };
            on_team(threads, refine, cut, [&](int, int thread) {
                const Bench bench = root_.with_room_of(own(thread));
                for (int run; (run = nextRun++) < runs;)
                    if (!take(run_at(run), bench))
                        fails = true;
            });
            for (int run = 0; run < runs; ++run)
                if (const Run x = run_at(run); x.cluster && is_wanted(x.first, x.last)) {
                    const Node child{x.first, x.last, node.depth + 1};
                    (child.size() >= ofTeam ? large : small).push(child);
                }
        }
        std::atomic<int> next = 0;
        on_team(threads, [&](int, int thread) {
            Bench bench = own(thread);
            for (int i; (i = next++) < small.count();)
                if (!grow_from(small[i], bench))
                    fails = true;
        });
        return !fails;
    }

private:
    // Values of a node that are taken together: a cluster, or some that stand alone.
    struct Run {
        int first, last;
        bool cluster;
    };

    // A node and all that comes of it. The nodes that wait are parts of it.
    bool grow_from(const Node& top, Bench& bench) {
        NodeStack waiting(ints_ + 2 * std::ptrdiff_t{top.first});
        waiting.push(top);
        while (!waiting.empty()) {
            const Node node = waiting.pop();
            if (node.depth > m_)
                return false;
            load(node, bench);
            if (node.depth > 0)
                for (int slice = 0; slice < slices_of(node); ++slice)
                    refine_slice(node, slice, bench);
            join_slices(node);
            for (int first = node.first, last; first <= node.last; first = last + 1) {
                const bool cluster = is_cluster(first, node.last);
                last = end_of_run(first, node.last);
                if (!take({first, last, cluster}, bench))
                    return false;
                if (cluster && is_wanted(first, last))
                    waiting.push({first, last, node.depth + 1});
            }
        }
        return true;
    }

    bool is_wanted(int first, int last) const { return last + 1 >= vectors_.first && first + 1 <= vectors_.last; }

    bool take(const Run& run, const Bench& bench) {
        if (run.cluster)
            return !is_wanted(run.first, run.last) || make_child(run.first, run.last, bench);
        Single singles[vectorsAtOnce];
        int count = 0;
        for (int i = run.first; i <= run.last; ++i)
            if (is_wanted(i, i))
                singles[count++] = single(i);
        find_vectors(singles, count, bench);
        return true;
    }

    // ---- Where a node is cut ----------------------------------------------------------------------------------------

    bool is_cluster(int first, int last) const { return end_of_cluster(first, last) > first; }
    int end_of_run(int first, int last) const {
        int end = end_of_cluster(first, last);
        if (end == first)
            while (end < last && end - first + 1 < vectorsAtOnce && !is_cluster(end + 1, last))
                ++end;
        return end;
    }
    int end_of_cluster(int first, int last) const {
        int i = first;
        while (i < last && !(relative_.wgap[i] >= vectors_.gap * std::fabs(relative_.w[i])))
            ++i;
        return i;
    }

    float gap_below(int i) const {
        return i == 0 ? std::max(0.0F, w_[0] - relative_.werr[0] - low_) : relative_.wgap[i - 1];
    }

    // ---- Nodes ------------------------------------------------------------------------------------------------------

    void larrb_on(int first, int last, const RefineTolerance& tolerance, int twist, const Bench& bench) {
        larrb(n_, bench.d, bench.lld, relative_, first, last, tolerance, leastPivot_, diameter_, twist);
    }

    // The representation of a cluster from where it waits; that of the root is there.
    void load(const Node& node, Bench& to) {
        if (node.depth > 0) {
            kernel::copy(n_, z_.column(0, node.first), Vector{to.d});
            kernel::copy(n_ - 1, z_.column(0, node.first + 1), Vector{to.l});
            to.shift = z_(n_ - 1, node.first + 1);
            laset(Part::whole, n_, 2, 0.0F, 0.0F, z_.block(0, node.first));
        }
        to.make_products();
    }

    static int slices_of(const Node& node) { return (node.size() + sliceSize - 1) / sliceSize; }
    void refine_slice(const Node& node, int slice, const Bench& bench) {
        const int first = node.first + slice * sliceSize, last = std::min(first + sliceSize - 1, node.last);
        larrb_on(first, last, tolerance_, n_ - 1, bench);
        for (int i = first; i <= last; ++i)
            w_[i] = relative_.w[i] + bench.shift;
    }
    // The gaps between slices, which these leave as they were.
    void join_slices(const Node& node) {
        if (node.depth > 0)
            for (int i = node.first + sliceSize; i <= node.last; i += sliceSize)
                relative_.wgap[i - 1] =
                    std::max(0.0F, relative_.w[i] - relative_.werr[i] - relative_.w[i - 1] - relative_.werr[i - 1]);
    }

    bool make_child(int first, int last, const Bench& bench) {
        for (const int end : {first, last})
            larrb_on(end, end, {finest, finest}, n_ - 1, bench);
        float shift;
        if (!larrf(bench.representation(), relative_, first, last, diameter_, {gap_below(first), relative_.wgap[last]},
                   leastPivot_, shift, &z_(0, first), &z_(0, first + 1), bench.scratch))
            return false;
        z_(n_ - 1, first + 1) = bench.shift + shift;
        for (int i = first; i <= last; ++i) {
            float& value = relative_.w[i];
            relative_.werr[i] += 3 * eps * std::fabs(value);
            value -= shift;
            relative_.werr[i] += 4 * eps * std::fabs(value);
        }
        return true;
    }

    // ---- Vectors ----------------------------------------------------------------------------------------------------

    // A single value and its vector: corrected by its Rayleigh quotient as long as that leads inward, else first
    // refined by bisection. The value is kept in double: an error of it stands in the vector, over its gap.
    struct Single {
        int place;
        TwistedVector vector;
        Bracket range;
        float gap; // to the nearest value
        double best;
        float bestResidual;
        int supportFirst, supportLast, steps;
        bool bisected, done;
    };
    Single single(int i) {
        const bool lowest = i == 0, highest = i == m_ - 1;
        const float value = relative_.w[i], werr = relative_.werr[i], outermost = eps * (std::fabs(value) + werr);
        const float gap = std::min(lowest ? outermost : relative_.wgap[i - 1], highest ? outermost : relative_.wgap[i]);
        return {.place = i,
                .vector = {value, lowest || highest ? 0 : gap * eps, &z_(0, i), {}},
                .range = Bracket(value, werr),
                .gap = gap,
                .best = value,
                .bestResidual = std::numeric_limits<float>::infinity(),
                .supportFirst = n_,
                .supportLast = -1,
                .steps = 0,
                .bisected = false,
                .done = false};
    }

    void find_vectors(Single* singles, int count, const Bench& bench) {
        for (int open = count; open > 0;) {
            TwistedVector* vectors[vectorsAtOnce];
            open = 0;
            for (int k = 0; k < count; ++k)
                if (!singles[k].done)
                    vectors[open++] = &singles[k].vector;
            for (int done = 0, now; done < open; done += now) {
                now = std::min(open - done, bench.atOnce);
                lar1v(bench.representation(), leastPivot_, vectors + done, now, bench.doubles);
            }
            for (int k = 0; k < count; ++k)
                if (!singles[k].done)
                    correct(singles[k], bench);
        }
        for (int k = 0; k < count; ++k)
            store(singles[k], bench.shift);
    }

    // After a vector was computed: it is the one, or lambda is where the next one will be.
    void correct(Single& x, const Bench& bench) {
        const int i = x.place;
        Twisted& twisted = x.vector.twisted;
        double& lambda = x.vector.lambda;
        x.supportFirst = std::min(x.supportFirst, twisted.first);
        x.supportLast = std::max(x.supportLast, twisted.last);
        if (x.steps > mostCorrections) { // this is the best one again
            x.done = true;
            return;
        }
        if (x.steps == 0 || twisted.residual < x.bestResidual) {
            x.bestResidual = twisted.residual;
            x.best = lambda;
        }
        ++x.steps;
        if (x.steps <= mostCorrections && twisted.residual > vectorError * x.gap &&
            std::fabs(twisted.correction) > finestStep * std::fabs(lambda)) {
            if (x.range.admits(relative_.number + i <= twisted.below, lambda, twisted.correction)) {
                lambda += twisted.correction;
                return;
            }
            if (!x.bisected) {
                x.bisected = true;
                larrb_on(i, i, {0, finest}, twisted.r, bench);
                x.range = Bracket(relative_.w[i], relative_.werr[i]);
                lambda = relative_.w[i];
                twisted.r = -1;
                return;
            }
        }
        x.done = !(x.bestResidual < twisted.residual);
        if (!x.done)
            lambda = x.best;
        x.steps = mostCorrections + 1;
    }

    void store(const Single& x, float shift) {
        const int i = x.place;
        const Twisted& twisted = x.vector.twisted;
        relative_.w[i] = static_cast<float>(x.vector.lambda);
        w_[i] = relative_.w[i] + shift;
        float* const z = x.vector.z;
        std::fill(z + x.supportFirst, z + twisted.first, 0.0F);
        std::fill(z + twisted.last + 1, z + x.supportLast + 1, 0.0F);
        kernel::scal(twisted.last - twisted.first + 1, twisted.scale, Vector{z + twisted.first});
        isuppz_[2 * i] = firstRow_ + twisted.first + 1;
        isuppz_[2 * i + 1] = firstRow_ + twisted.last + 1;
    }

    static constexpr int sliceSize = 16; // values that are refined together, whatever the team
    static constexpr int ofTeam = 16;    // values of a node that is shared out

    int firstRow_, n_, m_;
    VectorsWanted vectors_; // counted from the first value of the block
    float leastPivot_, low_;
    RefineTolerance tolerance_;
    float* w_;        // eigenvalues of T
    Values relative_; // of the representation that they belong to
    Matrix<float> z_;
    int* isuppz_;
    int* ints_; // 7 m
    Bench root_;
    float diameter_ = 0;
};

// Elements of vectors for which a thread comes: 25 ns each.
constexpr double leastElements = 5000;

int larrv_threads(int n, int m) {
    return threads_for_shares(static_cast<double>(n) * m / leastElements, ThisMachine());
}

} // namespace

int larrv(Mrrr& x, const VectorsWanted& vectors, const RefineTolerance& tolerance, Matrix<float> z, int* isuppz,
          float* work, int* iwork) {
    laset(Part::whole, x.n, x.m, 0.0F, 0.0F, z);
    const int most = larrv_threads(x.n, x.m);
    const WorkArea<double> rooms(nullptr, 0, most > 1 ? most * Bench::doublesOfOwn(x.n) : 0);
    const WorkArea<double> doubles(nullptr, 0, rooms.data() ? 0 : std::int64_t{4 * vectorsAtOnce} * x.n);
    for (int begin = 0, m; begin < x.m; begin += m) {
        const int block = x.iblock[begin] - 1;
        m = x.count_in_block(begin, block);
        if (x.first_row(block) == x.last_row(block)) {
            if (begin + 1 < vectors.first || begin + 1 > vectors.last)
                continue;
            z(x.first_row(block), begin) = 1;
            isuppz[2 * begin] = isuppz[2 * begin + 1] = x.first_row(block) + 1;
            continue;
        }
        Tree tree(x, block, begin, m, vectors, tolerance, z, isuppz, work, rooms.data() ? rooms.data() : doubles.data(),
                  iwork);
        const int threads =
            rooms.data() ? std::min(most, larrv_threads(x.last_row(block) + 1 - x.first_row(block), m)) : 1;
        if (!(threads > 1 ? tree.grow_on_team(threads, rooms.data()) : tree.grow()))
            return -2;
    }
    return 0;
}

} // namespace qrv::lapack
