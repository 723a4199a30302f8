// What the QR iterations on a Hessenberg matrix share: when a subdiagonal element counts as zero, shifts, and how a
// block that has converged is told.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "blas/calls.hpp"
#include "lapack/calls/nonsymmetric.hpp"
#include "service/machine_constants.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {

// Products with V of a window or U of a sweep lie between long serial stretches: from so many multiplications on a team
// is worth waking.
inline constexpr std::int64_t leastForTeam = std::int64_t{1} << 22;

// What is not above it counts as zero, whatever stands beside it.
inline float negligible_size(int rows) {
    return machine::safeMinimum * (static_cast<float>(rows) / machine::precision);
}

// Whether element (k, k - 1), which is small beside the diagonal, is so beside the gap of the eigenvalues there too.
//
// Source: M. Ahues, F. Tisseur, A new deflation criterion for the QR algorithm, LAPACK Working Note 122 (1997).
struct DeflationTest {
    float product, allowed;

    DeflationTest(int k, Matrix<const float> h) {
        const float sub = std::fabs(h(k, k - 1)), super = std::fabs(h(k - 1, k));
        const float diagonal = std::fabs(h(k, k)), gap = std::fabs(h(k - 1, k - 1) - h(k, k));
        const float ab = std::max(sub, super), ba = std::min(sub, super);
        const float aa = std::max(diagonal, gap), bb = std::min(diagonal, gap);
        const float scale = aa + ab;
        product = ba * (ab / scale);
        allowed = bb * (aa / scale);
    }
    bool passes(float smallest) const { return product <= std::max(smallest, machine::precision * allowed); }
};

// Rows k and k + 1 have the eigenvalues of a block.
inline void set_eigenvalues(float* wr, float* wi, int k, const StandardBlock& x) {
    wr[k] = x.first.re, wi[k] = x.first.im;
    wr[k + 1] = x.second.re, wi[k + 1] = x.second.im;
}

// Makes the 2 x 2 block at (k, k) standard, with the rest of its rows and columns if they are wanted and those of Z,
// and tells its eigenvalues.
inline void standardize(const SchurProblem& p, int k) {
    const Matrix<float> h = p.h;
    const StandardBlock x = lanv2(h(k, k), h(k, k + 1), h(k + 1, k), h(k + 1, k + 1));
    h(k, k) = x.a, h(k, k + 1) = x.b, h(k + 1, k) = x.c, h(k + 1, k + 1) = x.d;
    set_eigenvalues(p.wr, p.wi, k, x);
    if (p.wantT) {
        kernel::rot(p.n - k - 2, h.row(k, k + 2), h.row(k + 1, k + 2), x.cs, x.sn);
        kernel::rot(k, h.column(0, k), h.column(0, k + 1), x.cs, x.sn);
    }
    if (p.wantZ)
        kernel::rot(p.zRows.size(), p.z.column(p.zRows.begin, k), p.z.column(p.zRows.begin, k + 1), x.cs, x.sn);
}

} // namespace qrv::lapack
