// BLAS by value, for the callers above: factorizations read like their textbook form.
//
// Two namespaces say which layer is meant: blas::gemm is the decision routine, which may thread (blas/thread);
// kernel::gemm is the serial kernel behind its slot. A routine without a decision is its kernel in both. The element
// type T is that of the operand that is written; sizes, options and increments are those of the published routine.
#pragma once

#include <tuple>
#include <type_traits>

#include "blas/native.hpp"
#include "blas/options.hpp"

namespace qrv {

// What the element type of the written operand decides: scalars and operands that are read.
template <class T>
using Scalar = std::type_identity_t<T>;
template <class T>
using MatrixIn = Matrix<const std::type_identity_t<T>>;
template <class T>
using VectorIn = Vector<const std::type_identity_t<T>>;

// ---- The native calling form: scalars, sizes and options by address ------------------------------------------------

namespace native {

// A value as the arguments that it stands for, held until the call returns.
template <class T>
std::tuple<T> held(T scalar) {
    return {scalar};
}
template <class Option>
requires std::is_enum_v<Option> std::tuple<char> held(Option option) {
    return {letter(option)};
}
template <class T>
std::tuple<T*, int> held(Matrix<T> a) {
    return {a.data, static_cast<int>(a.ld)};
}
template <class T>
std::tuple<T*, int> held(Vector<T> x) {
    return {x.data, x.inc};
}

template <class T>
const T* passed(const T& scalar) {
    return &scalar;
}
template <class T>
T* passed(T* const& array) {
    return array;
}

// Calls `routine` with the values in the order of its arguments; a view gives its address and then its leading
// dimension or increment.
template <class Routine, class... Values>
auto call(Routine& routine, Values... values) {
    return std::apply([&](const auto&... arguments) { return routine(passed(arguments)...); },
                      std::tuple_cat(held(values)...));
}

// The inner products: the complex ones return their result through an address, ahead of the rest.
inline float dot(float (&routine)(const int*, const float*, const int*, const float*, const int*), int n,
                 Vector<const float> x, Vector<const float> y) {
    return call(routine, n, x, y);
}
inline SingleComplex dot(void (&routine)(SingleComplex*, const int*, const SingleComplex*, const int*,
                                         const SingleComplex*, const int*),
                         int n, Vector<const SingleComplex> x, Vector<const SingleComplex> y) {
    SingleComplex sum{};
    call(routine, &sum, n, x, y);
    return sum;
}

} // namespace native

// ---- Serial kernels -------------------------------------------------------------------------------------------------

namespace kernel {

// x <-> y
template <class T>
void swap(int n, Vector<T> x, Vector<T> y) {
    native::call(Native<T>::swap, n, x, y);
}
template <class T>
void copy(int n, VectorIn<T> x, Vector<T> y) {
    native::call(Native<T>::copy, n, x, y);
}
// x := alpha*x, by an element or by a real factor
template <class T>
void scal(int n, Scalar<T> alpha, Vector<T> x) {
    native::call(Native<T>::scal, n, alpha, x);
}
inline void scal(int n, float alpha, Vector<SingleComplex> x) {
    native::call(Native<SingleComplex>::rscal, n, alpha, x);
}
// y := alpha*x + y
template <class T>
void axpy(int n, Scalar<T> alpha, VectorIn<T> x, Vector<T> y) {
    native::call(Native<T>::axpy, n, alpha, x, y);
}
// Sum of x(i)*y(i); dotc takes the conjugates of the x(i).
template <class T>
std::remove_const_t<T> dotu(int n, Vector<T> x, VectorIn<T> y) {
    return native::dot(Native<T>::dotu, n, x, y);
}
template <class T>
std::remove_const_t<T> dotc(int n, Vector<T> x, VectorIn<T> y) {
    return native::dot(Native<T>::dotc, n, x, y);
}
// Sum of abs1(x(i)).
template <class T>
float asum(int n, Vector<T> x) {
    return native::call(Native<T>::asum, n, x);
}
template <class T>
float nrm2(int n, Vector<T> x) {
    return native::call(Native<T>::nrm2, n, x);
}
// Of the largest abs1(x(i)), counted from 1; 0 if there is none.
template <class T>
int iamax(int n, Vector<T> x) {
    return native::call(Native<T>::iamax, n, x);
}
// For a thread of a team (level1_kernels.hpp): the sum of squares, and the position with a sign.
template <class T>
double squares(int n, Vector<T> x) {
    return native::call(Native<T>::nrm2_squares, n, x);
}
template <class T>
int iamax_slice(int n, Vector<T> x) {
    return native::call(Native<T>::iamax_slice, n, x);
}
// Plane rotations, of real elements.
inline void rot(int n, Vector<float> x, Vector<float> y, float c, float s) {
    native::call(qrv_blas_srot_kernel, n, x, y, c, s);
}
inline void rotm(int n, Vector<float> x, Vector<float> y, const float* param) {
    native::call(qrv_blas_srotm_kernel, n, x, y, param);
}
inline void rotg(float& a, float& b, float& c, float& s) {
    qrv_blas_srotg_kernel(&a, &b, &c, &s);
}

// y := alpha*op(A)*x + beta*y, A of m x n
template <class T>
void gemv(Op op, int m, int n, Scalar<T> alpha, MatrixIn<T> a, VectorIn<T> x, Scalar<T> beta, Vector<T> y) {
    native::call(Native<T>::gemv, op, m, n, alpha, a, x, beta, y);
}
// y := tau*(y + A^H*v), x := x - y, z := z + A*x (gemvt.hpp)
template <class T>
void gemvt(int m, int n, Scalar<T> tau, MatrixIn<T> a, const Scalar<T>* v, Vector<T> x, Vector<T> y, T* z) {
    native::call(Native<T>::gemvt, m, n, tau, a, v, x, y, z);
}
// y := alpha*A*x + beta*y, A symmetric or Hermitian
template <class T>
void hemv(Uplo uplo, int n, Scalar<T> alpha, MatrixIn<T> a, VectorIn<T> x, Scalar<T> beta, Vector<T> y) {
    native::call(Native<T>::hemv, uplo, n, alpha, a, x, beta, y);
}
// A := alpha*x*y' + A; gerc takes the conjugates of the y(j).
template <class T>
void geru(int m, int n, Scalar<T> alpha, VectorIn<T> x, VectorIn<T> y, Matrix<T> a) {
    native::call(Native<T>::geru, m, n, alpha, x, y, a);
}
template <class T>
void gerc(int m, int n, Scalar<T> alpha, VectorIn<T> x, VectorIn<T> y, Matrix<T> a) {
    native::call(Native<T>::gerc, m, n, alpha, x, y, a);
}
// A := alpha*x*x' + A, A symmetric or Hermitian
template <class T>
void her(Uplo uplo, int n, float alpha, VectorIn<T> x, Matrix<T> a) {
    native::call(Native<T>::her, uplo, n, alpha, x, a);
}
// A := alpha*x*y' + conj(alpha)*y*x' + A, A symmetric or Hermitian
template <class T>
void her2(Uplo uplo, int n, Scalar<T> alpha, VectorIn<T> x, VectorIn<T> y, Matrix<T> a) {
    native::call(Native<T>::her2, uplo, n, alpha, x, y, a);
}
// Their bands for a thread of a team (level2_kernels.hpp).
inline void syr_band(Uplo uplo, int width, int length, float alpha, Vector<const float> x, Matrix<float> a) {
    native::call(qrv_blas_ssyr_band_kernel, uplo, width, length, alpha, x, a);
}
inline void syr2_band(Uplo uplo, int width, int length, float alpha, Vector<const float> x, Vector<const float> y,
                      Matrix<float> a) {
    native::call(qrv_blas_ssyr2_band_kernel, uplo, width, length, alpha, x, y, a);
}
// Their strips, and that of the product: the last columns of an upper, or the first ones of a lower triangle.
template <class T>
void hemv_strip(Uplo uplo, int n, int columns, Scalar<T> alpha, MatrixIn<T> a, VectorIn<T> x, Scalar<T> beta,
                Vector<T> y) {
    native::call(Native<T>::hemv_strip, uplo, n, columns, alpha, a, x, beta, y);
}
template <class T>
void her_strip(Uplo uplo, int n, int columns, float alpha, VectorIn<T> x, Matrix<T> a) {
    native::call(Native<T>::her_strip, uplo, n, columns, alpha, x, a);
}
template <class T>
void her2_strip(Uplo uplo, int n, int columns, Scalar<T> alpha, VectorIn<T> x, VectorIn<T> y, Matrix<T> a) {
    native::call(Native<T>::her2_strip, uplo, n, columns, alpha, x, y, a);
}
// Product x := op(A)*x and solve op(A)*x = x, A triangular
template <class T>
void trmv(Uplo uplo, Op op, Diag diag, int n, MatrixIn<T> a, Vector<T> x) {
    native::call(Native<T>::trmv, uplo, op, diag, n, a, x);
}
template <class T>
void trsv(Uplo uplo, Op op, Diag diag, int n, MatrixIn<T> a, Vector<T> x) {
    native::call(Native<T>::trsv, uplo, op, diag, n, a, x);
}
// A band of the product for a thread of a team (level2_kernels.hpp).
template <class T>
void trmv_band(Uplo uplo, Op op, Diag diag, int width, int length, MatrixIn<T> a, const Scalar<T>* x, Vector<T> y) {
    native::call(Native<T>::trmv_band, uplo, op, diag, width, length, a, x, y);
}
// A sequence of rotations, c[k] and s[k] in the planes that `pivot` names, on a real m x n matrix: of its rows from the
// left, of its columns from the right. Rotations with c = 1 and s = 0 touch nothing.
inline void lasr(Side side, Pivot pivot, Direct direct, int m, int n, const float* c, const float* s, Matrix<float> a) {
    native::call(qrv_blas_slasr_kernel, side, pivot, direct, m, n, c, s, a);
}
// Sums, products and vectors of the secular equation of singular values (secular.hpp).
inline void secular_sums(int n, const float* d, const float* z, double origin, double mu, double* sum, double* slope) {
    native::call(qrv_blas_ssecular_sums_kernel, n, d, z, origin, mu, sum, slope);
}
inline void secular_factors(int n, const float* d, float other, const float* difference, const float* sum,
                            double* product) {
    native::call(qrv_blas_ssecular_factors_kernel, n, d, other, difference, sum, product);
}
inline void secular_vectors(int n, const float* d, const float* z, float* left, float* right) {
    native::call(qrv_blas_ssecular_vectors_kernel, n, d, z, left, right);
}
// Reflectors of order 3 side by side (larf3.hpp).
inline void larf3_left(int count, int n, Matrix<const float> v, Matrix<float> a) {
    native::call(qrv_blas_slarf3_left_kernel, count, n, v, a);
}
inline void larf3_right(int count, int begin, int end, int beginStep, int endStep, Matrix<const float> v,
                        Matrix<float> a) {
    native::call(qrv_blas_slarf3_right_kernel, count, begin, end, beginStep, endStep, v, a);
}
// Band matrices, of real elements: k diagonals beside the main one, or kl below and ku above it.
inline void gbmv(Op op, int m, int n, int kl, int ku, float alpha, Matrix<const float> a, Vector<const float> x,
                 float beta, Vector<float> y) {
    native::call(qrv_blas_sgbmv_kernel, op, m, n, kl, ku, alpha, a, x, beta, y);
}
inline void sbmv(Uplo uplo, int n, int k, float alpha, Matrix<const float> a, Vector<const float> x, float beta,
                 Vector<float> y) {
    native::call(qrv_blas_ssbmv_kernel, uplo, n, k, alpha, a, x, beta, y);
}
inline void tbmv(Uplo uplo, Op op, Diag diag, int n, int k, Matrix<const float> a, Vector<float> x) {
    native::call(qrv_blas_stbmv_kernel, uplo, op, diag, n, k, a, x);
}
inline void tbsv(Uplo uplo, Op op, Diag diag, int n, int k, Matrix<const float> a, Vector<float> x) {
    native::call(qrv_blas_stbsv_kernel, uplo, op, diag, n, k, a, x);
}

// C := beta*C, C of m x n; beta = 0 stores zeros and does not read C.
template <class T>
void scale(int m, int n, Scalar<T> beta, Matrix<T> c) {
    native::call(Native<T>::scale_c, m, n, beta, c);
}
// C := alpha*op(A)*op(B) + beta*C, C of m x n
template <class T>
void gemm(Op opA, Op opB, int m, int n, int k, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, Scalar<T> beta,
          Matrix<T> c) {
    native::call(Native<T>::gemm, opA, opB, m, n, k, alpha, a, b, beta, c);
}
// C := alpha*A*B + beta*C or alpha*B*A + beta*C; A symmetric, hemm: Hermitian
template <class T>
void symm(Side side, Uplo uplo, int m, int n, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, Scalar<T> beta,
          Matrix<T> c) {
    native::call(Native<T>::symm, side, uplo, m, n, alpha, a, b, beta, c);
}
template <class T>
void hemm(Side side, Uplo uplo, int m, int n, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, Scalar<T> beta,
          Matrix<T> c) {
    native::call(Native<T>::hemm, side, uplo, m, n, alpha, a, b, beta, c);
}
// C := alpha*op(A)*op(A)' + beta*C, A of n x k or, transposed, k x n. rank_k and rank_2k are SYRK and SYR2K of real
// elements, HERK and HER2K of complex ones; the plain names transpose without conjugating.
template <class T>
void syrk(Uplo uplo, Op op, int n, int k, Scalar<T> alpha, MatrixIn<T> a, Scalar<T> beta, Matrix<T> c) {
    native::call(Native<T>::syrk, uplo, op, n, k, alpha, a, beta, c);
}
template <class T>
void rank_k(Uplo uplo, Op op, int n, int k, float alpha, MatrixIn<T> a, float beta, Matrix<T> c) {
    native::call(Native<T>::herk, uplo, op, n, k, alpha, a, beta, c);
}
// C := alpha*op(A)*op(B)' + (alpha*op(A)*op(B)')' + beta*C
template <class T>
void syr2k(Uplo uplo, Op op, int n, int k, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, Scalar<T> beta, Matrix<T> c) {
    native::call(Native<T>::syr2k, uplo, op, n, k, alpha, a, b, beta, c);
}
template <class T>
void rank_2k(Uplo uplo, Op op, int n, int k, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, float beta, Matrix<T> c) {
    native::call(Native<T>::her2k, uplo, op, n, k, alpha, a, b, beta, c);
}
// B := alpha*op(A)*B or alpha*B*op(A), and the solution X of op(A)*X = alpha*B or X*op(A) = alpha*B; A triangular
template <class T>
void trmm(Side side, Uplo uplo, Op op, Diag diag, int m, int n, Scalar<T> alpha, MatrixIn<T> a, Matrix<T> b) {
    native::call(Native<T>::trmm, side, uplo, op, diag, m, n, alpha, a, b);
}
template <class T>
void trsm(Side side, Uplo uplo, Op op, Diag diag, int m, int n, Scalar<T> alpha, MatrixIn<T> a, Matrix<T> b) {
    native::call(Native<T>::trsm, side, uplo, op, diag, m, n, alpha, a, b);
}

} // namespace kernel

// ---- Decision routines, defined in blas/thread ---------------------------------------------------------------------

namespace blas {

// Of one vector LAPACK has none that were worth a team, and its norms keep the bits of one thread.
using kernel::asum, kernel::iamax, kernel::nrm2, kernel::rotg, kernel::rotm, kernel::scal;
using kernel::gbmv, kernel::sbmv, kernel::tbmv, kernel::tbsv, kernel::trsv;

template <class T>
void swap(int n, Vector<T> x, Vector<T> y);
template <class T>
void copy(int n, VectorIn<T> x, Vector<T> y);
template <class T>
void axpy(int n, Scalar<T> alpha, VectorIn<T> x, Vector<T> y);
float dotc(int n, Vector<const float> x, Vector<const float> y);
SingleComplex dotc(int n, Vector<const SingleComplex> x, Vector<const SingleComplex> y);
inline float dotu(int n, Vector<const float> x, Vector<const float> y) {
    return dotc(n, x, y);
}
SingleComplex dotu(int n, Vector<const SingleComplex> x, Vector<const SingleComplex> y);
void rot(int n, Vector<float> x, Vector<float> y, float c, float s);

template <class T>
void gemv(Op op, int m, int n, Scalar<T> alpha, MatrixIn<T> a, VectorIn<T> x, Scalar<T> beta, Vector<T> y);
template <class T>
void geru(int m, int n, Scalar<T> alpha, VectorIn<T> x, VectorIn<T> y, Matrix<T> a);
template <class T>
void gerc(int m, int n, Scalar<T> alpha, VectorIn<T> x, VectorIn<T> y, Matrix<T> a);
template <class T>
void hemv(Uplo uplo, int n, Scalar<T> alpha, MatrixIn<T> a, VectorIn<T> x, Scalar<T> beta, Vector<T> y);
template <class T>
void her(Uplo uplo, int n, float alpha, VectorIn<T> x, Matrix<T> a);
template <class T>
void her2(Uplo uplo, int n, Scalar<T> alpha, VectorIn<T> x, VectorIn<T> y, Matrix<T> a);
template <class T>
void trmv(Uplo uplo, Op op, Diag diag, int n, MatrixIn<T> a, Vector<T> x);

template <class T>
void gemm(Op opA, Op opB, int m, int n, int k, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, Scalar<T> beta,
          Matrix<T> c);
template <class T>
void symm(Side side, Uplo uplo, int m, int n, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, Scalar<T> beta,
          Matrix<T> c);
template <class T>
void hemm(Side side, Uplo uplo, int m, int n, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, Scalar<T> beta,
          Matrix<T> c);
template <class T>
void syrk(Uplo uplo, Op op, int n, int k, Scalar<T> alpha, MatrixIn<T> a, Scalar<T> beta, Matrix<T> c);
template <class T>
void rank_k(Uplo uplo, Op op, int n, int k, float alpha, MatrixIn<T> a, float beta, Matrix<T> c);
template <class T>
void syr2k(Uplo uplo, Op op, int n, int k, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, Scalar<T> beta, Matrix<T> c);
template <class T>
void rank_2k(Uplo uplo, Op op, int n, int k, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, float beta, Matrix<T> c);
template <class T>
void trmm(Side side, Uplo uplo, Op op, Diag diag, int m, int n, Scalar<T> alpha, MatrixIn<T> a, Matrix<T> b);
template <class T>
void trsm(Side side, Uplo uplo, Op op, Diag diag, int m, int n, Scalar<T> alpha, MatrixIn<T> a, Matrix<T> b);

} // namespace blas

} // namespace qrv
