// SGEEV: eigenvalues and eigenvectors of a general matrix.
//
//   scale        to a size from which nothing overflows or vanishes
//   balance      A = P D B inv(D) P'
//   reduce       B = Q H Q' to Hessenberg form, H = Z T Z' to Schur form
//   vectors      of T, times Q Z, times P D; each one of length 1
//   scale back   the eigenvalues
#include <algorithm>
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/nonsymmetric.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/calls/rotations.hpp"
#include "lapack/kernel/source/norms/scaling.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

// Norms within a factor of four of each other stay. To bring them nearer makes the matrix little smaller, but over many
// rows, as of Frank's matrix, the scales move so far apart that they spoil small vectors on the way back.
constexpr Balance both{true, true, 0.8F};

// A complex vector in two columns: its largest element becomes real.
void turn(int n, Matrix<float> v, float* squares) {
    for (int i = 0; i < n; ++i)
        squares[i] = v(i, 0) * v(i, 0) + v(i, 1) * v(i, 1);
    const int k = kernel::iamax(n, Vector{squares}) - 1;
    const auto [c, s, r] = lartg(v(k, 0), v(k, 1));
    kernel::rot(n, v.column(0, 0), v.column(0, 1), c, s);
    v(k, 1) = 0;
}

void normalize(int n, const float* wi, Matrix<float> v, float* squares) {
    for (int j = 0; j < n; ++j) {
        const Vector<float> re = v.column(0, j);
        if (wi[j] == 0) {
            kernel::scal(n, 1 / kernel::nrm2(n, re), re);
        } else if (wi[j] > 0 && j + 1 < n) {
            const Vector<float> im = v.column(0, j + 1);
            const float factor = 1 / lapy2(kernel::nrm2(n, re), kernel::nrm2(n, im));
            kernel::scal(n, factor, re);
            kernel::scal(n, factor, im);
            turn(n, v.block(0, j), squares);
        }
    }
}

// What the work array is for at a time: the scales are needed to the end, the reflectors' factors until Q is made.
struct Parts {
    float *scale, *tau, *behindTau, *behindScale;
    int lengthBehindTau, lengthBehindScale;
};
Parts parts_of(int n, float* work, int lwork) {
    return {work, work + n, work + 2 * n, work + n, lwork - 2 * n, lwork - n};
}

// A becomes T. Result: that of hseqr.
int reduce(bool left, bool right, int n, ActiveRange range, Matrix<float> a, float* wr, float* wi, Matrix<float> vl,
           Matrix<float> vr, const Parts& work) {
    const bool vectors = left || right;
    const Matrix<float> z = left ? vl : vr;
    gehrd(n, range, a, work.tau, work.behindTau, work.lengthBehindTau);
    if (vectors) {
        lacpy<float>(Part::lower, n, n, a, z);
        orghr(n, range, z, work.tau, work.behindTau, work.lengthBehindTau);
    }
    const SchurProblem problem{vectors, vectors, n, range, a, wr, wi, {0, n}, z};
    const int info = hseqr(problem, false, work.behindScale, work.lengthBehindScale);
    if (left && right)
        lacpy<float>(Part::whole, n, n, vl, vr);
    return info;
}

} // namespace

std::int64_t geev_least_work(bool vectors, int n) {
    return n == 0 ? 1 : std::int64_t{vectors ? 4 : 3} * n;
}
std::int64_t geev_work(bool vectors, int n) {
    if (n <= 0)
        return 1;
    const ActiveRange all{0, n};
    std::int64_t most = std::max(geev_least_work(vectors, n), 2 * std::int64_t{n} + gehrd_work(n, all));
    if (vectors)
        most = std::max(most, 2 * std::int64_t{n} + orghr_work(all));
    return std::max(most, n + hseqr_work(n, all));
}

int geev(bool left, bool right, int n, Matrix<float> a, float* wr, float* wi, Matrix<float> vl, Matrix<float> vr,
         float* work, int lwork) {
    if (n == 0)
        return 0;
    const Parts parts = parts_of(n, work, lwork);
    const Scaling scaling = scaling_within(std::sqrt(machine::safeMinimum) / machine::precision,
                                           lange<float>(Norm::maximum, n, n, a, nullptr));
    scaling.forth(n, n, a);
    const ActiveRange range = gebal(both, n, a, parts.scale);
    const int info = reduce(left, right, n, range, a, wr, wi, vl, vr, parts);
    if (info == 0 && (left || right)) {
        trevc({left, right, EigenvectorsWanted::backTransformed}, n, a, nullptr, vl, vr, parts.behindScale);
        for (const Side side : {Side::left, Side::right})
            if (side == Side::left ? left : right) {
                const Matrix<float> v = side == Side::left ? vl : vr;
                gebak(both, side, n, range, parts.scale, n, v);
                normalize(n, wi, v, parts.behindScale);
            }
    }
    for (float* const values : {wr, wi}) {
        scaling.back(n - info, 1, Matrix<float>{values + info, n}); // of those that are known
        if (info > 0)
            scaling.back(range.begin, 1, Matrix<float>{values, n});
    }
    return info;
}

} // namespace qrv::lapack
