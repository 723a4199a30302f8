// SLARFB, CLARFB: a block of reflectors applied to a matrix from either side.
//
// On the right, with C in the parts that meet the triangle V1 and the rest V2 of V:
//
//   W = C1 V1 + C2 V2,  W := W op(T),  C2 := C2 - W V2^H,  C1 := C1 - W V1^H
//
// On the left it is the same for C^H. There W = C^H V is kept either so, as published, or upright as its adjoint. All
// sixteen forms are this one walk: V is by columns here whichever way it is stored (stored_reflectors.hpp).
//
// Forward, rows of V behind the last one that is not zero are left out, and on either side columns or rows of C that
// are zero up to the end.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/kernel/source/reflectors/stored_reflectors.hpp"

namespace qrv::lapack {
namespace {

// W, `across` x k, or its adjoint where it is upright.
template <class T>
struct Projection {
    int across, k;
    Matrix<T> w;
    bool upright;

    int rows() const { return upright ? k : across; }
    int columns() const { return upright ? across : k; }

    // W := W op(by)
    void multiply(Uplo uplo, Op op, Diag diag, Matrix<const T> by) const {
        if (upright)
            blas::trmm(Side::left, uplo, other<T>(op), diag, k, across, scalar<T>(1), by, w);
        else
            blas::trmm(Side::right, uplo, op, diag, across, k, scalar<T>(1), by, w);
    }
};

template <class T>
void subtract(int m, int n, Matrix<const T> x, Matrix<T> from) {
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i)
            from(i, j) -= x(i, j);
}

// A strip of so many columns of the one matrix, and of rows of the other, stays in the innermost cache.
constexpr int strip = 16;

// to(j, i) := combine(to(j, i), conj(from(i, j))), from of m x n
template <class T, class Combine>
void transpose(int m, int n, Matrix<const T> from, Matrix<T> to, const Combine& combine) {
    for (int first = 0; first < n; first += strip)
        for (int i = 0; i < m; ++i)
            for (int j = first; j < std::min(first + strip, n); ++j)
                to(j, i) = combine(to(j, i), conj(from(i, j)));
}

template <class T>
int last_row(const StoredReflectors<T>& v, int length, int k) {
    return v.by_columns() ? ilaslr(length, k, v.v) : ilaslc(k, length, v.v);
}

} // namespace

template <class T>
void larfb(Side side, Op op, const BlockReflector<T>& h, int m, int n, Matrix<T> c, Matrix<T> work, BlockWork form) {
    if (m <= 0 || n <= 0 || h.k <= 0)
        return;
    const bool left = side == Side::left, forward = h.direct == Direct::forward;
    const StoredReflectors<T> v{h.direct, h.store, h.v};
    const int k = h.k;
    int length = left ? m : n;
    if (forward)
        length = std::max(k, last_row(v, length, k));
    const int across = left ? ilaslc(length, n, c) : ilaslr(m, length, c);
    if (across == 0)
        return;

    const int rest = length - k, row1 = forward ? 0 : rest, row2 = forward ? k : 0;
    const Matrix<T> c1 = left ? c.block(row1, 0) : c.block(0, row1);
    const Matrix<T> c2 = left ? c.block(row2, 0) : c.block(0, row2);
    const Matrix<const T> v1 = v.from(row1, 0).v, v2 = v.from(row2, 0).v;
    const Projection<T> w{across, k, work, left && form == BlockWork::upright};
    const bool mirrored = left && !w.upright;
    const T one = scalar<T>(1), minusOne = scalar<T>(-1);

    if (mirrored)
        transpose<T>(k, across, c1, work, [](T, T x) { return x; });
    else
        lacpy<T>(Part::whole, w.rows(), w.columns(), c1, work);
    w.multiply(v.triangle(), v.op(), Diag::unit, v1);
    if (rest > 0) {
        if (w.upright)
            blas::gemm(v.adjoint_op(), Op::none, k, across, rest, one, v2, c2, one, work);
        else
            blas::gemm(left ? adjoint<T> : Op::none, v.op(), across, k, rest, one, c2, v2, one, work);
    }
    w.multiply(triangle_of_t(h.direct), left ? other<T>(op) : op, Diag::nonUnit, h.t);
    if (rest > 0) {
        if (left)
            blas::gemm(v.op(), w.upright ? Op::none : adjoint<T>, rest, across, k, minusOne, v2, work, one, c2);
        else
            blas::gemm(Op::none, v.adjoint_op(), across, rest, k, minusOne, work, v2, one, c2);
    }
    w.multiply(v.triangle(), v.adjoint_op(), Diag::unit, v1);
    if (mirrored)
        transpose<T>(across, k, work, c1, [](T x, T y) { return x - y; });
    else
        subtract<T>(w.rows(), w.columns(), work, c1);
}

template void larfb(Side, Op, const BlockReflector<float>&, int, int, Matrix<float>, Matrix<float>, BlockWork);
template void larfb(Side, Op, const BlockReflector<SingleComplex>&, int, int, Matrix<SingleComplex>,
                    Matrix<SingleComplex>, BlockWork);

} // namespace qrv::lapack
