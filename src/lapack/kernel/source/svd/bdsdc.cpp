// SBDSDC: singular value decomposition of a bidiagonal matrix by divide and conquer.
//
// The matrix is scaled to size one and cut where an element beside the diagonal is negligible; each part is divided
// until the QR iteration is fast (lasd0.cpp).
#include <algorithm>
#include <cmath>
#include <functional>

#include "blas/calls.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/ordered_values.hpp"
#include "service/machine_constants.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

// The parts one after the other; e(i) is negligible where a part ends in row i.
int solve_parts(int n, float* d, float* e, Matrix<float> u, Matrix<float> vt, int leaf, float* work, int* iwork) {
    for (int first = 0; first < n;) {
        int last = first;
        while (last < n - 1 && !(std::fabs(e[last]) < machine::epsilon))
            ++last;
        if (last == first) {
            u(first, first) = std::copysign(1.0F, d[first]);
            d[first] = std::fabs(d[first]);
        } else if (const int info = lasd0(last - first + 1, false, d + first, e + first, u.block(first, first),
                                          vt.block(first, first), leaf, iwork, work)) {
            return info;
        }
        first = last + 1;
    }
    return 0;
}

int divide(int n, float* d, float* e, Matrix<float> u, Matrix<float> vt, int leaf, float* work, int* iwork) {
    if (!all_finite(n, d, e))
        return n;
    const float norm = lanst(Norm::maximum, n, d, e);
    if (norm == 0) {
        std::fill_n(d, n, 0.0F); // not -0
        return 0;
    }
    lascl({}, norm, 1, n, 1, Matrix<float>{d, n});
    lascl({}, norm, 1, n - 1, 1, Matrix<float>{e, n});
    for (int i = 0; i < n; ++i)
        if (std::fabs(d[i]) < machine::epsilon)
            d[i] = std::copysign(machine::epsilon, d[i]);
    const int info = solve_parts(n, d, e, u, vt, leaf, work, iwork);
    if (info == 0)
        lascl({}, 1, norm, n, 1, Matrix<float>{d, n});
    return info;
}

} // namespace

int bdsdc(Uplo uplo, int n, float* d, float* e, Matrix<float> u, Matrix<float> vt, float* work, int* iwork) {
    if (n == 0)
        return 0;
    float *const c = work, *const s = work + n - 1, *const rest = uplo == Uplo::lower ? s + n - 1 : work;
    if (uplo == Uplo::lower)
        rotate_to_other_triangle(n, d, e, c, s);
    laset(Part::whole, n, n, 0.0F, 1.0F, u);
    laset(Part::whole, n, n, 0.0F, 1.0F, vt);
    const int leaf = tuning::value(9, "SBDSDC", " ", {});
    const BidiagonalVectors vectors{n, n, 0, vt, u};
    const int info =
        n <= leaf ? lasdq(Uplo::upper, false, n, d, e, vectors, rest) : divide(n, d, e, u, vt, leaf, rest, iwork);
    if (info != 0)
        return info;
    order_values<std::less_equal<>>(n, d, vectors);
    if (uplo == Uplo::lower) { // the rotations undone
        std::transform(s, s + n - 1, s, std::negate<>());
        kernel::lasr(Side::left, Pivot::variable, Direct::backward, n, n, c, s, u);
    }
    return 0;
}

int bdsdc_values(Uplo uplo, int n, float* d, float* e, float* work) {
    if (n == 0)
        return 0;
    const int info = lasdq(uplo, false, n, d, e, {}, work);
    order_values<std::less_equal<>>(n, d, {});
    return info;
}

} // namespace qrv::lapack
