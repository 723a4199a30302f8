// SBDSQR: singular values of a bidiagonal matrix by the implicit QR iteration, with vectors.
//
// Each sweep chases a bulge along an unreduced block, from its larger end to the smaller one, with a shift from the
// smaller end or, where that would cost relative accuracy, without one. Its rotations are kept back, and several sweeps
// are applied to the vectors together. What is found is relatively accurate: all tolerances are relative to an estimate
// of the smallest singular value.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "blas/calls.hpp"
#include "lapack/calls/rotations.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/rotations/lartg.hpp"
#include "lapack/kernel/source/svd/kept_sweeps.hpp"
#include "lapack/kernel/source/svd/ordered_values.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

constexpr float tolerance = 10 * machine::epsilon; // the eighth root of 1/epsilon, which is below 10, times epsilon
constexpr int sweepsPerValue = 6;
constexpr int fewValues =
    8; // up to these the sweeps are as fast without vectors too, and come nearer to those with them

// A lower bidiagonal matrix made upper by rotations of its rows.
void make_upper(const BidiagonalVectors& vectors, int n, float* d, float* e, float* work) {
    float *const c = work, *const s = work + n - 1;
    rotate_to_other_triangle(n, d, e, c, s);
    kernel::lasr(Side::right, Pivot::variable, Direct::forward, vectors.nru, n, c, s, vectors.u);
    kernel::lasr(Side::left, Pivot::variable, Direct::forward, n, vectors.ncc, c, s, vectors.c);
}

// Rows and columns first to last of the matrix, not split by a zero beside the diagonal.
struct Block {
    int first, last;
    int length() const { return last - first; }
    bool meets(const Block& other) const { return first <= other.last && last >= other.first; }
};

// The block as a sweep sees it, which begins at either end: from the last row on its transpose is upper bidiagonal
// again, and left and right are exchanged.
struct Chase {
    Direct direct;
    Block block;
    float *d, *e;

    bool forward() const { return direct == Direct::forward; }
    int length() const { return block.length(); }
    float& D(int i) const { return d[forward() ? block.first + i : block.last - i]; }
    float& E(int i) const { return e[plane(i)]; }
    int plane(int i) const { return forward() ? block.first + i : block.last - 1 - i; }
};

// The larger end first.
Chase chase_of(Block block, float* d, float* e) {
    const bool down = std::fabs(d[block.first]) >= std::fabs(d[block.last]);
    return {down ? Direct::forward : Direct::backward, block, d, e};
}

class Iteration {
public:
    Iteration(int n, float* d, float* e, const BidiagonalVectors& vectors, float* work)
        : n_(n), d_(d), e_(e), vectors_(vectors), kept_(n, vectors, work) {}

    // Whether it came to an end.
    bool run() {
        if (!all_finite(n_, d_, e_))
            return false;
        set_threshold();
        const std::int64_t most = std::int64_t{sweepsPerValue} * n_ * n_;
        std::int64_t rotations = 0;
        Chase chase{Direct::forward, {n_, -1}, d_, e_};
        for (int last = n_ - 1; last > 0;) {
            if (rotations > most)
                return false;
            const Block block = unreduced_block(last);
            if (block.length() == 0) {
                --last;
            } else if (block.length() == 1) {
                decompose_pair(block.first);
                last -= 2;
            } else {
                chase = block.meets(chase.block) ? Chase{chase.direct, block, d_, e_} : chase_of(block, d_, e_);
                float smallest;
                if (splits(chase, smallest))
                    continue;
                sweep(chase, shift_for(chase, smallest));
                rotations += block.length();
            }
        }
        return true;
    }
    void apply_kept() { kept_.apply(); }

private:
    // From a lower bound of the smallest singular value. The published 6 n^2 times the safe minimum in place of n times
    // it would be a thousandth of a matrix of size 1e-30 and order 100.
    void set_threshold() {
        float smallest = std::fabs(d_[0]), mu = smallest;
        for (int i = 1; i < n_ && smallest != 0; ++i) {
            mu = std::fabs(d_[i]) * (mu / (mu + std::fabs(e_[i - 1])));
            smallest = std::min(smallest, mu);
        }
        const float n = static_cast<float>(n_);
        threshold_ = std::max(tolerance * (smallest / std::sqrt(n)), n * machine::safeMinimum);
    }

    // The one that ends in row `last`; what is negligible beside it becomes zero.
    Block unreduced_block(int last) {
        largest_ = std::fabs(d_[last]);
        int first = last;
        for (; first > 0; --first) {
            const float beside = std::fabs(e_[first - 1]);
            if (beside <= threshold_) {
                e_[first - 1] = 0;
                break;
            }
            largest_ = std::max({largest_, std::fabs(d_[first - 1]), beside});
        }
        return {first, last};
    }

    void decompose_pair(int i) {
        kept_.apply();
        const SmallSvd svd = lasv2(d_[i], e_[i], d_[i + 1]);
        d_[i] = svd.largest;
        e_[i] = 0;
        d_[i + 1] = svd.smallest;
        const Matrix<float> vt = vectors_.vt, u = vectors_.u, c = vectors_.c;
        if (vectors_.ncvt > 0)
            kernel::rot(vectors_.ncvt, vt.row(i, 0), vt.row(i + 1, 0), svd.right.c, svd.right.s);
        if (vectors_.nru > 0)
            kernel::rot(vectors_.nru, u.column(0, i), u.column(0, i + 1), svd.left.c, svd.left.s);
        if (vectors_.ncc > 0)
            kernel::rot(vectors_.ncc, c.row(i, 0), c.row(i + 1, 0), svd.left.c, svd.left.s);
    }

    // Whether an element beside the diagonal is negligible, which becomes zero. If not, `smallest` is a lower bound of
    // the block's singular values.
    static bool splits(const Chase& q, float& smallest) {
        const int n = q.length();
        if (std::fabs(q.E(n - 1)) <= tolerance * std::fabs(q.D(n))) {
            q.E(n - 1) = 0;
            return true;
        }
        float mu = std::fabs(q.D(0));
        smallest = mu;
        for (int i = 0; i < n; ++i) {
            const float beside = std::fabs(q.E(i));
            if (beside <= tolerance * mu) {
                q.E(i) = 0;
                return true;
            }
            mu = std::fabs(q.D(i + 1)) * (mu / (mu + beside));
            smallest = std::min(smallest, mu);
        }
        return false;
    }

    // 0 where a shift would spoil the small values, or would be none.
    float shift_for(const Chase& q, float smallest) const {
        if (static_cast<float>(n_) * tolerance * (smallest / largest_) <= std::max(machine::epsilon, 0.01F * tolerance))
            return 0;
        const int n = q.length();
        const float shift = las2(q.D(n - 1), q.E(n - 1), q.D(n)).smallest, top = std::fabs(q.D(0));
        return top > 0 && (shift / top) * (shift / top) < machine::epsilon ? 0 : shift;
    }

    void sweep(const Chase& q, float shift) {
        kept_.begin(q.direct, q.block.first, q.block.last);
        if (shift == 0)
            chase_without_shift(q);
        else
            chase_with_shift(q, shift);
        if (float& end = q.E(q.length() - 1); std::fabs(end) <= threshold_)
            end = 0;
        kept_.end();
    }
    // Rotation i of the sweep: of columns, then of rows, as the chase sees them.
    void keep(const Chase& q, int i, const Rotation& columns, const Rotation& rows) {
        if (q.forward())
            kept_.put(q.plane(i), columns.c, columns.s, rows.c, rows.s);
        else
            kept_.put(q.plane(i), rows.c, -rows.s, columns.c, -columns.s);
    }
    // Relatively accurate: nothing is subtracted.
    void chase_without_shift(const Chase& q) {
        const int n = q.length();
        Rotation columns{1, 0, 0}, rows{1, 0, 0};
        for (int i = 0; i < n; ++i) {
            columns = rotation_onto_first(q.D(i) * columns.c, q.E(i));
            if (i > 0)
                q.E(i - 1) = rows.s * columns.r;
            rows = rotation_onto_first(rows.c * columns.r, q.D(i + 1) * columns.s);
            q.D(i) = rows.r;
            keep(q, i, columns, rows);
        }
        const float h = q.D(n) * columns.c;
        q.D(n) = h * rows.c;
        q.E(n - 1) = h * rows.s;
    }
    void chase_with_shift(const Chase& q, float shift) {
        const int n = q.length();
        float f = (std::fabs(q.D(0)) - shift) * (std::copysign(1.0F, q.D(0)) + shift / q.D(0)), g = q.E(0);
        for (int i = 0; i < n; ++i) {
            const Rotation columns = rotation_onto_first(f, g);
            if (i > 0)
                q.E(i - 1) = columns.r;
            f = columns.c * q.D(i) + columns.s * q.E(i);
            q.E(i) = columns.c * q.E(i) - columns.s * q.D(i);
            g = columns.s * q.D(i + 1);
            q.D(i + 1) *= columns.c;
            const Rotation rows = rotation_onto_first(f, g);
            q.D(i) = rows.r;
            f = rows.c * q.E(i) + rows.s * q.D(i + 1);
            q.D(i + 1) = rows.c * q.D(i + 1) - rows.s * q.E(i);
            if (i < n - 1) {
                g = rows.s * q.E(i + 1);
                q.E(i + 1) *= rows.c;
            }
            keep(q, i, columns, rows);
        }
        q.E(n - 1) = f;
    }

    int n_;
    float *d_, *e_;
    BidiagonalVectors vectors_;
    KeptSweeps kept_;
    float threshold_ = 0, largest_ = 0; // largest_: of the block, in magnitude
};

void make_positive(int n, float* d, const BidiagonalVectors& vectors) {
    for (int i = 0; i < n; ++i)
        if (d[i] <= 0) { // -0 too
            if (d[i] < 0 && vectors.ncvt > 0)
                kernel::scal(vectors.ncvt, -1.0F, vectors.vt.row(i, 0));
            d[i] = std::fabs(d[i]);
        }
}

} // namespace

bool all_finite(int n, const float* d, const float* e) {
    const auto finite = [](float x) { return std::isfinite(x); };
    return std::all_of(d, d + n, finite) && std::all_of(e, e + n - 1, finite);
}

void rotate_to_other_triangle(int n, float* d, float* e, float* c, float* s) {
    for (int i = 0; i + 1 < n; ++i) {
        const Rotation turn = rotation_onto_first(d[i], e[i]);
        d[i] = turn.r;
        e[i] = turn.s * d[i + 1];
        d[i + 1] *= turn.c;
        c[i] = turn.c;
        s[i] = turn.s;
    }
}

int bdsqr(Uplo uplo, int n, float* d, float* e, const BidiagonalVectors& vectors, float* work) {
    if (n == 0)
        return 0;
    if (n > 1) {
        if (uplo == Uplo::lower)
            make_upper(vectors, n, d, e, work);
        if (!vectors.any() && n > fewValues && all_finite(n, d, e) && lasq1(n, d, e, work))
            return 0;
        Iteration iteration(n, d, e, vectors, work);
        const bool ended = iteration.run();
        iteration.apply_kept();
        if (!ended)
            return static_cast<int>(std::count_if(e, e + n - 1, [](float x) { return x != 0; }));
    }
    make_positive(n, d, vectors);
    order_values<std::less_equal<>>(n, d, vectors);
    return 0;
}

} // namespace qrv::lapack
