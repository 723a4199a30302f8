// Dense triangular products and solves: x := op(A)*x, x := inverse(op(A))*x, and one band of a threaded product.
//
// The triangle is walked in blocks along the diagonal, a short one last. What is beside a diagonal block is one general
// product: by the serial kernel of this build where x is multiplied, through the decision routine where it is solved,
// so that the bulk of a large solve can use threads: the one call from a kernel upward. It runs down whole columns of A
// in either case. A solve with op(A) = A takes a block off all that is still to be solved, rather than all that is
// solved off the next block: rows of a block only, across all columns, took four times as long from memory (n = 4096).
//
//   A        the named triangle, read once, its diagonal unless it is taken to be 1; ld >= n
//   x        n elements, any increment but 0; with op(A) = A, what a block or a group of 0 would add is left out
//   memory   a block of elements on the stack, and what the general product takes
#pragma once

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/kernel/common/level2/gemv.hpp"
#include "blas/kernel/common/level2/strided_vector.hpp"
#include "blas/kernel/common/level2/triangle.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/matrix.hpp"
#include "blas/native.hpp"
#include "blas/options.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Unknowns of a block: as long as their triangle stays in the second-level cache, groups of columns cost no more than
// the general product.
constexpr int triangleBlock = Pack<float>::count > 4 ? 256 : 128;

template <class T>
struct TriangularFamily;
template <>
struct TriangularFamily<float> {
    static constexpr auto& serial_gemv = blas_sgemv_kernel;
    static constexpr auto& gemv = qrv_blas_sgemv;
};
template <>
struct TriangularFamily<SingleComplex> {
    static constexpr auto& serial_gemv = blas_cgemv_kernel;
    static constexpr auto& gemv = qrv_blas_cgemv;
};

// Neighbouring elements of a vector, at the address that a routine with increments takes for them.
template <class T>
T* address_of(StridedVector<T> x, int first, int count) {
    return &x[x.inc > 0 ? first : first + count - 1];
}

template <class T>
Triangle<T> dense_triangle(Uplo uplo, Diag diag, int n, Matrix<const T> a) {
    return {a, n, n - 1, uplo, diag};
}

template <Action action, class T>
void triangular(Op op, const Triangle<T>& t, T* p, int inc) {
    QRV_ASSERT(t.a.ld >= t.n || t.n <= 1);
    constexpr int block = triangleBlock;
    const StridedVector<T> x(t.n, p, inc);
    const int lda = static_cast<int>(t.a.ld);
    const char trans = letter(op);
    const bool transposed = transposes(op);
    const T one = scalar<T>(1), sign = scalar<T>(action == Action::multiply ? 1 : -1);
    // y := y +- op(A)*x for a block of A and two parts of x.
    const auto multiply_block = [&](int m, int n, const T* a, int from, int to) {
        if constexpr (action == Action::multiply)
            if (is_far<T, Passes::oneHalf>(t.n, t.n)) // which a block alone is not
                return gemv_by_blocks<T>(op, m, n, one, {a, lda},
                                         {transposed ? m : n, address_of(x, from, transposed ? m : n), inc},
                                         {transposed ? n : m, address_of(x, to, transposed ? n : m), inc}, true);
        const auto& gemv = action == Action::multiply ? TriangularFamily<T>::serial_gemv : TriangularFamily<T>::gemv;
        gemv(&trans, &m, &n, &sign, a, &lda, address_of(x, from, transposed ? m : n), &inc, &one,
             address_of(x, to, transposed ? n : m), &inc);
    };
    const auto all_zero = [&](int j, int count) {
        while (count > 0 && x[j + count - 1] == scalar<T>(0))
            --count;
        return count == 0;
    };
    const auto beside = [&](int j, int count) {
        const int first = t.upper() ? 0 : j + count, rows = t.upper() ? j : t.n - first;
        if (rows > 0 && (transposed || !all_zero(j, count)))
            multiply_block(rows, count, &t.a(first, j), transposed ? first : j, transposed ? j : first);
    };
    const bool ascending = ascends(action, is_upper(t.uplo, transposed)),
               besideFirst = beside_first(action, transposed);
    for (int done = 0, count; done < t.n; done += count) {
        count = smaller(block, t.n - done);
        const int j = ascending ? done : t.n - done - count;
        if (besideFirst)
            beside(j, count);
        const Triangle<T> leaf{t.a.block(j, j), count, count - 1, t.uplo, t.diag};
        alignas(64) T buffer[block];
        T* const xj = gathered(x, j, count, buffer);
        apply_triangle<action>(op, leaf, xj);
        scatter(x, j, count, xj);
        if (!besideFirst)
            beside(j, count);
    }
}

template <class T>
void trmv(Uplo uplo, Op op, Diag diag, int n, Matrix<const T> a, T* x, int incx) {
    if (n > 0)
        triangular<Action::multiply>(op, dense_triangle(uplo, diag, n, a), x, incx);
}
template <class T>
void trsv(Uplo uplo, Op op, Diag diag, int n, Matrix<const T> a, T* x, int incx) {
    if (n > 0)
        triangular<Action::solve>(op, dense_triangle(uplo, diag, n, a), x, incx);
}

// each(first, count) for the runs of x between zeros: so many zeros part two runs.
constexpr int zerosBetweenRuns = 32;
template <class T, class Each>
void each_run(const T* x, int n, const Each& each) {
    const T zero = scalar<T>(0);
    for (int first = 0; first < n;) {
        if (x[first] == zero) {
            ++first;
            continue;
        }
        int end = first + 1; // behind the last that is not 0
        for (int i = end; i < n && i - end < zerosBetweenRuns; ++i)
            if (x[i] != zero)
                end = i + 1;
        each(first, end - first);
        first = end;
    }
}

// y := the rows of op(A)*x that a band makes: `width` of them, from x of `length` elements. `a` is the band's first
// element in storage; its diagonal block comes first if op(A) is upper triangular, last if it is lower.
template <class T>
void trmv_band(Uplo uplo, Op op, Diag diag, int width, int length, Matrix<const T> a, const T* x, T* y, int incy) {
    if (width <= 0)
        return;
    const bool transposed = transposes(op), diagonalFirst = is_upper(uplo, transposed);
    const int rest = length - width, diagonal = diagonalFirst ? 0 : rest, beside = diagonalFirst ? width : 0;
    const auto start = [&](int across) { return transposed ? a.block(across, 0) : a.block(0, across); };
    const StridedVector<T> ys(width, y, incy);
    for (int i = 0; i < width; ++i)
        ys[i] = x[diagonal + i];
    trmv(uplo, op, diag, width, start(diagonal), y, incy);
    const auto add_product = [&](int first, int count) {
        const T one = scalar<T>(1);
        const int unit = 1, lda = static_cast<int>(a.ld);
        const char trans = letter(op);
        TriangularFamily<T>::serial_gemv(&trans, transposed ? &count : &width, transposed ? &width : &count, &one,
                                         start(first).data, &lda, x + first, &unit, &one, y, &incy);
    };
    if (transposed)
        add_product(beside, rest);
    else
        each_run(x + beside, rest, [&](int first, int count) { add_product(beside + first, count); });
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
