// STRTI2, CTRTI2: inverse of a triangular matrix, in place, column by column.
//
// With the part that is already inverted in A11', the next column of an upper triangle is
//
//     inv [ A11 a12 ]  =  [ A11'  -A11' a12 / a22 ]
//         [     a22 ]     [           1 / a22     ]
//
// and a lower triangle is the same from its last column on.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/triangular.hpp"

namespace qrv::lapack {
namespace {

// Inverts the diagonal element and gives the factor of its column.
template <class T>
T invert_diagonal(Diag diag, T& a) {
    if (diag == Diag::unit)
        return scalar<T>(-1);
    a = scalar<T>(1) / a;
    return -a;
}

// Of so few columns, calls of kernels would cost more than what they do.
constexpr int fewColumns = 20;

template <class T>
void invert_by_loops(Uplo uplo, Diag diag, int n, Matrix<T> a) {
    struct Rows {
        int begin, end;
    };
    const bool upper = uplo == Uplo::upper;
    const auto column_of = [&](int step) { return upper ? step : n - 1 - step; };
    const auto off_diagonal = [&](int j) { return upper ? Rows{0, j} : Rows{j + 1, n}; };
    for (int step = 0; step < n; ++step) {
        const int j = column_of(step);
        const T factor = invert_diagonal(diag, a(j, j));
        T* const x = a.column(j);
        for (int earlier = 0; earlier < step; ++earlier) {
            const int k = column_of(earlier);
            const T* const inverted = a.column(k);
            const T multiple = x[k];
            const Rows rows = off_diagonal(k);
#pragma omp simd
            for (int i = rows.begin; i < rows.end; ++i)
                x[i] += inverted[i] * multiple;
            if (diag == Diag::nonUnit)
                x[k] = inverted[k] * multiple;
        }
        const Rows rows = off_diagonal(j);
#pragma omp simd
        for (int i = rows.begin; i < rows.end; ++i)
            x[i] *= factor;
    }
}

} // namespace

template <class T>
void trti2(Uplo uplo, Diag diag, int n, Matrix<T> a) {
    if (n <= fewColumns) {
        invert_by_loops(uplo, diag, n, a);
    } else if (uplo == Uplo::upper) {
        for (int j = 0; j < n; ++j) {
            const T factor = invert_diagonal(diag, a(j, j));
            kernel::trmv(uplo, Op::none, diag, j, a, a.column(0, j));
            kernel::scal(j, factor, a.column(0, j));
        }
    } else {
        for (int j = n - 1; j >= 0; --j) {
            const T factor = invert_diagonal(diag, a(j, j));
            if (const int below = n - 1 - j; below > 0) {
                kernel::trmv(uplo, Op::none, diag, below, a.block(j + 1, j + 1), a.column(j + 1, j));
                kernel::scal(below, factor, a.column(j + 1, j));
            }
        }
    }
}

template void trti2(Uplo, Diag, int, Matrix<float>);
template void trti2(Uplo, Diag, int, Matrix<SingleComplex>);

} // namespace qrv::lapack
