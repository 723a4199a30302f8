// Reduction to bidiagonal form by value, for the rows of its routines and for other families. Instantiated for both
// element types.
#pragma once

#include <cstdint>

#include "blas/options.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {

// Q^H A P = B, in the place of A, an m x n matrix: B is upper bidiagonal if m >= n, else lower. The diagonal d and the
// elements e beside it are real; below and beside them A keeps the reflectors of Q, tauq, and of P, taup. work:
// max(m, n) elements.
template <class T>
void gebd2(int m, int n, Matrix<T> a, float* d, float* e, T* tauq, T* taup, T* work);

// The same of the first nb rows and columns. X (m x nb) and Y (n x nb) tell what the rest of A becomes: A - V Y^H - X
// U, V the reflectors of Q and U those of P, whose elements 1 are left in A in the place of d and e.
template <class T>
void labrd(int m, int n, int nb, Matrix<T> a, float* d, float* e, T* tauq, T* taup, Matrix<T> x, Matrix<T> y);

// The same in panels of so many rows and columns, as long as more than `rest` are left. work: max(m, n) elements, and
// (m + n) * width if there is a panel.
struct BidiagonalPanels {
    int width, rest;
};
template <class T>
void gebrd_in_panels(const BidiagonalPanels& panels, int m, int n, Matrix<T> a, float* d, float* e, T* tauq, T* taup,
                     T* work);

// The same, as is best. work: lwork elements, max(m, n) at least, gebrd_work for full speed; of an empty matrix work[0]
// becomes 1.
template <class T>
std::int64_t gebrd_work(int m, int n);
template <class T>
void gebrd(int m, int n, Matrix<T> a, float* d, float* e, T* tauq, T* taup, T* work, int lwork);

// The two factors of a reduction. As stored, Q is that of a QR factorization and P^H that of an LQ factorization.
enum class BidiagonalFactor : char { q = 'Q', p = 'P' };

constexpr BidiagonalFactor factor_of(char option) {
    return is_option(option, 'Q') ? BidiagonalFactor::q : BidiagonalFactor::p;
}

// Columns of Q, or rows of P^H, in the place of their reflectors, m x n; k is the other dimension of the matrix that
// was reduced. work: lwork elements, min(m, n) at least, orgbr_work for full speed.
template <class T>
std::int64_t orgbr_work(BidiagonalFactor factor, int m, int n, int k);
template <class T>
void orgbr(BidiagonalFactor factor, int m, int n, int k, Matrix<T> a, const T* tau, T* work, int lwork);

// C := op(Q) C, op(P) C, C op(Q) or C op(P), C of m x n; k as for orgbr. work: lwork elements, n on the left and m on
// the right at least, ormbr_work for full speed.
template <class T>
std::int64_t ormbr_work(BidiagonalFactor factor, Side side, int m, int n);
template <class T>
void ormbr(BidiagonalFactor factor, Side side, Op op, int m, int n, int k, Matrix<const T> a, const T* tau, Matrix<T> c,
           T* work, int lwork);

} // namespace qrv::lapack
