// C := alpha*op(A)*op(B) + beta*C without packing, for operands that the caches hold: nothing is copied but a
// transposed A.
//
//   tile     `vectors` vectors of rows x `columns` columns, one vector of sums for each pair of the two
//   step     the rows of A from memory, any alignment, times one broadcast element of B for each column
//   k        in blocks of depthBlock; inside a block every element of C sums in ascending order, in one chain
//   reads    nothing outside the operands, C not at all if beta is 0; prefetches may name addresses past B
//   C        any ldc, any alignment; only m x n elements are written
#pragma once

#include "blas/kernel/common/gemm_wide.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/matrix.hpp"
#include "service/work_pool.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// The right operand: element (l, j) at data[l*step + j*column].
struct DirectB {
    const float* data;
    std::ptrdiff_t step, column;

    DirectB block(int l, int j) const { return {data + l * step + j * column, step, column}; }
};

template <class Vector_, int Vectors, int Columns>
struct DirectShape {
    using Vector = Vector_;
    static constexpr int vectors = Vectors;
    static constexpr int columns = Columns;
    static constexpr int rows = Vectors * Vector::lanes;
};

// The sums of one tile. Edge: its last vector has fewer rows than lanes.
template <class Vector, int Vectors, int Columns, bool Edge>
QRV_INLINE void direct_sums(int k, const float* a, std::ptrdiff_t lda, const DirectB& b, int lastRows,
                            Vector (&sum)[Columns][Vectors]) {
    // Three columns share a pointer: the address of each is then one instruction's operand for any column distance.
    constexpr int group = 3, groups = (Columns + group - 1) / group;
    constexpr int line = 16; // steps that a line of B holds where its columns are contiguous
    const float* pointer[groups];
    QRV_UNROLL
    for (int g = 0; g < groups; ++g)
        pointer[g] = b.data + g * group * b.column;
    for (int l = 0; l < k;) {
        // The columns that come next. B stored by rows has them in the lines at hand.
        if (b.step == 1 && k > line)
            QRV_UNROLL
        for (int j = 0; j < Columns; ++j)
            __builtin_prefetch(pointer[j / group] + (Columns + j % group) * b.column);
        for (const int end = smaller(l + line, k); l < end; ++l) {
            Vector x[Vectors];
            QRV_UNROLL
            for (int v = 0; v < Vectors; ++v)
                x[v] = Edge && v == Vectors - 1 ? load_rows(a + v * Vector::lanes, lastRows)
                                                : Vector::load(a + v * Vector::lanes);
            QRV_UNROLL
            for (int j = 0; j < Columns; ++j) {
                const Vector y = Vector::splat(pointer[j / group][j % group * b.column]);
                QRV_UNROLL
                for (int v = 0; v < Vectors; ++v)
                    sum[j][v] = multiply_add(x[v], y, sum[j][v]);
            }
            a += lda;
            QRV_UNROLL
            for (int g = 0; g < groups; ++g)
                pointer[g] += b.step;
        }
    }
}

template <class Vector, int Vectors, int Columns, bool Edge>
void direct_tile(int k, const float* a, std::ptrdiff_t lda, const DirectB& b, float alpha, TileOfC c) {
    const int lastRows = Edge ? c.rows - (Vectors - 1) * Vector::lanes : Vector::lanes;
    Vector sum[Columns][Vectors];
    QRV_UNROLL
    for (int j = 0; j < Columns; ++j) {
        __builtin_prefetch(c.data + j * c.ld, 1);
        __builtin_prefetch(c.data + j * c.ld + c.rows - 1, 1);
        QRV_UNROLL
        for (int v = 0; v < Vectors; ++v)
            sum[j][v] = Vector::zero();
    }
    direct_sums<Vector, Vectors, Columns, Edge>(k, a, lda, b, lastRows, sum);
    const Vector factor = Vector::splat(alpha), beta = Vector::splat(c.beta);
    const bool readsC = c.beta != 0;
    QRV_UNROLL
    for (int j = 0; j < Columns; ++j) {
        QRV_UNROLL
        for (int v = 0; v < Vectors; ++v) {
            float* out = c.data + j * c.ld + v * Vector::lanes;
            const int rows = v == Vectors - 1 ? lastRows : Vector::lanes;
            const Vector scaled = factor * sum[j][v];
            if (readsC)
                store_rows(out, beta * load_rows(out, rows) + scaled, rows);
            else
                store_rows(out, scaled, rows);
        }
    }
}

// The rows of A and of C that meet one group of columns of B.
struct DirectRows {
    int m, k;
    const float* a;
    std::ptrdiff_t lda;
    float alpha;
    TileOfC c; // all m rows
};

template <class Vector, int Vectors, int Columns>
void direct_columns(const DirectRows& p, const DirectB& b) {
    constexpr int rows = Vectors * Vector::lanes;
    const auto tile = [&](int i, int count) { return TileOfC{p.c.data + i, p.c.ld, Columns, count, p.c.beta}; };
    int i = 0;
    for (; i + rows <= p.m; i += rows)
        direct_tile<Vector, Vectors, Columns, false>(p.k, p.a + i, p.lda, b, p.alpha, tile(i, rows));
    const int left = p.m - i;
    if (left > Vector::lanes) {
        if constexpr (Vectors == 2)
            direct_tile<Vector, 2, Columns, true>(p.k, p.a + i, p.lda, b, p.alpha, tile(i, left));
    } else if (left > 0) {
        direct_tile<Vector, 1, Columns, true>(p.k, p.a + i, p.lda, b, p.alpha, tile(i, left));
    }
}

// A tile of just the number of columns.
template <class Vector, int Vectors, int Columns>
void direct_columns_of(int columns, const DirectRows& p, const DirectB& b) {
    if (columns == Columns)
        direct_columns<Vector, Vectors, Columns>(p, b);
    else if constexpr (Columns > 1)
        direct_columns_of<Vector, Vectors, Columns - 1>(columns, p, b);
}

struct DirectProduct {
    int m, n, k;
    float alpha;
    OpView<const float> a;
    DirectB b;
    float beta;
    Matrix<float> c;
};

// Rows and steps of A that a pass over the columns of B keeps in the cache behind the innermost one.
constexpr int directRows = 512;
constexpr int directDepth = 256;
constexpr int directAlignment = 64;
constexpr int directOnStack = 2048; // floats of work memory that are not worth an allocation
// Bytes between columns of which few lines fit into the innermost cache side by side.
constexpr int wayBytes = 4096;

// Distance of the columns of op(A) in work memory, for m rows.
template <class Vector>
int copy_ld(int m) {
    const int ld = round_up(smaller(m, directRows), Vector::lanes);
    return ld * static_cast<int>(sizeof(float)) % (wayBytes / 2) == 0 ? ld + Vector::lanes : ld;
}

// A transposed block as m x k, its columns ld apart. Vectors may be filled up with copies of the last row.
template <class Vector>
void copy_transposed(const float* a, std::ptrdiff_t lda, int m, int k, float* out, std::ptrdiff_t ld) {
    for (int i = 0; i < m; i += Vector::lanes) {
        const float* row[Vector::lanes];
        for (int r = 0; r < Vector::lanes; ++r)
            row[r] = a + smaller(i + r, m - 1) * lda;
        for (int l = 0; l < k; l += kStep)
            transpose_to_columns(row, l, smaller(kStep, k - l), out + i + l * ld, ld);
    }
}

// Groups of columns differ by one at most: a narrow tile left over would wait for its few sums.
template <class Shape>
void multiply_direct(const DirectProduct& p, float* work) {
    using Vector = typename Shape::Vector;
    const int groups = (p.n + Shape::columns - 1) / Shape::columns;
    const int narrowest = groups == 1 ? p.n : p.n / groups, wide = p.n - narrowest * groups;
    const int workLd = copy_ld<Vector>(p.m);
    for (int l = 0; l < p.k; l += directDepth)
        for (int i = 0; i < p.m; i += directRows) {
            const int m = smaller(directRows, p.m - i), k = smaller(directDepth, p.k - l);
            DirectRows rows{m, k, p.a.at(i, l), p.a.columnStride, p.alpha, {}};
            if (work) {
                copy_transposed<Vector>(rows.a, p.a.rowStride, m, k, work, workLd);
                rows.a = work;
                rows.lda = workLd;
            }
            for (int g = 0, j = 0; g < groups; ++g) {
                const int columns = g < wide ? narrowest + 1 : narrowest;
                rows.c = {&p.c(i, j), p.c.ld, columns, m, l == 0 ? p.beta : 1.0F};
                direct_columns_of<Vector, Shape::vectors, Shape::columns>(columns, rows, p.b.block(l, j));
                j += columns;
            }
        }
}

// Which products gain, measured against the packed path.
constexpr int directRowsMost = 256;    // of A in place, whatever the other sizes are
constexpr int directRowsNarrow = 96;   // the same where a tile's columns are a small part of a line
constexpr int directTiny = 32;         // rows, columns and steps up to which it always pays
constexpr int directRowsLeast = 12;    // fewer leave too many lanes idle
constexpr int directColumnsLeast = 24; // that pay for the copy of a transposed A
constexpr int directColumns = 64;      // A in place is read few enough times
constexpr int directColumnsWide = 12;  // columns of a tile that use most of a line
constexpr int directColumnsShallow = 256;
constexpr int directMiddling = 400; // rows, columns and steps
constexpr int directConflicts = 16; // lines apart by a multiple of wayBytes that still live side by side

template <class Shape>
bool gains_in_place(bool transposedA, bool transposedB, int m, int n, int k, int lda, int ldb) {
    if (m <= directTiny && n <= directTiny && k <= directTiny)
        return true;
    const auto conflicting = [k](int ld) { return k > directConflicts && ld % (wayBytes / int{sizeof(float)}) == 0; };
    if (m < directRowsLeast || (transposedB && conflicting(ldb) && m > Shape::rows))
        return false;
    const bool narrow = (transposedA || transposedB) && Shape::columns < directColumnsWide;
    const int rowsMost = narrow ? directRowsNarrow : directRowsMost;
    if (transposedA)
        return n >= directColumnsLeast && m <= rowsMost;
    if (conflicting(lda))
        return false;
    if (m <= rowsMost || n <= directColumns)
        return true;
    const bool shallow = n <= directColumnsShallow && k <= directColumnsShallow;
    const bool middling = m <= directMiddling && n <= directMiddling && k <= directMiddling && !transposedB;
    return !narrow && (shallow || middling);
}

template <class Shape>
bool direct_gemm(QRV_GEMM_PARAMETERS(float)) {
    using Vector = typename Shape::Vector;
    constexpr int noTranspose = 'N'; // its bits tell both cases of it from the other options
    const bool transposedA = (*transa & noTranspose) != noTranspose;
    const bool transposedB = (*transb & noTranspose) != noTranspose;
    if (*m <= 0 || *n <= 0 || *k <= 0 || *alpha == 0)
        return false;
    if (!gains_in_place<Shape>(transposedA, transposedB, *m, *n, *k, *lda, *ldb))
        return false;
    const DirectB opB{b, transposedB ? *ldb : 1, transposedB ? 1 : *ldb};
    const DirectProduct product{*m, *n, *k, *alpha, {a, *lda, transposedA}, opB, *beta, {c, *ldc}};
    if (!transposedA) {
        multiply_direct<Shape>(product, nullptr);
        return true;
    }
    const int floats = copy_ld<Vector>(*m) * round_up(smaller(*k, directDepth), kStep);
    if (floats <= directOnStack) {
        alignas(directAlignment) float work[directOnStack];
        multiply_direct<Shape>(product, work);
        return true;
    }
    void* work = qrv_serv_allocate(sizeof(float) * floats, directAlignment);
    if (!work)
        return false;
    multiply_direct<Shape>(product, static_cast<float*>(work));
    qrv_serv_deallocate(work);
    return true;
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
