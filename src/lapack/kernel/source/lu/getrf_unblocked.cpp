// The leaf of the LU factorization: a left-looking loop over columns.
//
// Each column gets the eliminations of all earlier ones just before its turn, and each row of U just after its pivot
// was chosen; both are products with a matrix. So everything right of the next column and below the last pivot row is
// untouched but for interchanges. (Crout's order; with partial pivoting in J. Dongarra, F. Gustavson, A. Karp,
// Implementing linear algebra algorithms for dense matrices on a vector pipeline machine, SIAM Review 26, 1984.)
//
// A small matrix takes plain loops instead, right-looking: calls of kernels would cost more than what they do.
#include <algorithm>
#include <utility>

#include "blas/calls.hpp"
#include "lapack/elements.hpp"
#include "lapack/kernel/source/lu/getrf.hpp"
#include "lapack/lapack.hpp"
#include "lapack/routine_name.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

// x := x / pivot, by the reciprocal where that is a normal number in full precision; scale(n, factor, x) multiplies.
template <class T, class Scale>
void divide(int n, T pivot, T* x, const Scale& scale) {
    if (const float size = modulus(pivot); size >= machine::safeMinimum && size <= 1 / machine::safeMinimum)
        scale(n, scalar<T>(1) / pivot, x);
    else
        for (int i = 0; i < n; ++i)
            x[i] = x[i] / pivot;
}

template <class T>
void scale_by_loop(int n, T factor, T* x) {
#pragma omp simd
    for (int i = 0; i < n; ++i)
        x[i] *= factor;
}

// The row from j on that ISAMAX would choose.
template <class T>
int pivot_row(int j, int m, const T* column) {
    int row = j;
    float largest = abs1(column[j]);
    for (int i = j + 1; i < m; ++i)
        if (const float size = abs1(column[i]); !(largest >= size)) {
            largest = size;
            row = i;
        }
    return row;
}

template <class T>
int factor_by_loops(int m, int n, Matrix<T> a, int* ipiv) {
    int info = 0;
    for (int j = 0; j < std::min(m, n); ++j) {
        T* const x = a.column(j);
        const int pivotRow = pivot_row(j, m, x);
        ipiv[j] = pivotRow + 1;
        if (x[pivotRow] != scalar<T>(0)) {
            if (pivotRow != j)
                for (int k = 0; k < n; ++k)
                    std::swap(a(j, k), a(pivotRow, k));
            divide(m - j - 1, x[j], x + j + 1, scale_by_loop<T>);
        } else if (info == 0) {
            info = j + 1;
        }
        for (int k = j + 1; k < n; ++k) {
            T* const y = a.column(k);
            const T factor = y[j];
#pragma omp simd
            for (int i = j + 1; i < m; ++i)
                y[i] -= x[i] * factor;
        }
    }
    return info;
}

} // namespace

template <class T>
int getrf_unblocked(int m, int n, Matrix<T> a, int* ipiv) {
    if (getrf_is_small<T>(m, n))
        return factor_by_loops(m, n, a, ipiv);
    const int length = std::min(m, n);
    const T one = scalar<T>(1), minusOne = scalar<T>(-1);
    int info = 0;
    for (int j = 0; j < length; ++j) {
        const int below = m - j - 1, right = n - j - 1;
        const int pivotRow = j + kernel::iamax(m - j, a.column(j, j)) - 1;
        ipiv[j] = pivotRow + 1;
        if (const T pivot = a(pivotRow, j); pivot != scalar<T>(0)) {
            if (pivotRow != j)
                kernel::swap(n, a.row(j, 0), a.row(pivotRow, 0));
            if (below > 0)
                divide(below, pivot, &a(j + 1, j),
                       [](int rows, T factor, T* x) { kernel::scal(rows, factor, Vector{x}); });
        } else if (info == 0) {
            info = j + 1;
        }
        if (right > 0) {
            if (j > 0) // the rest of row j of U
                kernel::gemv(Op::transpose, j, right, minusOne, a.block(0, j + 1), a.row(j, 0), one, a.row(j, j + 1));
            if (below > 0) // the next column
                kernel::gemv(Op::none, below, j + 1, minusOne, a.block(j + 1, 0), a.column(0, j + 1), one,
                             a.column(j + 1, j + 1));
        }
    }
    return info;
}

template <class T>
FactorResult getrf_leaf(int m, int n, Matrix<T> a, int* ipiv, FactorPlace place) {
    return tell_progress(RoutineName<T>("GETRF"), n, place, getrf_unblocked(m, n, a, ipiv));
}

template int getrf_unblocked(int, int, Matrix<float>, int*);
template int getrf_unblocked(int, int, Matrix<SingleComplex>, int*);
template FactorResult getrf_leaf(int, int, Matrix<float>, int*, FactorPlace);
template FactorResult getrf_leaf(int, int, Matrix<SingleComplex>, int*, FactorPlace);

} // namespace qrv::lapack

using namespace qrv;

void qrv_lapack_sgetrf_unblocked(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info) {
    *info = lapack::getrf_unblocked<float>(*m, *n, {a, *lda}, ipiv);
}
void qrv_lapack_cgetrf_unblocked(const int* m, const int* n, qrv_complex* a, const int* lda, int* ipiv, int* info) {
    *info = lapack::getrf_unblocked<SingleComplex>(*m, *n, {a, *lda}, ipiv);
}
