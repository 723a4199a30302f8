// Householder reflectors by value, for the rows of their routines and for other families. Instantiated for both element
// types.
//
// A reflector is H = I - tau*v*v^H with v(0) = 1, so tau = 0 is the identity; it is unitary, and Hermitian if tau is
// real. Several of them, in blocks, are H = I - V*T*V^H with a triangular T.
#pragma once

#include "blas/complex.hpp"
#include "blas/options.hpp"

namespace qrv::lapack {

// Lengths of a plane vector and of one in space, and the quotient of complex numbers, without overflow on the way.
float lapy2(float x, float y);
float lapy3(float x, float y, float z);
SingleComplex ladiv(SingleComplex x, SingleComplex y);

// The last row or column of an m x n matrix that is not zero, counted from 1; 0 if there is none. NaN is not zero.
template <class T>
int ilaslr(int m, int n, Matrix<T> a);
template <class T>
int ilaslc(int m, int n, Matrix<T> a);

// The reflector with H^H [alpha; x] = [beta; 0], beta real: alpha becomes beta, and x, of n - 1 elements, becomes the
// tail of v. Result: tau. larfp makes beta >= 0. larfg gives it the sign opposite to alpha's, so that 1 <= real(tau)
// <= 2 wherever tau is not 0.
template <class T>
T larfg(int n, T& alpha, Vector<T> x);
template <class T>
T larfp(int n, T& alpha, Vector<T> x);

// C := H C or C H, C of m x n. v is given whole, with its first element. work: n elements on the left, m on the right.
template <class T>
void larf(Side side, int m, int n, Vector<const T> v, T tau, Matrix<T> c, T* work);

// k reflectors in a matrix V: H = H(1) H(2) .. H(k) forward, H(k) .. H(2) H(1) backward. V has column v(i) or
// row v(i)^H for each. Forward, v(i) begins with i - 1 zeros and a 1; backward, it ends with a 1 and k - i zeros:
// neither is stored.
using qrv::Direct, qrv::direct_of;
enum class StoreV : char { columns = 'C', rows = 'R' };

constexpr StoreV store_of(char option) {
    return is_option(option, 'C') ? StoreV::columns : StoreV::rows;
}

// T of k reflectors of length n >= k: upper triangular forward, lower backward. The other triangle is left alone.
template <class T>
void larft(Direct direct, StoreV store, int n, int k, Matrix<const T> v, const T* tau, Matrix<T> t);

template <class T>
struct BlockReflector {
    Direct direct;
    StoreV store;
    int k;
    Matrix<const T> v, t;
};

// How the work of larfb lies: as published, n x k on the left and m x k on the right; or upright, where the left side
// has k x n, which spares it two transpositions.
enum class BlockWork { published, upright };

// C := op(H) C or C op(H), C of m x n; any op but none is the adjoint. Nothing is done if a size is below 1.
template <class T>
void larfb(Side side, Op op, const BlockReflector<T>& h, int m, int n, Matrix<T> c, Matrix<T> work,
           BlockWork form = BlockWork::published);

} // namespace qrv::lapack
