// SGECON, CGECON: reciprocal condition number of a general matrix from the factors of SGETRF and its norm.
//
// A solve with A = P L U is one with L and one with U. The interchanges are left out: they change neither the one norm
// nor the infinity norm.
#include <algorithm>

#include "lapack/arguments.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/triangular.hpp"
#include "lapack/kernel/source/norms/condition.hpp"
#include "lapack/lapack.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

// Work arrays: x and v of n elements, the sums over the columns of L and of U, n floats each, isgn.
template <class T>
struct GeconWork {
    T *x, *v;
    float *sumsL, *sumsU;
    int* isgn;
};

template <class T>
float gecon(Norm norm, int n, Matrix<const T> a, float anorm, const GeconWork<T>& work) {
    if (n == 0)
        return 1;
    if (anorm == 0)
        return 0;
    bool sumsKnown = false;
    const auto solve_lower = [&](Op op) {
        return latrs(Uplo::lower, op, Diag::unit, sumsKnown, n, a, work.x, work.sumsL);
    };
    const auto solve_upper = [&](Op op) {
        return latrs(Uplo::upper, op, Diag::nonUnit, sumsKnown, n, a, work.x, work.sumsU);
    };
    const auto solve = [&](Op op) {
        const bool direct = op == Op::none;
        const float first = direct ? solve_lower(op) : solve_upper(op);
        const float second = direct ? solve_upper(op) : solve_lower(op);
        sumsKnown = true;
        return first * second;
    };
    const float inverseNorm = inverse_norm(norm, n, work.x, work.v, work.isgn, machine::safeMinimum, solve);
    return inverseNorm != 0 ? 1 / inverseNorm / anorm : 0;
}

template <class T>
void gecon_checked(char norm, int n, const T* a, int lda, float anorm, float* rcond, const GeconWork<T>& work,
                   int* info) {
    const int bad = !is_one_of(norm, "1OI") ? 1 : n < 0 ? 2 : lda < std::max(1, n) ? 4 : anorm < 0 ? 5 : 0;
    if (arguments_good(RoutineName<T>("GECON"), bad, info))
        *rcond = gecon<T>(norm_of(norm), n, {a, lda}, anorm, work);
}

} // namespace
} // namespace qrv::lapack

using namespace qrv;

void qrv_lapack_sgecon(const char* norm, const int* n, const float* a, const int* lda, const float* anorm, float* rcond,
                       float* work, int* iwork, int* info) {
    const std::ptrdiff_t length = std::max(0, *n);
    lapack::gecon_checked<float>(*norm, *n, a, *lda, *anorm, rcond,
                                 {work, work + length, work + 2 * length, work + 3 * length, iwork}, info);
}
void qrv_lapack_cgecon(const char* norm, const int* n, const qrv_complex* a, const int* lda, const float* anorm,
                       float* rcond, qrv_complex* work, float* rwork, int* info) {
    const std::ptrdiff_t length = std::max(0, *n);
    lapack::gecon_checked<SingleComplex>(*norm, *n, a, *lda, *anorm, rcond,
                                         {work, work + length, rwork, rwork + length, nullptr}, info);
}
