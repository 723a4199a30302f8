// C := alpha*A*B + beta*C (side L) and C := alpha*B*A + beta*C (side R) for a symmetric or Hermitian A of which one
// triangle is stored.
//
// A is cut into blocks along its diagonal and rectangles beside them. What a rectangle adds is a GEMM with it or with
// its transpose, whichever of the two places is stored. A diagonal block is expanded into a full square in work memory
// first. Of a Hermitian diagonal the imaginary parts are not read.
#pragma once

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/kernel/common/level3/own_kernels.hpp"
#include "blas/kernel/common/level3/syrk.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/kernel/pack.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"
#include "service/work_pool.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

struct SymmRow {
    int leftBlock, rightBlock; // side of the square
    int walkedUpTo;            // order of A up to which its blocks are taken one by one; larger ones are halved
    int columnsAtOnce;         // of B and C with A to the left
};
constexpr int allColumns = 0x7FFFFFFF;

// Wider vectors want few and large products: up to a tenth more.
constexpr SymmRow symmRow =
    Pack<float>::count > 4
        ? SymmRow{.leftBlock = 256, .rightBlock = 256, .walkedUpTo = 256, .columnsAtOnce = allColumns}
        : SymmRow{.leftBlock = 256, .rightBlock = 192, .walkedUpTo = 512, .columnsAtOnce = 512};

// The full matrix of a triangle of order n, by small squares.
template <Symmetry symmetry, bool upper, class T>
void expand_squares(int n, Matrix<const T> a, Matrix<T> out) {
    constexpr bool conjugated = symmetry == Symmetry::hermitian;
    using Square = SmallSquare<T>;
    const int whole = n / Square::side * Square::side;
    for (int j = 0; j < whole; j += Square::side) {
        Square::template expand<conjugated, upper>(&a(j, j), a.ld, &out(j, j), out.ld);
        for (int i = upper ? 0 : j + Square::side; i < (upper ? j : whole); i += Square::side) {
            const auto square = Square::load(&a(i, j), a.ld);
            square.store(&out(i, j), out.ld);
            square.template transposed<conjugated>().store(&out(j, i), out.ld);
        }
    }
    for (int k = whole; k < n; ++k) {
        for (int i = 0; i <= k; ++i) {
            const int row = upper ? i : k, column = upper ? k : i;
            out(row, column) = a(row, column);
            out(column, row) = conj_if<conjugated>(a(row, column));
        }
        if constexpr (conjugated)
            make_real(out(k, k));
    }
}
template <Symmetry symmetry, class T>
void expand_squares(Uplo uplo, int n, Matrix<const T> a, Matrix<T> out) {
    uplo == Uplo::upper ? expand_squares<symmetry, true, T>(n, a, out) : expand_squares<symmetry, false, T>(n, a, out);
}

// The same, a few columns at a time: their part of the triangle as it is, and mirrored. What the mirror writes at once
// is no more than the first-level cache holds.
template <Symmetry symmetry, class T>
void expand(Uplo uplo, int n, Matrix<const T> a, Matrix<T> out) {
    constexpr int band = 16;
    for (int j = 0; j < n; j += band) {
        const int columns = smaller(band, n - j), next = j + columns;
        expand_squares<symmetry, T>(uplo, columns, a.block(j, j), out.block(j, j));
        const int from = uplo == Uplo::upper ? 0 : next, to = uplo == Uplo::upper ? j : n;
        for (int k = j; k < next; ++k)
            copy_run(to - from, &a(from, k), &out(from, k));
        for (int i = from; i < to; i += band)
            transpose_rectangle<symmetry == Symmetry::hermitian, T>(smaller(band, to - i), columns, a.block(i, j),
                                                                    out.block(j, i));
    }
}

template <Symmetry symmetry, class T>
struct SymmetricProduct {
    Side side;
    Uplo uplo;
    int length; // columns of B to the right of A, or rows to the left of it
    T alpha;
    Matrix<const T> a, b;
    Matrix<T> c;
    Matrix<T> square;
    int block; // its side
    T beta = scalar<T>(1);

    // C := beta*C + alpha*X*B or beta*C + alpha*B*X, where X is op(x), `rows` x `columns` elements of A from (i, j) on.
    void add(int i, int rows, int j, int columns, Op op, Matrix<const T> x) const {
        if (side == Side::left)
            gemm(op, Op::none, rows, length, columns, alpha, x, b.block(j, 0), beta, c.block(i, 0));
        else
            gemm(Op::none, op, length, columns, rows, alpha, b.block(0, i), x, beta, c.block(0, j));
    }
    // What A holds beside its diagonal: what it adds to the rows or columns of C from p on.
    void add_rectangle(int p, int width, int from, int count) const {
        if (count == 0)
            return;
        const bool left = side == Side::left;
        const int i = left ? p : from, j = left ? from : p;
        const int rows = left ? width : count, columns = left ? count : width;
        if ((i < j) == (uplo == Uplo::upper))
            add(i, rows, j, columns, Op::none, a.block(i, j));
        else
            add(i, rows, j, columns, mirror(symmetry), a.block(j, i));
    }
    void add_diagonal_block(int p, int width) const {
        expand<symmetry, T>(uplo, width, a.block(p, p), square);
        add(p, width, p, width, Op::none, square);
    }

    // The part of A from (first, first) on, of order n.
    void add_part(int first, int n) const {
        const int end = first + n;
        if (n > symmRow.walkedUpTo) {
            const int unit = symmRow.walkedUpTo;
            const int half = (n / 2 + unit - 1) / unit * unit, middle = first + half;
            add_part(first, half);
            add_rectangle(first, half, middle, n - half);
            add_rectangle(middle, n - half, first, half);
            add_part(middle, n - half);
            return;
        }
        for (int p = first; p < end; p += block) {
            const int width = smaller(block, end - p);
            add_rectangle(p, width, first, p - first);
            add_diagonal_block(p, width);
            add_rectangle(p, width, p + width, end - p - width);
        }
    }
};

template <Symmetry symmetry, class T>
void add_symmetric_product(SymmetricProduct<symmetry, T> product, int order) {
    if (product.side == Side::right)
        return product.add_part(0, order);
    SymmetricProduct<symmetry, T> part = product;
    for (int j = 0; j < product.length; j += part.length) {
        part.length = smaller(symmRow.columnsAtOnce, product.length - j);
        part.b = product.b.block(0, j);
        part.c = product.c.block(0, j);
        part.add_part(0, order);
    }
}

// The side of a square on the stack.
constexpr int smallSquare = 32;

// Without work memory.
template <Symmetry symmetry, class T>
[[gnu::noinline]] void add_by_small_squares(SymmetricProduct<symmetry, T> product, int order) {
    alignas(64) T buffer[smallSquare * smallSquare];
    product.square = {buffer, smallSquare};
    product.block = smallSquare;
    add_symmetric_product(product, order);
}

// All of it for an A of one such square.
template <Symmetry symmetry, class T>
[[gnu::noinline]] void multiply_small(Side side, Uplo uplo, int m, int n, T alpha, Matrix<const T> a, Matrix<const T> b,
                                      T beta, Matrix<T> c) {
    alignas(64) T buffer[smallSquare * smallSquare];
    const Matrix<T> square{buffer, smallSquare};
    const bool left = side == Side::left;
    expand_squares<symmetry, T>(uplo, left ? m : n, a, square);
    gemm(Op::none, Op::none, m, n, left ? m : n, alpha, left ? square : b, left ? b : square, beta, c);
}

template <Symmetry symmetry, class T>
void symm(Side side, Uplo uplo, int m, int n, T alpha, Matrix<const T> a, Matrix<const T> b, T beta, Matrix<T> c) {
    if (m <= 0 || n <= 0)
        return;
    const bool left = side == Side::left;
    const int order = left ? m : n, block = smaller(order, left ? symmRow.leftBlock : symmRow.rightBlock);
    QRV_ASSERT(a.ld >= order && b.ld >= m && c.ld >= m);
    if (order <= smallSquare && alpha != scalar<T>(0))
        return multiply_small<symmetry, T>(side, uplo, m, n, alpha, a, b, beta, c);
    SymmetricProduct<symmetry, T> product{side, uplo, left ? n : m, alpha, a, b, c, {}, block};
    const bool atOnce = order <= block && alpha != scalar<T>(0);
    if (atOnce)
        product.beta = beta; // as each element of C is in one product
    else
        scale(m, n, beta, c);
    if (alpha == scalar<T>(0))
        return;
    void* const memory = qrv_serv_allocate(sizeof(T) * static_cast<std::size_t>(block * block), 64);
    if (!memory) {
        if (atOnce)
            scale(m, n, beta, c);
        product.beta = scalar<T>(1);
        return add_by_small_squares(product, order);
    }
    product.square = {static_cast<T*>(memory), block};
    add_symmetric_product(product, order);
    qrv_serv_deallocate(memory);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
