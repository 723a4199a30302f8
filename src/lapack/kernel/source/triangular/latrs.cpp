// SLATRS, CLATRS: solution of a triangular system, scaled so that it does not overflow. The method is told in
// scaled_solve.hpp.
#include <algorithm>

#include "lapack/arguments.hpp"
#include "lapack/calls/triangular.hpp"
#include "lapack/kernel/source/triangular/scaled_solve.hpp"
#include "lapack/lapack.hpp"

namespace qrv::lapack {
namespace {

template <class T>
struct DenseTriangle {
    using Element = T;

    Uplo uplo;
    Diag diag;
    int n;
    Matrix<const T> a;

    T diagonal(int j) const { return a(j, j); }
    StoredColumn<T> column(int j) const {
        const int first = uplo == Uplo::upper ? 0 : j + 1;
        return {first, uplo == Uplo::upper ? j : n - 1 - j, a.block(first, j).data};
    }
    void solve(Op op, T* x) const { kernel::trsv(uplo, op, diag, n, a, Vector{x}); }
};

} // namespace

template <class T>
float latrs(Uplo uplo, Op op, Diag diag, bool cnormGiven, int n, Matrix<const T> a, T* x, float* cnorm) {
    return scaled_solve(DenseTriangle<T>{uplo, diag, n, a}, op, cnormGiven, x, cnorm);
}

template float latrs(Uplo, Op, Diag, bool, int, Matrix<const float>, float*, float*);
template float latrs(Uplo, Op, Diag, bool, int, Matrix<const SingleComplex>, SingleComplex*, float*);

namespace {

template <class T>
void latrs_checked(char uplo, char trans, char diag, char normin, int n, const T* a, int lda, T* x, float* scale,
                   float* cnorm, int* info) {
    const int bad = !is_one_of(uplo, "UL")     ? 1
                    : !is_one_of(trans, "NTC") ? 2
                    : !is_one_of(diag, "NU")   ? 3
                    : !is_one_of(normin, "YN") ? 4
                    : n < 0                    ? 5
                    : lda < std::max(1, n)     ? 7
                                               : 0;
    if (arguments_good(RoutineName<T>("LATRS"), bad, info))
        *scale = latrs<T>(uplo_of(uplo), op_of(trans), diag_of(diag), is_option(normin, 'Y'), n, {a, lda}, x, cnorm);
}

} // namespace
} // namespace qrv::lapack

using namespace qrv;

void qrv_lapack_slatrs(const char* uplo, const char* trans, const char* diag, const char* normin, const int* n,
                       const float* a, const int* lda, float* x, float* scale, float* cnorm, int* info) {
    lapack::latrs_checked(*uplo, *trans, *diag, *normin, *n, a, *lda, x, scale, cnorm, info);
}
void qrv_lapack_clatrs(const char* uplo, const char* trans, const char* diag, const char* normin, const int* n,
                       const qrv_complex* a, const int* lda, qrv_complex* x, float* scale, float* cnorm, int* info) {
    lapack::latrs_checked(*uplo, *trans, *diag, *normin, *n, a, *lda, x, scale, cnorm, info);
}
