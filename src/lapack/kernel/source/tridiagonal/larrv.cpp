// SLARRV: eigenvectors from the roots of all blocks, by the tree of their representations.
//
// A node is a run of eigenvalues with a representation. It is cut where gaps are large beside the values; a single
// value gets its vector, a cluster a representation of its own, which waits in the first two columns that its vectors
// will take.
#include <cstdint>
#include <limits>
#include <new>

#include "blas/calls.hpp"
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
};

// Nodes that wait, each for at least two values.
class NodeStack {
public:
    explicit NodeStack(int* ints) : ints_(ints) {}
    bool empty() const { return count_ == 0; }
    void push(const Node& x) {
        int* const place = ints_ + 3 * std::ptrdiff_t{count_++};
        place[0] = x.first, place[1] = x.last, place[2] = x.depth;
    }
    Node pop() {
        const int* const place = ints_ + 3 * std::ptrdiff_t{--count_};
        return {place[0], place[1], place[2]};
    }

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

// One block of T, with m values that are wanted.
class Tree {
public:
    Tree(const Mrrr& x, int block, int begin, int m, const VectorsWanted& vectors, const RefineTolerance& tolerance,
         Matrix<float> z, int* isuppz, float* work, double* doubles, int* iwork)
        : firstRow_(x.first_row(block)), m_(m), vectors_{vectors.first - begin, vectors.last - begin, vectors.gap},
          leastPivot_(x.leastPivot), low_(x.searched.low), tolerance_(tolerance),
          w_(x.w + begin), relative_{work + begin, x.werr + begin, x.wgap + begin, x.indexw[begin]},
          z_(z.block(firstRow_, begin)), isuppz_(isuppz + 2 * std::ptrdiff_t{begin}),
          scratch_(work + 3 * std::ptrdiff_t{x.n}), atOnce_(doubles ? vectorsAtOnce : 1),
          doubles_(doubles ? doubles : aligned_doubles(scratch_, 4 * std::ptrdiff_t{x.n})), waiting_(iwork),
          d_(x.d + firstRow_), l_(x.e + firstRow_), ld_(work + x.n + firstRow_),
          lld_(work + 2 * std::ptrdiff_t{x.n} + firstRow_), rep_{x.last_row(block) - firstRow_ + 1, d_, l_, ld_, lld_},
          shift_(l_[rep_.n - 1]) {
        diameter_ = x.rows(block).high - x.rows(block).low;
        for (int i = 0; i < m; ++i) {
            relative_.w[i] = w_[i];
            w_[i] += shift_;
        }
    }

    bool grow() {
        waiting_.push({0, m_ - 1, 0});
        while (!waiting_.empty())
            if (!visit(waiting_.pop()))
                return false;
        return true;
    }

private:
    bool visit(const Node& node) {
        if (node.depth > m_)
            return false;
        if (node.depth > 0)
            load(node);
        for (int i = 0; i < rep_.n - 1; ++i) {
            ld_[i] = d_[i] * l_[i];
            lld_[i] = ld_[i] * l_[i];
        }
        if (node.depth > 0)
            refine(node);
        Single singles[vectorsAtOnce];
        int count = 0;
        for (int first = node.first, last; first <= node.last; first = last + 1) {
            last = end_of_cluster(first, node.last);
            const bool wanted = last + 1 >= vectors_.first && first + 1 <= vectors_.last;
            if (wanted && first == last)
                singles[count++] = single(first);
            if (count == vectorsAtOnce || last > first || last == node.last) {
                find_vectors(singles, count);
                count = 0;
            }
            if (wanted && last > first && !make_child({first, last, node.depth + 1}))
                return false;
        }
        return true;
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
    // From the intervals as they are now; gaps only become larger.
    void raise_gap(int i, float known) {
        relative_.wgap[i] = std::max(known, w_[i + 1] - relative_.werr[i + 1] - w_[i] - relative_.werr[i]);
    }

    void larrb_on(int first, int last, const RefineTolerance& tolerance, int twist) {
        larrb(rep_.n, rep_.d, rep_.lld, relative_, first, last, tolerance, leastPivot_, diameter_, twist);
    }

    // The representation of a cluster from where it waits.
    void load(const Node& node) {
        const int n = rep_.n;
        kernel::copy(n, z_.column(0, node.first), Vector{d_});
        kernel::copy(n - 1, z_.column(0, node.first + 1), Vector{l_});
        shift_ = z_(n - 1, node.first + 1);
        laset(Part::whole, n, 2, 0.0F, 0.0F, z_.block(0, node.first));
    }

    void refine(const Node& node) {
        larrb_on(node.first, node.last, tolerance_, rep_.n - 1);
        if (node.first > 0)
            raise_gap(node.first - 1, relative_.wgap[node.first - 1]);
        if (node.last < m_ - 1)
            raise_gap(node.last, relative_.wgap[node.last]);
        for (int i = node.first; i <= node.last; ++i)
            w_[i] = relative_.w[i] + shift_;
    }

    bool make_child(const Node& child) {
        const int n = rep_.n;
        for (const int end : {child.first, child.last})
            larrb_on(end, end, {finest, finest}, n - 1);
        float shift;
        if (!larrf(rep_, relative_, child.first, child.last, diameter_,
                   {gap_below(child.first), relative_.wgap[child.last]}, leastPivot_, shift, &z_(0, child.first),
                   &z_(0, child.first + 1), scratch_))
            return false;
        z_(n - 1, child.first + 1) = shift_ + shift;
        for (int i = child.first; i <= child.last; ++i) {
            float& value = relative_.w[i];
            relative_.werr[i] += 3 * eps * std::fabs(value);
            value -= shift;
            relative_.werr[i] += 4 * eps * std::fabs(value);
        }
        waiting_.push(child);
        return true;
    }

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
                .supportFirst = rep_.n,
                .supportLast = -1,
                .steps = 0,
                .bisected = false,
                .done = false};
    }

    // The gaps beside them are those from before all of them.
    void find_vectors(Single* singles, int count) {
        for (int open = count; open > 0;) {
            TwistedVector* vectors[vectorsAtOnce];
            open = 0;
            for (int k = 0; k < count; ++k)
                if (!singles[k].done)
                    vectors[open++] = &singles[k].vector;
            for (int done = 0, now; done < open; done += now) {
                now = std::min(open - done, atOnce_);
                lar1v(rep_, leastPivot_, vectors + done, now, doubles_);
            }
            for (int k = 0; k < count; ++k)
                if (!singles[k].done)
                    correct(singles[k]);
        }
        for (int k = 0; k < count; ++k)
            store(singles[k]);
    }

    // After a vector was computed: it is the one, or lambda is where the next one will be.
    void correct(Single& x) {
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
                larrb_on(i, i, {0, finest}, twisted.r);
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

    void store(const Single& x) {
        const int i = x.place;
        const Twisted& twisted = x.vector.twisted;
        relative_.w[i] = static_cast<float>(x.vector.lambda);
        w_[i] = relative_.w[i] + shift_;
        float* const z = x.vector.z;
        std::fill(z + x.supportFirst, z + twisted.first, 0.0F);
        std::fill(z + twisted.last + 1, z + x.supportLast + 1, 0.0F);
        kernel::scal(twisted.last - twisted.first + 1, twisted.scale, Vector{z + twisted.first});
        isuppz_[2 * i] = firstRow_ + twisted.first + 1;
        isuppz_[2 * i + 1] = firstRow_ + twisted.last + 1;
        if (i > 0)
            raise_gap(i - 1, relative_.wgap[i - 1]);
        if (i < m_ - 1)
            raise_gap(i, relative_.wgap[i]);
    }

    int firstRow_, m_;
    VectorsWanted vectors_; // counted from the first value of the block
    float leastPivot_, low_;
    RefineTolerance tolerance_;
    float* w_;        // eigenvalues of T
    Values relative_; // of the present representation
    Matrix<float> z_;
    int* isuppz_;
    float* scratch_;  // 9 n floats, where the doubles lie too if there is no other room
    int atOnce_;      // vectors
    double* doubles_; // 4 n for each
    NodeStack waiting_;
    float *d_, *l_, *ld_, *lld_; // the present representation
    Representation rep_;
    float shift_, diameter_ = 0;
};

} // namespace

int larrv(Mrrr& x, const VectorsWanted& vectors, const RefineTolerance& tolerance, Matrix<float> z, int* isuppz,
          float* work, int* iwork) {
    laset(Part::whole, x.n, x.m, 0.0F, 0.0F, z);
    const WorkArea<double> doubles(nullptr, 0, std::int64_t{4 * vectorsAtOnce} * x.n);
    for (int begin = 0, m; begin < x.m; begin += m) {
        const int block = x.iblock[begin] - 1;
        m = x.count_in_block(begin, block);
        if (x.first_row(block) == x.last_row(block)) {
            if (begin + 1 < vectors.first || begin + 1 > vectors.last)
                continue;
            z(x.first_row(block), begin) = 1;
            isuppz[2 * begin] = isuppz[2 * begin + 1] = x.first_row(block) + 1;
        } else if (!Tree(x, block, begin, m, vectors, tolerance, z, isuppz, work, doubles.data(), iwork).grow()) {
            return -2;
        }
    }
    return 0;
}

} // namespace qrv::lapack
