// The LU factorization on the calling thread: left-looking over blocks, and recursive in the block, so that narrow
// panels are factored by products too. (After F. Gustavson, Recursion leads to automatic variable blocking for dense
// linear-algebra algorithms, IBM J. Res. Dev. 41, 1997; S. Toledo, Locality of reference in LU decomposition with
// partial pivoting, SIAM J. Matrix Anal. Appl. 18, 1997.)
//
// The products and solves decide on threads for themselves, unless the call is to be one thread's; inside a parallel
// region they get one.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/lu.hpp"
#include "lapack/kernel/source/lu/getrf.hpp"
#include "lapack/lapack.hpp"

namespace qrv::lapack {
namespace {

// Halving would end in widths that fill no tile; from 17 columns on there is a block to recurse into.
constexpr int blockWidths[] = {8192, 4096, 2048, 1024, 128, 64, 32, 16, 0};

} // namespace

// Before step j, in blocks of j, jb and the remaining rows and columns:
//
//   [ A00 A01 A02 ]   A00, A10, A20 factored; A01, A02 rows of U; all interchanges made in A00, A10, A20 and in the
//   [ A10 A11 A12 ]   other columns too
//   [ A20 A21 A22 ]   A11, A21, A12, A22 have had interchanges and nothing else
//
// The step updates the panel A11, A21 with everything left of it and factors it, makes its interchanges on both sides
// and computes the rows A12 of U. What is below them waits for its own turn as a panel.
template <class T>
FactorResult getrf_recursive(int m, int n, Matrix<T> a, int* ipiv, FactorPlace place, bool alone) {
    const auto gemm = alone ? kernel::gemm<T> : blas::gemm<T>;
    const auto trsm = alone ? kernel::trsm<T> : blas::trsm<T>;
    const int width = getrf_is_small<T>(m, n) ? 0 : getrf_block_width(blockWidths, n);
    if (width == 0)
        return getrf_leaf(m, n, a, ipiv, place);
    const T one = scalar<T>(1), minusOne = scalar<T>(-1);
    const int length = std::min(m, n);
    FactorResult whole;
    for (int j = 0; j < length; j += width) {
        const int jb = std::min(width, length - j), right = n - j - jb;
        const Matrix<T> A01 = a.block(0, j), A02 = a.block(0, j + jb);
        const Matrix<T> A10 = a.block(j, 0), A11 = a.block(j, j), A12 = a.block(j, j + jb);
        if (j > 0) // A11 and A21 at once
            gemm(Op::none, Op::none, m - j, jb, j, minusOne, A10, A01, one, A11);
        const FactorResult result = getrf_recursive(m - j, jb, A11, ipiv + j, {place.thread, place.offset + j}, alone);
        if (result.stopped)
            return {whole.info, true};
        getrf_append(whole, result, {j, jb}, ipiv);
        laswp(j, a, j + 1, j + jb, ipiv);
        if (right > 0) {
            laswp(right, A02, j + 1, j + jb, ipiv);
            if (j > 0)
                gemm(Op::none, Op::none, jb, right, j, minusOne, A10, A02, one, A12);
            trsm(Side::left, Uplo::lower, Op::none, Diag::unit, jb, right, one, A11, A12);
        }
    }
    return whole;
}

void getrf_append(FactorResult& whole, FactorResult result, Panel panel, int* ipiv) {
    whole.stopped = whole.stopped || result.stopped;
    if (whole.info == 0 && result.info > 0)
        whole.info = result.info + panel.k;
    for (int i = panel.k; i < panel.end(); ++i)
        ipiv[i] += panel.k;
}

template <class T>
void getrf_apply_panel(int m, Matrix<T> a, const int* ipiv, Panel panel, int first, int count) {
    const T one = scalar<T>(1), minusOne = scalar<T>(-1);
    const auto [k, width] = panel;
    const int next = panel.end();
    laswp(count, a.block(0, first), k + 1, next, ipiv);
    blas::trsm(Side::left, Uplo::lower, Op::none, Diag::unit, width, count, one, a.block(k, k), a.block(k, first));
    if (next < m)
        blas::gemm(Op::none, Op::none, m - next, count, width, minusOne, a.block(next, k), a.block(k, first), one,
                   a.block(next, first));
}

template FactorResult getrf_recursive(int, int, Matrix<float>, int*, FactorPlace, bool);
template FactorResult getrf_recursive(int, int, Matrix<SingleComplex>, int*, FactorPlace, bool);
template void getrf_apply_panel(int, Matrix<float>, const int*, Panel, int, int);
template void getrf_apply_panel(int, Matrix<SingleComplex>, const int*, Panel, int, int);

} // namespace qrv::lapack

using namespace qrv;

namespace {

template <class T>
int recursive(int m, int n, Matrix<T> a, int* ipiv, int* info, lapack::FactorPlace place) {
    const auto result = m > 0 && n > 0 ? lapack::getrf_recursive(m, n, a, ipiv, place) : lapack::FactorResult{};
    *info = result.info;
    return result.stopped ? 1 : 0;
}

} // namespace

int qrv_lapack_sgetrf_recursive(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info,
                                const int* thread, const int* offset) {
    return recursive<float>(*m, *n, {a, *lda}, ipiv, info, {*thread, *offset});
}
int qrv_lapack_cgetrf_recursive(const int* m, const int* n, qrv_complex* a, const int* lda, int* ipiv, int* info,
                                const int* thread, const int* offset) {
    return recursive<SingleComplex>(*m, *n, {a, *lda}, ipiv, info, {*thread, *offset});
}
void qrv_lapack_sgetrf_serial(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info) {
    recursive<float>(*m, *n, {a, *lda}, ipiv, info, {0, 0});
}
void qrv_lapack_cgetrf_serial(const int* m, const int* n, qrv_complex* a, const int* lda, int* ipiv, int* info) {
    recursive<SingleComplex>(*m, *n, {a, *lda}, ipiv, info, {0, 0});
}
