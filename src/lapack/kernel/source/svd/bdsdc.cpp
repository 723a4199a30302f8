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

int leaf_rows() {
    return tuning::value(9, "SBDSDC", " ", {});
}

// The matrix scaled to size one, and its parts one after the other: e(i) is negligible where a part ends in row i.
// `single(row)` is a part of one row, `part(first, size)` one of more and tells a failure.
template <class Single, class Part>
int solve_parts(int n, float* d, float* e, const Single& single, const Part& part) {
    if (!all_finite(n, d, e))
        return n;
    const float norm = lanst(Norm::maximum, n, d, e);
    if (norm == 0) {
        for (int i = 0; i < n; ++i)
            single(i);
        return 0;
    }
    lascl({}, norm, 1, n, 1, Matrix<float>{d, n});
    lascl({}, norm, 1, n - 1, 1, Matrix<float>{e, n});
    for (int i = 0; i < n; ++i)
        if (std::fabs(d[i]) < machine::epsilon)
            d[i] = std::copysign(machine::epsilon, d[i]);
    for (int first = 0; first < n;) {
        int last = first;
        while (last < n - 1 && !(std::fabs(e[last]) < machine::epsilon))
            ++last;
        if (last == first)
            single(first);
        else if (const int info = part(first, last - first + 1))
            return info;
        first = last + 1;
    }
    lascl({}, 1, norm, n, 1, Matrix<float>{d, n});
    return 0;
}

// d := |d|, with its sign in the left vector.
void solve_single(float& d, float& u) {
    u = std::copysign(1.0F, d);
    d = std::fabs(d);
}

// The columns of n numbers into which Q and IQ are cut (native/svd.h).
struct CompactColumns {
    int leaf;
    Matrix<float> q;
    Matrix<int> iq;
    int levels; // of a tree over all rows

    float* parts() const { return q.column(2 * leaf + 1); }
    float* order() const { return q.column(2 * leaf + 2); }
    // Of the part that begins in a row.
    CompactForm form(int row, int* k, int* givptr, float* c, float* s) const {
        int next = 2 * leaf + 3;
        const auto take = [&](int columns) {
            next += columns;
            return q.block(row, next - columns);
        };
        CompactForm to{q.block(row, 0),       q.block(row, leaf), k,  {}, {}, {}, {}, givptr,
                       iq.block(row, levels), iq.block(row, 0),   {}, c,  s};
        to.difl = take(levels);
        to.difr = take(2 * levels);
        to.z = take(levels);
        to.poles = take(2 * levels);
        to.givnum = take(2 * levels);
        return to;
    }
};

} // namespace

int bdsdc(Uplo uplo, int n, float* d, float* e, Matrix<float> u, Matrix<float> vt, float* work, int* iwork) {
    if (n == 0)
        return 0;
    float *const c = work, *const s = work + n - 1, *const rest = uplo == Uplo::lower ? s + n - 1 : work;
    if (uplo == Uplo::lower)
        rotate_to_other_triangle(n, d, e, c, s);
    laset(Part::whole, n, n, 0.0F, 1.0F, u);
    laset(Part::whole, n, n, 0.0F, 1.0F, vt);
    const int leaf = leaf_rows();
    const BidiagonalVectors vectors{n, n, 0, vt, u};
    int info;
    if (n <= leaf) { // which SLASDQ would put in ascending order
        info = bdsqr(Uplo::upper, n, d, e, vectors, rest);
    } else {
        info = solve_parts(
            n, d, e, [&](int row) { solve_single(d[row], u(row, row)); },
            [&](int first, int size) {
                return lasd0(size, false, d + first, e + first, u.block(first, first), vt.block(first, first), leaf,
                             iwork, rest);
            });
        if (info == 0)
            order_values<std::less_equal<>>(n, d, vectors);
    }
    if (info != 0)
        return info;
    if (uplo == Uplo::lower) { // the rotations undone
        std::transform(s, s + n - 1, s, std::negate<>());
        kernel::lasr(Side::left, Pivot::variable, Direct::backward, n, n, c, s, u);
    }
    return 0;
}

int bdsdc_compact(int n, float* d, float* e, float* q, int* iq, float* work, int* iwork) {
    const int leaf = leaf_rows();
    if (n == 0)
        return 0;
    if (n <= leaf) {
        const Matrix<float> u{q, n}, vt{q + std::ptrdiff_t{n} * n, n};
        const BidiagonalVectors vectors{n, n, 0, vt, u};
        laset(Part::whole, n, n, 0.0F, 1.0F, u);
        laset(Part::whole, n, n, 0.0F, 1.0F, vt);
        return bdsqr(Uplo::upper, n, d, e, vectors, work);
    }
    const CompactColumns columns{leaf, {q, n}, {iq, n}, division_levels(n, leaf)};
    // Of a part its size, and behind it, of all merges together, c, s, and k and givptr as floats.
    const auto part = [&](int first, int size) {
        int *const k = iwork + std::ptrdiff_t{7} * size, merges = 0;
        float* const head = columns.parts() + first;
        head[0] = static_cast<float>(size);
        if (size > leaf)
            merges = lasdt(size, iwork, iwork + size, iwork + 2 * size, leaf).nodes;
        float *const c = head + 1, *const s = c + merges;
        const int info =
            lasda(true, leaf, size, false, d + first, e + first, columns.form(first, k, k + merges, c, s), work, iwork);
        std::copy_n(k, 2 * merges, s + merges);
        return info;
    };
    const int info = solve_parts(
        n, d, e,
        [&](int row) {
            columns.parts()[row] = 1;
            columns.q(row, leaf) = 1;
            solve_single(d[row], columns.q(row, 0));
        },
        part);
    if (info != 0)
        return info;
    for (int i = 0; i < n; ++i)
        columns.order()[i] = static_cast<float>(i + 1);
    order_values<std::less_equal<>>(n, d, {0, 1, 0, {nullptr, 1}, {columns.order(), 1}});
    return 0;
}

int bdsdc_values(Uplo uplo, int n, float* d, float* e, float* work) {
    if (n == 0)
        return 0;
    return bdsqr(uplo, n, d, e, {}, work);
}

} // namespace qrv::lapack
