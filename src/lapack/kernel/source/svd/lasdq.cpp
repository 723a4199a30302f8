// SLASDQ: singular values of a bidiagonal matrix that may have one row or column more than the square, with vectors, in
// ascending order, as the merges of divide and conquer want their parts.
#include <functional>

#include "blas/calls.hpp"
#include "lapack/calls/rotations.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/ordered_values.hpp"

namespace qrv::lapack {
namespace {

// n - 1 rotations, or n with the last element beside the diagonal, which becomes zero.
int rotate(int n, bool longer, float* d, float* e, float* c, float* s) {
    rotate_to_other_triangle(n, d, e, c, s);
    if (!longer)
        return n - 1;
    const Rotation turn = lartg(d[n - 1], e[n - 1]);
    d[n - 1] = turn.r;
    e[n - 1] = 0;
    c[n - 1] = turn.c;
    s[n - 1] = turn.s;
    return n;
}

} // namespace

int lasdq(Uplo uplo, bool longer, int n, float* d, float* e, const BidiagonalVectors& vectors, float* work) {
    if (n == 0)
        return 0;
    float *const c = work, *const s = work + n;
    if (uplo == Uplo::upper && longer) { // a column more: lower and square, by rotations of columns
        const int turns = rotate(n, true, d, e, c, s);
        kernel::lasr(Side::left, Pivot::variable, Direct::forward, turns + 1, vectors.ncvt, c, s, vectors.vt);
        uplo = Uplo::lower;
        longer = false;
    }
    if (uplo == Uplo::lower) { // upper and square, by rotations of rows
        const int turns = rotate(n, longer, d, e, c, s);
        kernel::lasr(Side::right, Pivot::variable, Direct::forward, vectors.nru, turns + 1, c, s, vectors.u);
        kernel::lasr(Side::left, Pivot::variable, Direct::forward, turns + 1, vectors.ncc, c, s, vectors.c);
    }
    const int info = bdsqr(Uplo::upper, n, d, e, vectors, work);
    order_values<std::greater_equal<>>(n, d, vectors);
    return info;
}

} // namespace qrv::lapack
