// One product by value, as it goes through the templates of GEMM: made from the arguments of a C name, which come by
// address.
//
// Kernel builds are compiled for different processors, so nothing inline may be shared between them: in a kernel
// source this lives in the build's own namespace.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/gemm_kernels.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"

namespace QRV_VIEW_NAMESPACE {

// C := alpha*op(A)*op(B) + beta*C, where C is m x n, op(A) m x k and op(B) k x n; A and B as they are stored.
// Inside the kernels a piece has a record of the part that it computes, filled once for all of its tiles: what that
// leaves out (C, or the options) is not its own to know, and strides are in floats.
template <class T>
struct GemmCall {
    Op opA, opB;
    int m, n, k;
    T alpha;
    Matrix<const T> a, b;
    T beta;
    Matrix<T> c;

    constexpr bool is_empty() const { return m <= 0 || n <= 0; }
    constexpr bool adds_nothing() const { return k <= 0 || alpha == scalar<T>(0); }
    // Whether the leading dimensions hold the operands; not of operands that come packed.
    constexpr bool is_well_formed() const {
        return c.ld >= m && a.ld >= (transposes(opA) ? k : m) && b.ld >= (transposes(opB) ? n : k);
    }
    // Whether op(B) is the transpose of op(A), or its adjoint: what is row i of op(A) in memory is column i of op(B).
    constexpr bool multiplies_itself() const {
        return a.data == b.data && a.ld == b.ld && transposes(opA) != transposes(opB);
    }
    constexpr OpView<const T> view_of_a() const { return {a.data, a.ld, transposes(opA)}; }
    constexpr OpView<const T> view_of_b() const { return {b.data, b.ld, transposes(opB)}; }
};

template <class T>
constexpr GemmCall<T> gemm_call(QRV_GEMM_PARAMETERS(T)) {
    return {op_of(*transa), op_of(*transb), *m, *n, *k, *alpha, {a, *lda}, {b, *ldb}, *beta, {c, *ldc}};
}

} // namespace QRV_VIEW_NAMESPACE
