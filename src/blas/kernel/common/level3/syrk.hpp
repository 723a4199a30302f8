// Updates of one triangle of a symmetric or Hermitian matrix by one product or by two:
//
//   rank k    C := alpha*X*X' + beta*C
//   rank 2k   C := alpha*X*Y' + alpha*Y*X' + beta*C      Hermitian: the second alpha conjugated
//
// X and Y are A and B, or A' and B'; ' transposes, for a Hermitian C it conjugates too.
//
// The triangle is cut into blocks along its diagonal and rectangles beside them, the blocks into halves in turn. A
// rectangle is a GEMM. For a leaf on the diagonal GEMM computes the full square into a tile, of which the triangle is
// then added: twice its work, but leaves are few. Of a rank 2k update the square of the first product and its mirror
// image, added, are the whole leaf. Where GEMM packs, triangles have another way: one walk over copies in panels, see
// gemm_core.hpp and, of sixteen lanes, gemm_panels.hpp. The imaginary parts on a Hermitian diagonal are not
// read and become 0.
#pragma once

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/kernel/common/level3/own_kernels.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/kernel/pack.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"
#include "service/work_pool.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

enum class Symmetry { symmetric, hermitian };

// The ' of a matrix of this kind.
constexpr Op mirror(Symmetry symmetry) {
    return symmetry == Symmetry::hermitian ? Op::adjoint : Op::transpose;
}

constexpr int unlimited = 0x7FFFFFFF;
constexpr int copiedDepth = 256;

// Triangles of this order at least, with so many steps at least, go by panels.
struct ByPanels {
    int order = unlimited, steps = 16;
};

// Of X = A' triangles of these orders, with so many steps at least, are computed from copies of X and Y as if they were
// stored plainly: only where products take far less time then, as a copy costs the more the smaller the order is.
struct FromCopies {
    int least = unlimited, most = 0, steps = 16;
};

// Blocks along the diagonal, and in which order.
struct RankUpdateRow {
    int plain, transposed;     // columns of a block, for X = A and for X = A': one after the other
    int leaf;                  // a block is halved down to this size
    int order;                 // triangles up to this size take
    int depth;                 // so many steps of the products at once, so that X and Y stay in the outer cache
    ByPanels panels[2][2];     // of one product and of two, for X = A and for X = A'
    FromCopies copies[2] = {}; // of one product and of two
};

template <class T, int lanes>
constexpr RankUpdateRow rankUpdateRow{
    .plain = 64, .transposed = 128, .leaf = 32, .order = 0, .depth = unlimited, .panels = {}};
// Half of a leaf's square is not needed: small ones make 64 columns, block and all, up to 1.6 times as fast.
template <>
constexpr RankUpdateRow rankUpdateRow<float, 4>{
    .plain = 64, .transposed = 128, .leaf = 8, .order = 0, .depth = unlimited, .panels = {{{32}, {24}}, {{512}, {}}}};
template <>
constexpr RankUpdateRow rankUpdateRow<SingleComplex, 4>{
    .plain = 64, .transposed = 128, .leaf = 4, .order = 0, .depth = unlimited, .panels = {{{48}, {18}}, {}}};
// Wider vectors multiply without packing as long as operands are in the caches, and thin rectangles cost them more:
// halves of the whole triangle gain a third to a half over one block after the other, at any size.
template <>
constexpr RankUpdateRow rankUpdateRow<float, 8>{.plain = unlimited,
                                                .transposed = unlimited,
                                                .leaf = 16,
                                                .order = 512,
                                                .depth = 128,
                                                .panels = {{{256, 32}, {72, 64}}, {{512, 64}, {256, 64}}},
                                                .copies = {{44, 71}, {}}};
template <>
constexpr RankUpdateRow rankUpdateRow<SingleComplex, 8>{.plain = unlimited,
                                                        .transposed = unlimited,
                                                        .leaf = 8,
                                                        .order = 512,
                                                        .depth = 128,
                                                        .panels = {{{128, 32}, {80, 32}}, {{512, 64}, {288, 64}}}};
template <>
constexpr RankUpdateRow rankUpdateRow<float, 16>{.plain = unlimited,
                                                 .transposed = unlimited,
                                                 .leaf = 16,
                                                 .order = 512,
                                                 .depth = 256,
                                                 .panels = {{{832, 512}, {64}}, {{832, 512}, {64}}},
                                                 .copies = {{}, {64, 800}}};
template <>
constexpr RankUpdateRow rankUpdateRow<SingleComplex, 16>{.plain = unlimited,
                                                         .transposed = unlimited,
                                                         .leaf = 16,
                                                         .order = 512,
                                                         .depth = 256,
                                                         .panels = {{{256, 64}, {96}}, {{1024, 64}, {96}}},
                                                         .copies = {{}, {90, 448}}};

// So few columns beyond a leaf are not worth products of their own.
constexpr int leafExcess = 2;
// The first part of n, which is more than a leaf: about half of it, in whole leaves.
constexpr int half_in_leaves(int n, int leaf) {
    return (n / 2 + leaf - 1) / leaf * leaf;
}

// change(i, All()) for whole packs of n elements, change(i, left) for what is left of them.
template <class T, class Change>
void by_packs(int n, const Change& change) {
    int i = 0;
    for (; n - i >= Pack<T>::count; i += Pack<T>::count)
        change(i, All());
    if (i < n)
        change(i, n - i);
}

// y := x + y, n elements
template <class T>
void add_run(int n, const T* x, T* y) {
    using P = Pack<T>;
    by_packs<T>(n,
                [=](int i, auto count) { P{P::load(x + i, count).v + P::load(y + i, count).v}.store(y + i, count); });
}
// y := x
template <class T>
void copy_run(int n, const T* x, T* y) {
    by_packs<T>(n, [=](int i, auto count) { Pack<T>::load(x + i, count).store(y + i, count); });
}

// x := beta*x, n elements; beta = 0 does not read them.
template <class T>
void scale_run(int n, T beta, T* x) {
    scale(n, 1, beta, Matrix<T>{x, n});
}
inline void scale_run(int n, float beta, SingleComplex* x) {
    scale_run(2 * n, beta, reinterpret_cast<float*>(x));
}

// out := a', m x n elements of a.
template <bool conjugated, class T>
void transpose_rectangle(int m, int n, Matrix<const T> a, Matrix<T> out) {
    constexpr int side = SmallSquare<T>::side;
    const int squaresUpTo = n / side * side;
    for (int j = 0; j < squaresUpTo; j += side) {
        int i = 0;
        for (; m - i >= side; i += side)
            SmallSquare<T>::template transpose<conjugated>(&a(i, j), a.ld, &out(j, i), out.ld);
        for (; i < m; ++i)
            for (int k = j; k < j + side; ++k)
                out(k, i) = conj_if<conjugated>(a(i, k));
    }
    for (int j = squaresUpTo; j < n; ++j)
        for (int i = 0; i < m; ++i)
            out(j, i) = conj_if<conjugated>(a(i, j));
}

// Rows of column j that a triangle of n columns has.
constexpr Range triangle_column(Uplo uplo, int n, int j) {
    return uplo == Uplo::upper ? Range{0, j + 1} : Range{j, n - j};
}

template <Symmetry symmetry, class T, class S>
void scale_triangle(Uplo uplo, int n, S beta, Matrix<T> c) {
    for (int j = 0; j < n; ++j) {
        const Range rows = triangle_column(uplo, n, j);
        scale_run(rows.count, beta, &c(rows.first, j));
        if constexpr (symmetry == Symmetry::hermitian)
            make_real(c(j, j));
    }
}

// C := C + tile in the triangle
template <Symmetry symmetry, class T>
void add_triangle(Uplo uplo, int n, Matrix<const T> tile, Matrix<T> c) {
    for (int j = 0; j < n; ++j) {
        const Range rows = triangle_column(uplo, n, j);
        add_run(rows.count, &tile(rows.first, j), &c(rows.first, j));
        if constexpr (symmetry == Symmetry::hermitian)
            make_real(c(j, j));
    }
}

// alpha*X*Y'
template <class T>
struct RankTerm {
    T alpha;
    Matrix<const T> x, y; // as stored
};

// What is added to the triangle: one product of depth k, or two.
template <Symmetry symmetry, class T, int terms>
struct RankUpdate {
    static constexpr RankUpdateRow row = rankUpdateRow<T, Pack<float>::count>;
    // Of two products the second is the first one mirrored: a square of one is a triangle of both, and nothing of it is
    // in vain. Below `mirrorsFrom` two products take less time than a mirror image.
    static constexpr int leaf = terms == 1 ? row.leaf : isComplex<T> ? 32 : 48;
    static constexpr int mirrorsFrom = isComplex<T> || Pack<float>::count <= 4 ? 1 : 16;

    Uplo uplo;
    bool transposed; // X = A'
    int k;
    RankTerm<T> term[terms];
    Matrix<T> c;

    // Rows of X or of Y from i on.
    Matrix<const T> rows_from(int i, Matrix<const T> x) const { return transposed ? x.block(0, i) : x.block(i, 0); }

    // What the products take from steps l to l + count - 1.
    RankUpdate steps(int l, int count) const {
        RankUpdate part = *this;
        part.k = count;
        for (RankTerm<T>& t : part.term) {
            t.x = transposed ? t.x.block(l, 0) : t.x.block(0, l);
            t.y = transposed ? t.y.block(l, 0) : t.y.block(0, l);
        }
        return part;
    }

    // out := beta*out + rows i to i + m - 1 and columns j to j + n - 1 of a product
    void multiply(const RankTerm<T>& t, int i, int m, int j, int n, T beta, Matrix<T> out) const {
        constexpr Op other = mirror(symmetry);
        gemm(transposed ? other : Op::none, transposed ? Op::none : other, m, n, k, t.alpha, rows_from(i, t.x),
             rows_from(j, t.y), beta, out);
    }
    void add_leaf(int first, int n) const {
        constexpr int tileSide = leaf + leafExcess;
        alignas(64) T buffers[terms][tileSide * tileSide];
        const Matrix<T> tile{buffers[0], tileSide};
        const Matrix<T> corner = c.block(first, first);
        multiply(term[0], first, n, first, n, scalar<T>(0), tile);
        const bool mirrors = terms == 2 && n >= mirrorsFrom;
        for (int t = 1; t < terms && !mirrors; ++t)
            multiply(term[t], first, n, first, n, scalar<T>(1), tile);
        const Matrix<T> mirrored{buffers[terms - 1], tileSide};
        if (mirrors)
            transpose_rectangle<symmetry == Symmetry::hermitian, T>(n, n, tile, mirrored);
        add_triangle<symmetry, T>(uplo, n, tile, corner);
        if (mirrors) // last: its stores are short, and wide loads wait for them
            add_triangle<symmetry, T>(uplo, n, mirrored, corner);
    }
    void add_rectangle(int i, int m, int j, int n) const {
        for (const RankTerm<T>& t : term)
            multiply(t, i, m, j, n, scalar<T>(1), c.block(i, j));
    }

    // What lies beside `rows` rows or columns from `first` on, up to row or column `end`.
    void add_beside(int first, int rows, int end) const {
        const int next = first + rows, rest = end - next;
        if (uplo == Uplo::upper)
            add_rectangle(first, rows, next, rest);
        else
            add_rectangle(next, rest, first, rows);
    }

    // The triangle of order n that begins at (first, first): by halves, or block after block.
    void add_by_halves(int first, int n) const {
        if (n <= row.order && k > row.depth)
            return add_by_steps(first, n);
        if (n <= leaf + leafExcess)
            return add_leaf(first, n);
        const int half = half_in_leaves(n, leaf);
        add_by_halves(first, half);
        add_beside(first, half, first + n);
        add_by_halves(first + half, n - half);
    }
    bool goes_by_copies(int n) const {
        const FromCopies& from = row.copies[terms - 1];
        return transposed && n >= from.least && n <= from.most && k >= from.steps;
    }
    bool goes_by_panels(int n) const {
        const ByPanels& from = row.panels[terms - 1][transposed];
        return n >= from.order && k >= from.steps;
    }
    void add_by_steps(int first, int n) const {
        for (int l = 0, count; l < k; l += count) {
            count = smaller(row.depth, k - l);
            steps(l, count).add_by_halves(first, n);
        }
    }
    void add_by_blocks(int n) const {
        const int block = transposed ? row.transposed : row.plain;
        int first = 0;
        for (; n - first > block; first += block) {
            add_by_halves(first, block);
            add_beside(first, block, n);
        }
        add_by_halves(first, n - first);
    }
};

// beta is real or an element.
template <Symmetry symmetry, class T, int terms, class S>
void update_by_halves(const RankUpdate<symmetry, T, terms>& update, int n, S beta) {
    if (beta != scalar<S>(1))
        scale_triangle<symmetry>(update.uplo, n, beta, update.c);
    update.add_by_blocks(n);
}

// From copies of `copiedDepth` steps at once; false if memory is refused: nothing has been done then.
template <Symmetry symmetry, class T, int terms, class S>
bool update_by_copies(const RankUpdate<symmetry, T, terms>& update, int n, S beta) {
    constexpr bool hermitian = symmetry == Symmetry::hermitian;
    const int depth = smaller(update.k, copiedDepth);
    const std::ptrdiff_t ld = n + (n % 32 == 0 ? 16 : 0); // columns that do not displace each other
    const std::ptrdiff_t length = ld * depth;
    T* const memory = static_cast<T*>(qrv_serv_allocate(terms * static_cast<std::size_t>(length) * sizeof(T), 64));
    if (!memory)
        return false;
    if (beta != scalar<S>(1))
        scale_triangle<symmetry>(update.uplo, n, beta, update.c);
    for (int l = 0, count; l < update.k; l += count) {
        count = smaller(depth, update.k - l);
        auto part = update.steps(l, count);
        part.transposed = false;
        Matrix<T> copy[terms];
        for (int t = 0; t < terms; ++t) {
            copy[t] = {memory + t * length, ld};
            transpose_rectangle<hermitian, T>(count, n, part.term[t].x, copy[t]);
        }
        for (int t = 0; t < terms; ++t) {
            part.term[t].x = copy[t];
            part.term[t].y = copy[terms - 1 - t];
        }
        part.add_by_blocks(n);
    }
    qrv_serv_deallocate(memory);
    return true;
}

// One walk for each product; by halves if memory is refused.
template <Symmetry symmetry, class T, int terms, class S>
void update_by_panels(const RankUpdate<symmetry, T, terms>& update, int n, S beta) {
    constexpr bool hermitian = symmetry == Symmetry::hermitian;
    constexpr Op other = mirror(symmetry);
    const bool transposed = update.transposed;
    if (hermitian && beta != scalar<S>(0)) { // a real beta, which the walk would take for a complex one
        scale_triangle<symmetry>(update.uplo, n, beta, update.c);
        beta = scalar<S>(1);
    }
    for (const RankTerm<T>& t : update.term) {
        T factor;
        if constexpr (hermitian)
            factor = scalar<T>(beta);
        else
            factor = beta;
        if (!gemm_triangle(update.uplo, transposed ? other : Op::none, transposed ? Op::none : other, n, update.k,
                           t.alpha, t.x, t.y, factor, update.c))
            update_by_halves(RankUpdate<symmetry, T, 1>{update.uplo, transposed, update.k, {t}, update.c}, n, beta);
        beta = scalar<S>(1);
    }
    for (int j = 0; hermitian && j < n; ++j)
        make_real(update.c(j, j));
}

template <Symmetry symmetry, class T, int terms, class S>
void update_triangle(const RankUpdate<symmetry, T, terms>& update, int n, S beta) {
    if (n <= 0)
        return;
    if (update.k <= 0 || update.term[0].alpha == scalar<T>(0)) {
        if (beta != scalar<S>(1))
            scale_triangle<symmetry>(update.uplo, n, beta, update.c);
        return;
    }
    if (update.goes_by_copies(n) && update_by_copies(update, n, beta))
        return;
    if (update.goes_by_panels(n))
        return update_by_panels(update, n, beta);
    update_by_halves(update, n, beta);
}

// S is the type of a scalar: real for a Hermitian C.
template <Symmetry symmetry, class T, class S>
void syrk(Uplo uplo, Op op, int n, int k, S alpha, Matrix<const T> a, S beta, Matrix<T> c) {
    QRV_ASSERT(c.ld >= n && a.ld >= (transposes(op) ? k : n));
    T factor;
    if constexpr (symmetry == Symmetry::hermitian)
        factor = scalar<T>(alpha);
    else
        factor = alpha;
    const RankUpdate<symmetry, T, 1> update{uplo, transposes(op), k, {{factor, a, a}}, c};
    update_triangle(update, n, beta);
}

template <Symmetry symmetry, class T, class S>
void syr2k(Uplo uplo, Op op, int n, int k, T alpha, Matrix<const T> a, Matrix<const T> b, S beta, Matrix<T> c) {
    QRV_ASSERT(c.ld >= n && smaller(static_cast<int>(a.ld), static_cast<int>(b.ld)) >= (transposes(op) ? k : n));
    constexpr bool conjugated = symmetry == Symmetry::hermitian;
    const RankUpdate<symmetry, T, 2> update{
        uplo, transposes(op), k, {{alpha, a, b}, {conj_if<conjugated>(alpha), b, a}}, c};
    update_triangle(update, n, beta);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
