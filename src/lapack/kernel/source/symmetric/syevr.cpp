// SSYEVR: eigenvalues and eigenvectors of a symmetric matrix.
//
// The matrix is reduced to a tridiagonal one. If all of its eigenvalues are wanted, they come from QL iteration, with
// vectors from relatively robust representations; if that fails, which is not told, or only some are wanted, from
// bisection and inverse iteration. The vectors are turned back.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>

#include "blas/calls.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/symmetric.hpp"
#include "service/machine_constants.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

SyevrResult of_one(bool vectors, const Wanted& wanted, float a, float* w, float* z, int* isuppz) {
    if (wanted.range == Range::values && !(wanted.low < a && wanted.high >= a))
        return {};
    w[0] = a;
    if (vectors) {
        z[0] = 1;
        isuppz[0] = isuppz[1] = 1;
    }
    return {1};
}

// By which the matrix is multiplied, so that squares of its elements can be held.
float choose_scale(float norm) {
    const float smallest = std::sqrt(machine::smallNumber);
    const float largest = std::min(std::sqrt(machine::bigNumber), 1 / std::sqrt(std::sqrt(machine::safeMinimum)));
    return norm > 0 && norm < smallest ? smallest / norm : norm > largest ? largest / norm : 1;
}

void scale_triangle(Uplo uplo, int n, float factor, Matrix<float> a) {
    for (int j = 0; j < n; ++j)
        uplo == Uplo::upper ? kernel::scal(j + 1, factor, a.column(0, j)) : kernel::scal(n - j, factor, a.column(j, j));
}

void sort_with_vectors(int n, int m, float* w, Matrix<float> z) {
    if (std::is_sorted(w, w + m)) // as they mostly are
        return;
    for (int j = 0; j < m - 1; ++j) {
        int least = j;
        for (int k = j + 1; k < m; ++k)
            if (w[k] < w[least])
                least = k;
        if (least != j) {
            std::swap(w[j], w[least]);
            kernel::swap(n, z.column(0, j), z.column(0, least));
        }
    }
}

// The tridiagonal matrix in the work of syevr, and what is free behind it. The solvers that may fail get copies.
struct Reduced {
    float *tau, *d, *e, *dCopy, *eCopy, *free;
    int* ints;

    Reduced(int n, float* work, int* iwork)
        : tau(work), d(tau + n), e(d + n), dCopy(e + n), eCopy(dCopy + n), free(eCopy + n), ints(iwork) {}
};

// A NaN or an infinity of A has come to d or e by now. Then nothing is known of any value, which the comparisons of the
// solvers would hide.
bool is_known(int n, const Reduced& t) {
    const auto finite = [](float x) { return std::isfinite(x); };
    return std::all_of(t.d, t.d + n, finite) && std::all_of(t.e, t.e + n - 1, finite);
}

// NaN for each that is wanted by its number; none lies in an interval.
SyevrResult unknown(bool vectors, const Wanted& wanted, int n, float* w, Matrix<float> z, int* isuppz) {
    const int count = wanted.range == Range::all       ? n
                      : wanted.range == Range::indices ? wanted.last - wanted.first + 1
                                                       : 0;
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    std::fill_n(w, count, nan);
    for (int j = 0; vectors && j < count; ++j) {
        std::fill_n(z.column(j), n, nan);
        isuppz[2 * j] = 1;
        isuppz[2 * j + 1] = n;
    }
    return {count, 0};
}

// All of them by the fast solvers. False if they fail.
bool solve_all(bool vectors, int n, bool tryRelative, const Reduced& t, float* w, Matrix<float> z, int* isuppz) {
    kernel::copy(n - 1, {t.e}, Vector{t.eCopy});
    if (!vectors) {
        kernel::copy(n, {t.d}, Vector{w});
        return sterf(n, w, t.eCopy) == 0;
    }
    kernel::copy(n, {t.d}, Vector{t.dCopy});
    const StemrResult result = stemr(true, {}, n, t.dCopy, t.eCopy, w, z, isuppz, tryRelative, t.free, t.ints);
    return result.info == 0 && result.found == n;
}

// Those that are wanted by bisection and inverse iteration, whose list of failures lies on its own integer work.
SyevrResult solve_wanted(bool vectors, const Wanted& wanted, int n, float abstol, const Reduced& t, float* w,
                         Matrix<float> z) {
    int *const iblock = t.ints, *const isplit = iblock + n, *const scratch = isplit + n;
    const StebzResult values = stebz(wanted, vectors, n, abstol, t.d, t.e, w, iblock, isplit, t.free, scratch);
    SyevrResult result{values.found, values.info};
    if (vectors) {
        for (int j = 0; j < values.found; ++j)
            iblock[j] = std::abs(iblock[j]); // less accurate ones have vectors too
        if (const int failed = stein(n, t.d, t.e, values.found, w, iblock, isplit, z, t.free, scratch, scratch))
            result.info = failed;
    }
    return result;
}

} // namespace

std::int64_t syevr_work(int n) {
    const int nb = std::max(tuning::block_size("SSYTRD", n), tuning::block_size("SORMTR", n));
    return std::max(std::int64_t{n} * (nb + 1), syevr_least_work(n));
}

SyevrResult syevr(bool vectors, Wanted wanted, Uplo uplo, int n, Matrix<float> a, float abstol, float* w,
                  Matrix<float> z, int* isuppz, float* work, int lwork, int* iwork) {
    if (n == 0) {
        work[0] = 1;
        return {};
    }
    if (n == 1) {
        work[0] = static_cast<float>(syevr_least_work(1));
        return of_one(vectors, wanted, a(0, 0), w, z.data, isuppz);
    }
    const float scale = choose_scale(lansy(Norm::maximum, uplo, n, a, work));
    if (scale != 1) {
        scale_triangle(uplo, n, scale, a);
        if (abstol > 0)
            abstol *= scale;
        wanted.low *= scale;
        wanted.high *= scale;
    }
    const bool all =
        wanted.range == Range::all || (wanted.range == Range::indices && wanted.first == 1 && wanted.last == n);
    const Reduced t(n, work, iwork);
    sytrd(uplo, n, a, t.d, t.e, t.tau, t.free, lwork - 5 * n);

    SyevrResult result{n, 0};
    const bool tryRelative = abstol <= 2 * static_cast<float>(n) * machine::precision;
    if (!is_known(n, t))
        result = unknown(vectors, wanted, n, w, z, isuppz);
    else if (!all || !solve_all(vectors, n, tryRelative, t, w, z, isuppz))
        result = solve_wanted(vectors, wanted, n, abstol, t, w, z);
    if (vectors)
        ormtr(Side::left, uplo, Op::none, n, result.found, a, t.tau, z, t.e, lwork - 2 * n);
    if (scale != 1)
        kernel::scal(result.info == 0 ? result.found : std::min(result.info - 1, n), 1 / scale, Vector{w});
    if (vectors)
        sort_with_vectors(n, result.found, w, z);
    work[0] = roundup_work(syevr_work(n));
    iwork[0] = told_ints(syevr_ints(n));
    return result;
}

} // namespace qrv::lapack
