// SLARFT, CLARFT: the triangular factor T of a block of reflectors, H = I - V T V^H.
//
// Of two blocks, the product of I - Va Ta Va^H and I - Vb Tb Vb^H has
//
//   T = [ Ta  X  ]   X = -Ta (Va^H Vb) Tb
//       [     Tb ]
//
// so T is found by halves: nearly all work is products of matrices. Backward, Ta and Tb change places. (E. Elmroth, F.
// Gustavson, Applying recursion to serial and parallel QR factorization leads to better performance, IBM J. Res. Dev.
// 44, 2000.) A few reflectors, whose products would be too small, have V^H V as one product, and T column by column.
#include "lapack/kernel/source/reflectors/larft.hpp"
#include "blas/calls.hpp"

namespace qrv::lapack {

template <class T>
void larft_couple(const StoredReflectors<T>& a, int aCount, const StoredReflectors<T>& b, int bCount, int rest,
                  Matrix<const T> ta, Matrix<const T> tb, Matrix<T> x) {
    const bool forward = a.direct == Direct::forward;
    const int triangle = forward ? 0 : rest, below = forward ? bCount : 0;
    const T one = scalar<T>(1), minusOne = scalar<T>(-1);
    const Uplo uplo = triangle_of_t(a.direct);
    const auto a1 = a.from(triangle, 0), a2 = a.from(below, 0), b1 = b.from(triangle, 0), b2 = b.from(below, 0);
    for (int j = 0; j < bCount; ++j)
        for (int i = 0; i < aCount; ++i)
            x(i, j) = a.by_columns() ? conj(a1.v(j, i)) : a1.v(i, j);
    blas::trmm(Side::right, b.triangle(), b.op(), Diag::unit, aCount, bCount, one, b1.v, x);
    if (rest > 0)
        blas::gemm(a.adjoint_op(), b.op(), aCount, bCount, rest, one, a2.v, b2.v, one, x);
    blas::trmm(Side::left, uplo, Op::none, Diag::nonUnit, aCount, bCount, minusOne, ta, x);
    blas::trmm(Side::right, uplo, Op::none, Diag::nonUnit, aCount, bCount, one, tb, x);
}

namespace {

constexpr int fewest = 8;

// V^H V, whose triangle that T has is right; a square of `few` columns each.
template <class T>
void multiply_reflectors(const StoredReflectors<T>& v, int n, int k, Matrix<T> product) {
    const bool forward = v.direct == Direct::forward;
    const int rest = n - k;
    const auto v1 = v.from(forward ? 0 : rest, 0), v2 = v.from(forward ? k : 0, 0);
    alignas(64) T memory[fewest * fewest];
    const Matrix<T> square{memory, fewest};
    const T zero = scalar<T>(0), one = scalar<T>(1);
    for (int j = 0; j < k; ++j)
        for (int i = 0; i < k; ++i)
            square(i, j) = i == j ? one : (i > j) != forward ? zero : v.by_columns() ? v1.v(i, j) : conj(v1.v(j, i));
    blas::gemm(adjoint<T>, Op::none, k, k, k, one, square, square, zero, product);
    if (rest > 0)
        blas::gemm(v.adjoint_op(), v.op(), k, k, rest, one, v2.v, v2.v, one, product);
}

template <class T>
void larft_few(const StoredReflectors<T>& v, int n, int k, const T* tau, Matrix<T> t) {
    alignas(64) T memory[fewest * fewest];
    const Matrix<T> product{memory, fewest};
    multiply_reflectors(v, n, k, product);
    larft_of_product<T>(v.direct, k, product, tau, t);
}

} // namespace

template <class T>
void larft(Direct direct, StoreV store, int n, int k, Matrix<const T> v, const T* tau, Matrix<T> t) {
    if (n <= 0 || k <= 0)
        return;
    const StoredReflectors<T> left{direct, store, v};
    if (k <= fewest)
        return larft_few(left, n, k, tau, t);
    const int k1 = k / 2, k2 = k - k1;
    const Matrix<T> t2 = t.block(k1, k1);
    if (direct == Direct::forward) { // the right half begins k1 rows below
        const StoredReflectors<T> right = left.from(k1, k1);
        larft(direct, store, n, k1, v, tau, t);
        larft<T>(direct, store, n - k1, k2, right.v, tau + k1, t2);
        larft_couple<T>(left.from(k1, 0), k1, right, k2, n - k, t, t2, t.block(0, k1));
    } else { // the left half ends k2 rows above
        const StoredReflectors<T> right = left.from(0, k1);
        larft(direct, store, n - k2, k1, v, tau, t);
        larft<T>(direct, store, n, k2, right.v, tau + k1, t2);
        larft_couple<T>(right, k2, left, k1, n - k, t2, t, t.block(k1, 0));
    }
}

template void larft_couple(const StoredReflectors<float>&, int, const StoredReflectors<float>&, int, int,
                           Matrix<const float>, Matrix<const float>, Matrix<float>);
template void larft_couple(const StoredReflectors<SingleComplex>&, int, const StoredReflectors<SingleComplex>&, int,
                           int, Matrix<const SingleComplex>, Matrix<const SingleComplex>, Matrix<SingleComplex>);
template void larft(Direct, StoreV, int, int, Matrix<const float>, const float*, Matrix<float>);
template void larft(Direct, StoreV, int, int, Matrix<const SingleComplex>, const SingleComplex*, Matrix<SingleComplex>);

} // namespace qrv::lapack
