// SLAQPS, CLAQPS: a block of columns of QR with column pivoting.
//
// What is right of the block is changed only in the rows that are done, which the norms need; the rest waits as the
// product A - V F^H, V being the vectors so far. A column is brought up to date when it is taken. The block ends early
// where a norm has lost its digits, as it cannot be computed from a column that waits.
//
// F takes a pass over all columns that may be chosen, for each one that is. As columns only get shorter, those outside
// a window of the longest need not be among them for as long as the window has one that is longer than they were: they
// get the block as a whole, by products of matrices.
#include "lapack/calls/qr.hpp"
#include "lapack/kernel/source/qr/pivoted_columns.hpp"

namespace qrv::lapack {
namespace {

constexpr float toBeMeasured = -1; // in place of a norm

// F(:, k) for the reflector in column k, whose 1 is in its place: what the columns behind lose by it is -v F(:, k)^H.
template <class T>
void extend_f(int rows, int n, int k, T tau, Matrix<const T> v, T* aux, Matrix<T> f) {
    const T zero = scalar<T>(0), one = scalar<T>(1);
    const Vector<const T> newest = v.column(0, k);
    if (k + 1 < n)
        blas::gemv(adjoint<T>, rows, n - k - 1, tau, v.block(0, k + 1), newest, zero, f.column(k + 1, k));
    std::fill_n(f.column(k), k + 1, zero);
    if (k > 0) {
        blas::gemv(adjoint<T>, rows, k, -tau, v, newest, zero, Vector<T>{aux});
        blas::gemv(Op::none, n, k, one, f, Vector<const T>{aux}, one, f.column(0, k));
    }
}

// The k reflectors from row `offset` on to the columns outside the window. work: k * n.
template <class T>
void apply_outside(const PivotedColumns<T>& columns, int offset, int k, int window, const T* tau, T* work) {
    const int rows = columns.m - offset, outside = columns.n - window;
    const Matrix<T> v = columns.a.block(offset, 0), t{work, k}, w{work + k * k, k};
    larft<T>(Direct::forward, StoreV::columns, rows, k, v, tau, t);
    larfb<T>(Side::left, adjoint<T>, {Direct::forward, StoreV::columns, k, v, t}, rows, outside,
             columns.a.block(offset, window), w, BlockWork::upright);
    for (int j = window; j < columns.n; ++j)
        if (!columns.shorten(offset, offset + k, j))
            columns.measure(offset + k, j);
}

} // namespace

template <class T>
int laqps(int m, int n, int window, int offset, int nb, Matrix<T> a, int* jpvt, T* tau, float* vn1, float* vn2, T* aux,
          Matrix<T> f) {
    const PivotedColumns<T> columns{m, n, a, jpvt, vn1, vn2};
    const T one = scalar<T>(1), minusOne = scalar<T>(-1);
    const int end = std::min(m, n + offset); // of the rows in which columns are made
    const float longestOutside = columns.bring_longest(window, reinterpret_cast<float*>(f.data));
    int k = 0;
    for (bool measurable = true; k < nb && measurable; ++k) {
        const int r = offset + k, behind = window - k - 1;
        const int p = columns.longest(k, window);
        if (k > 0 && vn1[p] < longestOutside)
            break;
        columns.exchange(p, k);
        if (p != k)
            kernel::swap(k, f.row(p, 0), f.row(k, 0));
        const Vector<T> fRow = f.row(k, 0);
        if (k > 0) {
            conjugate(k, fRow);
            blas::gemv(Op::none, m - r, k, minusOne, a.block(r, 0), fRow, one, a.column(r, k));
            conjugate(k, fRow);
        }
        tau[k] = larfp(m - r, a(r, k), a.column(std::min(r + 1, m - 1), k));
        const T diagonal = a(r, k);
        a(r, k) = one;
        extend_f<T>(m - r, window, k, tau[k], a.block(r, 0), aux, f);
        if (behind > 0) { // row r of A - V F^H, by its conjugate
            const Vector<T> vRow = a.row(r, 0), row = a.row(r, k + 1);
            conjugate(k + 1, vRow);
            conjugate(behind, row);
            blas::gemv(Op::none, behind, k + 1, minusOne, f.block(k + 1, 0), vRow, one, row);
            conjugate(k + 1, vRow);
            conjugate(behind, row);
        }
        if (r + 1 < end)
            for (int j = k + 1; j < window; ++j)
                if (!columns.shorten(r, r + 1, j)) {
                    vn2[j] = toBeMeasured;
                    measurable = false;
                }
        a(r, k) = diagonal;
    }
    const int r = offset + k;
    if (k < std::min(window, m - offset))
        blas::gemm(Op::none, adjoint<T>, m - r, window - k, k, minusOne, a.block(r, 0), f.block(k, 0), one,
                   a.block(r, k));
    for (int j = k; j < window; ++j)
        if (vn2[j] == toBeMeasured)
            columns.measure(r, j);
    if (window < n)
        apply_outside(columns, offset, k, window, tau, f.data);
    return k;
}

template int laqps(int, int, int, int, int, Matrix<float>, int*, float*, float*, float*, float*, Matrix<float>);
template int laqps(int, int, int, int, int, Matrix<SingleComplex>, int*, SingleComplex*, float*, float*, SingleComplex*,
                   Matrix<SingleComplex>);

} // namespace qrv::lapack
