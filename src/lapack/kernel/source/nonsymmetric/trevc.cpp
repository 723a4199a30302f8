// STREVC: eigenvectors of a Schur form T, by substitution from the place of their eigenvalue on.
//
//   right   (T - w I) x = 0    from the block of the eigenvalue w up, by columns of T
//   left    (T' - w I) x = 0   from the block down, by inner products with columns of T
//
// The unknowns of a block of T are solved for together (laln2), with pivots that are too small made larger, so that
// equal eigenvalues get vectors too. Before a product could overflow the whole vector is made smaller; sums of
// magnitudes of the columns of T tell when. Vectors of the matrix that T is the Schur form of are products with Q, many
// at a time; on a team whoever is free takes the next one of these.
//
// Source: G. Golub, C. Van Loan, Matrix Computations, 7.6.4.
#include <algorithm>
#include <atomic>
#include <cmath>

#include "blas/calls.hpp"
#include "blas/thread/common/machine.hpp"
#include "blas/thread/common/team_omp.hpp"
#include "blas/thread/common/work_threads.hpp"
#include "lapack/calls/nonsymmetric.hpp"
#include "lapack/calls/norms.hpp"
#include "service/machine_constants.hpp"
#include "service/work_pool.hpp"

namespace qrv::lapack {
namespace {

constexpr float ulp = machine::precision;

// An eigenvalue on the diagonal: rows [row, row + order) of T. Of a pair it is the one with the positive imaginary
// part.
struct Eigenblock {
    int row, order;
    Eigenvalue value;
    int end() const { return row + order; }
};

Eigenblock eigenblock_at(int row, int n, Matrix<const float> t) {
    if (row + 1 == n || t(row + 1, row) == 0)
        return {row, 1, {t(row, row), 0}};
    const float im = std::sqrt(std::fabs(t(row, row + 1))) * std::sqrt(std::fabs(t(row + 1, row)));
    return {row, 2, {t(row, row), im}};
}

// One vector in the columns of x, the imaginary part in the second one.
class Solver {
public:
    Solver(int n, Matrix<const float> t, float* sums)
        : n_(n), t_(t), sums_(sums), small_(machine::safeMinimum * (static_cast<float>(n) / ulp)),
          large_((1 - ulp) / small_) {
        for (int j = 0; j < n; ++j)
            sums_[j] = kernel::asum(j, t_.column(0, j));
    }

    // Rows [0, at.end()) of x.
    void right(const Eigenblock& at, Matrix<float> x) const {
        const int k = at.row, columns = at.order;
        start(at, true, x);
        for (int c = 0; c < columns; ++c)
            for (int i = 0; i < k; ++i)
                x(i, c) = -x(k + c, c) * t_(i, k + c);
        for (int last = k - 1, order; last >= 0; last -= order) {
            order = last > 0 && t_(last, last - 1) != 0 ? 2 : 1;
            const int j = last - order + 1;
            Small y = solve(j, order, false, at, at.value.im, x);
            const float sum = largest_sum(j, order);
            if (y.xnorm > 1 && sum > large_ / y.xnorm)
                y.divide(y.xnorm);
            scale(y.scale, 0, at.end(), columns, x);
            for (int c = 0; c < columns; ++c)
                for (int i = 0; i < order; ++i) {
                    x(j + i, c) = y(i, c);
                    kernel::axpy(j, -y(i, c), t_.column(0, j + i), x.column(0, c));
                }
        }
    }

    // Rows [at.row, n) of x.
    void left(const Eigenblock& at, Matrix<float> x) const {
        const int k = at.row, columns = at.order, begin = at.end();
        start(at, false, x);
        for (int c = 0; c < columns; ++c)
            for (int i = begin; i < n_; ++i)
                x(i, c) = -x(k + c, c) * t_(k + c, i);
        float largest = 1, most = large_; // of the vector so far, and what sums it can be multiplied with
        for (int j = begin, order; j < n_; j += order) {
            order = j + 1 < n_ && t_(j + 1, j) != 0 ? 2 : 1;
            if (largest_sum(j, order) > most) {
                scale(1 / largest, k, n_, columns, x);
                largest = 1, most = large_;
            }
            for (int c = 0; c < columns; ++c)
                for (int i = 0; i < order; ++i)
                    x(j + i, c) -= kernel::dotu<const float>(j - begin, t_.column(begin, j + i), x.column(begin, c));
            const Small y = solve(j, order, order == 2, at, -at.value.im, x);
            scale(y.scale, k, n_, columns, x);
            for (int c = 0; c < columns; ++c)
                for (int i = 0; i < order; ++i) {
                    x(j + i, c) = y(i, c);
                    largest = std::max(largest, std::fabs(y(i, c)));
                }
            most = large_ / largest;
        }
    }

private:
    // The unknowns of a block of T.
    struct Small {
        float data[4];
        float scale, xnorm;
        float operator()(int i, int c) const { return data[i + 2 * c]; }
        void divide(float by) {
            for (float& element : data)
                element /= by;
            scale /= by;
        }
    };

    // The eigenvector of the block of the eigenvalue itself.
    void start(const Eigenblock& at, bool right, Matrix<float> x) const {
        const int k = at.row;
        if (at.order == 1) {
            x(k, 0) = 1;
            return;
        }
        const float above = t_(k, k + 1), below = t_(k + 1, k), im = at.value.im;
        const bool byAbove = std::fabs(above) >= std::fabs(below);
        x(k, 1) = x(k + 1, 0) = 0;
        x(k, 0) = right == byAbove ? 1 : byAbove ? im / above : -im / below;
        x(k + 1, 1) = right != byAbove ? 1 : byAbove ? im / above : -im / below;
    }

    Small solve(int j, int order, bool transposed, const Eigenblock& at, float im, Matrix<float> x) const {
        const auto [re, size] = at.value;
        const float least = std::max(ulp * (std::fabs(re) + std::fabs(size)), small_);
        Small y{};
        const ShiftedSystem system{transposed, order, at.order, least, 1, t_.block(j, j), 1, 1, x.block(j, 0), re, im};
        const SmallSolution solved = laln2(system, {y.data, 2});
        y.scale = solved.scale, y.xnorm = solved.xnorm;
        return y;
    }
    float largest_sum(int j, int order) const { return order == 2 ? std::max(sums_[j], sums_[j + 1]) : sums_[j]; }
    static void scale(float by, int begin, int end, int columns, Matrix<float> x) {
        if (by != 1)
            for (int c = 0; c < columns; ++c)
                kernel::scal(end - begin, by, x.column(begin, c));
    }

    const int n_;
    const Matrix<const float> t_;
    float* const sums_; // of magnitudes, of each column above its diagonal block
    const float small_, large_;
};

// Divides a vector by its largest element.
void normalize(int begin, int end, int columns, Matrix<float> v) {
    float largest = 0;
    if (columns == 1 && end > begin)
        largest = std::fabs(v(begin + kernel::iamax(end - begin, v.column(begin, 0)) - 1, 0));
    else
        for (int i = begin; i < end; ++i)
            largest = std::max(largest, std::fabs(v(i, 0)) + std::fabs(v(i, 1)));
    for (int c = 0; c < columns; ++c)
        kernel::scal(end - begin, 1 / largest, v.column(begin, c));
}

// ---- Vectors of T --------------------------------------------------------------------------------------------------

void select_first_of_pairs(int n, Matrix<const float> t, int* select) {
    for (int k = 0; k + 1 < n; ++k)
        if (t(k + 1, k) != 0) {
            select[k] = select[k] || select[k + 1] ? 1 : 0;
            select[++k] = 0;
        }
}

// The selected ones, in the columns of V one behind the other.
void vectors_of_t(Side side, int n, Matrix<const float> t, const int* selected, Matrix<float> v, const Solver& solver,
                  Matrix<float> x) {
    int column = 0;
    for (int k = 0, order; k < n; k += order) {
        const Eigenblock at = eigenblock_at(k, n, t);
        order = at.order;
        if (selected && !selected[k])
            continue;
        const int begin = side == Side::right ? 0 : k, end = side == Side::right ? at.end() : n;
        side == Side::right ? solver.right(at, x) : solver.left(at, x);
        normalize(begin, end, order, x);
        const Matrix<float> to = v.block(0, column);
        laset<float>(Part::whole, n, order, 0, 0, to);
        lacpy<float>(Part::whole, end - begin, order, x.block(begin, 0), to.block(begin, 0));
        column += order;
    }
}

// ---- Vectors of Q T Q' ---------------------------------------------------------------------------------------------

// V := V X, one vector at a time: X is triangular, so that no column of V is overwritten before it has been used.
void multiply_one(Side side, const Eigenblock& at, int n, Matrix<const float> x, Matrix<float> v) {
    const int k = at.row, order = at.order;
    for (int c = 0; c < order; ++c) {
        const Vector<float> column = v.column(0, k + c);
        if (side == Side::right)
            blas::gemv(Op::none, n, k, 1, v, x.column(0, c), x(k + c, c), column);
        else
            blas::gemv(Op::none, n, n - at.end(), 1, v.block(0, at.end()), x.column(at.end(), c), x(k + c, c), column);
        if (side == Side::right ? k == 0 : at.end() == n) // not a product: gemv does nothing then
            kernel::scal(n, x(k + c, c), column);
    }
    normalize(0, n, order, v.block(0, k));
}

// Many at a time. Vectors [begin, end) wait, their columns of X counted from `first`.
struct Waiting {
    static constexpr int most = 64;
    static constexpr double leastElements = 100000; // of T that a thread goes through: 80 us

    Side side;
    int n;
    const Solver& solver;
    Matrix<float> x, product; // n x most each
    int first = 0, begin = 0, end = 0;

    // Others are computed first if there is no room.
    void add(const Eigenblock& at, Matrix<const float> t, Matrix<float> v) {
        const int lowest = std::min(begin, at.row), highest = std::max(end, at.end());
        if (begin == end || highest - lowest > most) {
            compute(t, v);
            first = side == Side::right ? at.end() - most : at.row;
            begin = at.row, end = at.end();
        } else {
            begin = lowest, end = highest;
        }
    }

    void compute(Matrix<const float> t, Matrix<float> v) {
        const int count = end - begin;
        if (count == 0)
            return;
        Eigenblock blocks[most];
        int known = 0;
        for (int k = begin; k < end; k += blocks[known++].order)
            blocks[known] = eigenblock_at(k, n, t);
        // Half of the elements above a vector's place, or behind it.
        const double elements = (side == Side::right ? end : n - begin) / 2.0 * count * n;
        std::atomic<int> next = 0;
        on_team(threads_for_shares(elements / leastElements, ThisMachine()), [&](int, int) {
            for (int i; (i = next++) < known;)
                make(blocks[i]);
        });
        const int row = side == Side::right ? 0 : begin, rows = side == Side::right ? end : n - begin;
        blas::gemm(Op::none, Op::none, n, count, rows, 1, v.block(0, row), x.block(row, begin - first), 0, product);
        for (int i = 0; i < known; ++i)
            normalize(0, n, blocks[i].order, product.block(0, blocks[i].row - begin));
        lacpy<float>(Part::whole, n, count, product, v.block(0, begin));
        begin = end = 0;
    }

private:
    // With zeros for the elements that the triangle does not have: behind the vector's own place, or before it.
    void make(const Eigenblock& at) const {
        const Matrix<float> to = x.block(0, at.row - first);
        side == Side::right ? solver.right(at, to) : solver.left(at, to);
        for (int c = 0; c < at.order; ++c)
            if (float* const column = to.column(c); side == Side::right)
                std::fill(column + at.end(), column + end, 0.0F);
            else
                std::fill(column + begin, column + at.row, 0.0F);
    }
};

void vectors_of_a(Side side, int n, Matrix<const float> t, Matrix<float> v, const Solver& solver, Matrix<float> x) {
    const std::int64_t length = std::int64_t{2} * n * Waiting::most;
    float* const block =
        n > Waiting::most
            ? static_cast<float*>(qrv_serv_allocate(static_cast<std::size_t>(length) * sizeof(float), 128))
            : nullptr;
    Waiting waiting{side, n, solver, {block, n}, {block + (block ? length / 2 : 0), n}};
    const auto take = [&](int row) {
        const Eigenblock at = eigenblock_at(row, n, t);
        if (block) {
            waiting.add(at, t, v);
        } else {
            side == Side::right ? solver.right(at, x) : solver.left(at, x);
            multiply_one(side, at, n, x, v);
        }
        return at.order;
    };
    if (side == Side::right) // what is overwritten first is not used by the others
        for (int last = n - 1; last >= 0;)
            last -= take(last > 0 && t(last, last - 1) != 0 ? last - 1 : last);
    else
        for (int k = 0; k < n;)
            k += take(k);
    if (block) {
        waiting.compute(t, v);
        qrv_serv_deallocate(block);
    }
}

} // namespace

int trevc_columns(bool selects, const int* select, int n, Matrix<const float> t) {
    if (!selects)
        return n;
    int columns = 0;
    for (int k = 0, order; k < n; k += order) {
        order = eigenblock_at(k, n, t).order;
        columns += select[k] || (order == 2 && select[k + 1]) ? order : 0;
    }
    return columns;
}

int trevc(const EigenvectorsWanted& wanted, int n, Matrix<const float> t, int* select, Matrix<float> vl,
          Matrix<float> vr, float* work) {
    const bool selects = wanted.how == EigenvectorsWanted::selected;
    if (n == 0)
        return 0;
    if (selects)
        select_first_of_pairs(n, t, select);
    const Solver solver(n, t, work);
    const Matrix<float> x{work + n, n};
    const auto compute = [&](Side side, Matrix<float> v) {
        if (wanted.how == EigenvectorsWanted::backTransformed)
            vectors_of_a(side, n, t, v, solver, x);
        else
            vectors_of_t(side, n, t, selects ? select : nullptr, v, solver, x);
    };
    if (wanted.right)
        compute(Side::right, vr);
    if (wanted.left)
        compute(Side::left, vl);
    return trevc_columns(selects, select, n, t);
}

} // namespace qrv::lapack
