// SLARRV: eigenvectors from the roots of all blocks, by the tree of their representations.
//
// A node is a run of eigenvalues with a representation. It is cut where gaps are large beside the values; a single
// value gets its vector, a cluster a representation of its own, which waits in the first two columns that its vectors
// will take.
#include <cstdint>
#include <new>

#include "blas/calls.hpp"
#include "lapack/calls/mrrr.hpp"
#include "lapack/calls/norms.hpp"

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
    double low_, high_;
};

// One block of T, with m values that are wanted.
class Tree {
public:
    Tree(const Mrrr& x, int block, int begin, int m, const VectorsWanted& vectors, const RefineTolerance& tolerance,
         Matrix<float> z, int* isuppz, float* work, int* iwork)
        : firstRow_(x.first_row(block)), m_(m), vectors_{vectors.first - begin, vectors.last - begin, vectors.gap},
          leastPivot_(x.leastPivot), low_(x.searched.low), tolerance_(tolerance),
          w_(x.w + begin), relative_{work + begin, x.werr + begin, x.wgap + begin, x.indexw[begin]},
          z_(z.block(firstRow_, begin)), isuppz_(isuppz + 2 * std::ptrdiff_t{begin}),
          scratch_(work + 3 * std::ptrdiff_t{x.n}), doubles_(aligned_doubles(scratch_, 4 * std::ptrdiff_t{x.n})),
          waiting_(iwork), d_(x.d + firstRow_), l_(x.e + firstRow_), ld_(work + x.n + firstRow_),
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
        for (int first = node.first, last; first <= node.last; first = last + 1) {
            last = end_of_cluster(first, node.last);
            if (last + 1 < vectors_.first || first + 1 > vectors_.last)
                continue;
            if (first == last)
                find_vector(first);
            else if (!make_child({first, last, node.depth + 1}))
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

    // The vector of a single value, which is corrected by its Rayleigh quotient as long as that leads inward, else
    // first refined by bisection. The value is kept in double: an error of it stands in the vector, over its gap.
    void find_vector(int i) {
        const bool lowest = i == 0, highest = i == m_ - 1;
        float *const w = relative_.w, *const werr = relative_.werr, *const wgap = relative_.wgap;
        Bracket range(w[i], werr[i]);
        const float outermost = eps * (std::fabs(w[i]) + werr[i]), gapAbove = wgap[i];
        const float gap = std::min(lowest ? outermost : wgap[i - 1], highest ? outermost : wgap[i]);
        const float negligible = lowest || highest ? 0 : gap * eps;
        wgap[i] = gap;

        double lambda = w[i], best = lambda;
        float* const z = &z_(0, i);
        Twisted twisted;
        float bestResidual = 0;
        int supportFirst = rep_.n, supportLast = -1;
        const auto compute = [&] {
            lar1v<double>(rep_, 0, lambda, leastPivot_, negligible, z, twisted, doubles_);
            supportFirst = std::min(supportFirst, twisted.first);
            supportLast = std::max(supportLast, twisted.last);
        };
        bool bisected = false;
        for (int step = 0; step <= mostCorrections; ++step) {
            compute();
            if (step == 0 || twisted.residual < bestResidual) {
                bestResidual = twisted.residual;
                best = lambda;
            }
            if (!(twisted.residual > vectorError * gap &&
                  std::fabs(twisted.correction) > finestStep * std::fabs(lambda)))
                break;
            if (range.admits(relative_.number + i <= twisted.below, lambda, twisted.correction)) {
                lambda += twisted.correction;
            } else if (!bisected) {
                bisected = true;
                larrb_on(i, i, {0, finest}, twisted.r);
                range = Bracket(w[i], werr[i]);
                lambda = w[i];
                twisted.r = -1;
            } else {
                break;
            }
        }
        if (bestResidual < twisted.residual) {
            lambda = best;
            compute();
        }
        w[i] = static_cast<float>(lambda);
        store(i, twisted, supportFirst, supportLast);
        wgap[i] = gapAbove;
        if (!lowest)
            raise_gap(i - 1, wgap[i - 1]);
        if (!highest)
            raise_gap(i, gapAbove);
    }

    void store(int i, const Twisted& twisted, int supportFirst, int supportLast) {
        w_[i] = relative_.w[i] + shift_;
        float* const z = &z_(0, i);
        std::fill(z + supportFirst, z + twisted.first, 0.0F);
        std::fill(z + twisted.last + 1, z + supportLast + 1, 0.0F);
        kernel::scal(twisted.last - twisted.first + 1, twisted.scale, Vector{z + twisted.first});
        isuppz_[2 * i] = firstRow_ + twisted.first + 1;
        isuppz_[2 * i + 1] = firstRow_ + twisted.last + 1;
    }

    int firstRow_, m_;
    VectorsWanted vectors_; // counted from the first value of the block
    float leastPivot_, low_;
    RefineTolerance tolerance_;
    float* w_;        // eigenvalues of T
    Values relative_; // of the present representation
    Matrix<float> z_;
    int* isuppz_;
    float* scratch_;  // 9 n floats, or in the same place
    double* doubles_; // 4 n doubles
    NodeStack waiting_;
    float *d_, *l_, *ld_, *lld_; // the present representation
    Representation rep_;
    float shift_, diameter_ = 0;
};

} // namespace

int larrv(Mrrr& x, const VectorsWanted& vectors, const RefineTolerance& tolerance, Matrix<float> z, int* isuppz,
          float* work, int* iwork) {
    laset(Part::whole, x.n, x.m, 0.0F, 0.0F, z);
    for (int begin = 0, m; begin < x.m; begin += m) {
        const int block = x.iblock[begin] - 1;
        m = x.count_in_block(begin, block);
        if (x.first_row(block) == x.last_row(block)) {
            if (begin + 1 < vectors.first || begin + 1 > vectors.last)
                continue;
            z(x.first_row(block), begin) = 1;
            isuppz[2 * begin] = isuppz[2 * begin + 1] = x.first_row(block) + 1;
        } else if (!Tree(x, block, begin, m, vectors, tolerance, z, isuppz, work, iwork).grow()) {
            return -2;
        }
    }
    return 0;
}

} // namespace qrv::lapack
