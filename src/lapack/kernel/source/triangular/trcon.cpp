// STRCON, CTRCON: reciprocal condition number of a triangular matrix, from its norm and an estimate of its inverse's.
#include <algorithm>

#include "lapack/arguments.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/triangular.hpp"
#include "lapack/kernel/source/norms/condition.hpp"
#include "lapack/lapack.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

// Work arrays: x and v of n elements, sums of n floats (the row sums of the norm, then those of the columns), isgn.
template <class T>
struct TrconWork {
    T *x, *v;
    float* sums;
    int* isgn;
};

template <class T>
float trcon(Norm norm, Uplo uplo, Diag diag, int n, Matrix<const T> a, const TrconWork<T>& work) {
    if (n == 0)
        return 1;
    const float anorm = lantr(norm, uplo, diag, n, n, a, work.sums);
    if (!(anorm > 0))
        return 0;
    bool sumsKnown = false;
    const auto solve = [&](Op op) {
        const float scale = latrs(uplo, op, diag, sumsKnown, n, a, work.x, work.sums);
        sumsKnown = true;
        return scale;
    };
    const float smallest = machine::safeMinimum * static_cast<float>(n);
    const float inverseNorm = inverse_norm(norm, n, work.x, work.v, work.isgn, smallest, solve);
    return inverseNorm != 0 ? 1 / anorm / inverseNorm : 0;
}

template <class T>
void trcon_checked(char norm, char uplo, char diag, int n, const T* a, int lda, float* rcond, const TrconWork<T>& work,
                   int* info) {
    const int bad = !is_one_of(norm, "1OI")  ? 1
                    : !is_one_of(uplo, "UL") ? 2
                    : !is_one_of(diag, "NU") ? 3
                    : n < 0                  ? 4
                    : lda < std::max(1, n)   ? 6
                                             : 0;
    if (arguments_good(RoutineName<T>("TRCON"), bad, info))
        *rcond = trcon<T>(norm_of(norm), uplo_of(uplo), diag_of(diag), n, {a, lda}, work);
}

} // namespace
} // namespace qrv::lapack

using namespace qrv;

void qrv_lapack_strcon(const char* norm, const char* uplo, const char* diag, const int* n, const float* a,
                       const int* lda, float* rcond, float* work, int* iwork, int* info) {
    const std::ptrdiff_t length = std::max(0, *n);
    lapack::trcon_checked<float>(*norm, *uplo, *diag, *n, a, *lda, rcond,
                                 {work, work + length, work + 2 * length, iwork}, info);
}
void qrv_lapack_ctrcon(const char* norm, const char* uplo, const char* diag, const int* n, const qrv_complex* a,
                       const int* lda, float* rcond, qrv_complex* work, float* rwork, int* info) {
    lapack::trcon_checked<SingleComplex>(*norm, *uplo, *diag, *n, a, *lda, rcond,
                                         {work, work + std::max(0, *n), rwork, nullptr}, info);
}
