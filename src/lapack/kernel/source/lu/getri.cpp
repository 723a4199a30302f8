// SGETRI, CGETRI: inverse of a general matrix from the factors of SGETRF, A = P L U, in their place.
//
// inv(U) is formed first. The inverse X then solves X L = inv(U), column by column from the last one or in blocks: what
// L has in a block of columns is moved to the workspace, which leaves inv(U) there alone, and
//
//     X1 := (inv(U)1 - X2 L21) inv(L11)      X1 the block's columns, X2 those right of it, finished already
//
// At last the interchanges of rows undo themselves as interchanges of columns, in reverse order.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/lu.hpp"
#include "lapack/calls/triangular.hpp"
#include "lapack/routine_name.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

// Moves rows [first, n) of a column to `work`, at the same rows, and leaves zeros.
template <class T>
void move_column(int first, int n, T* column, T* work) {
    std::copy(column + first, column + n, work + first);
    std::fill(column + first, column + n, scalar<T>(0));
}

template <class T>
void solve_by_columns(int n, Matrix<T> a, T* work) {
    for (int j = n - 1; j >= 0; --j) {
        move_column(j + 1, n, a.column(j), work);
        if (j < n - 1)
            kernel::gemv(Op::none, n, n - 1 - j, scalar<T>(-1), a.block(0, j + 1), {work + j + 1}, scalar<T>(1),
                         a.column(0, j));
    }
}

// work: n x nb
template <class T>
void solve_by_blocks(int n, int nb, Matrix<T> a, Matrix<T> work) {
    for (int j = (n - 1) / nb * nb; j >= 0; j -= nb) {
        const int jb = std::min(nb, n - j), next = j + jb;
        for (int k = 0; k < jb; ++k)
            move_column(j + k + 1, n, a.column(j + k), work.column(k));
        const auto block = a.block(0, j);
        if (next < n)
            blas::gemm(Op::none, Op::none, n, jb, n - next, scalar<T>(-1), a.block(0, next), work.block(next, 0),
                       scalar<T>(1), block);
        blas::trsm(Side::right, Uplo::lower, Op::none, Diag::unit, n, jb, scalar<T>(1), work.block(j, 0), block);
    }
}

template <class T>
void interchange_columns(int n, Matrix<T> a, const int* ipiv) {
    for (int j = n - 2; j >= 0; --j)
        if (const int pivot = ipiv[j] - 1; pivot != j)
            kernel::swap(n, a.column(0, j), a.column(0, pivot));
}

} // namespace

template <class T>
std::int64_t getri_work(int n) {
    return std::int64_t{std::max(0, n)} * tuning::block_size(RoutineName<T>("GETRI"), n);
}

template <class T>
int getri(int n, Matrix<T> a, const int* ipiv, T* work, int lwork) {
    if (n == 0)
        return 0;
    if (const int zero = trtri(Uplo::upper, Diag::nonUnit, n, a))
        return zero;
    // Blocks of nb columns, or column by column.
    const int wanted = tuning::block_size(RoutineName<T>("GETRI"), n);
    const std::int64_t wantedWork = wanted > 1 && wanted < n ? getri_work<T>(n) : n;
    int nb = wanted, fewest = 2;
    if (lwork < wantedWork) {
        nb = lwork / n;
        fewest = std::max(2, tuning::minimum_block_size(RoutineName<T>("GETRI")));
    }
    if (nb >= fewest && nb < n)
        solve_by_blocks(n, nb, a, Matrix<T>{work, n});
    else
        solve_by_columns(n, a, work);
    interchange_columns(n, a, ipiv);
    work[0] = work_size<T>(wantedWork);
    return 0;
}

template std::int64_t getri_work<float>(int);
template std::int64_t getri_work<SingleComplex>(int);
template int getri(int, Matrix<float>, const int*, float*, int);
template int getri(int, Matrix<SingleComplex>, const int*, SingleComplex*, int);

} // namespace qrv::lapack
