// Triangular products in place over wide vectors from copies, B := alpha*op(A)*B or alpha*B*op(A): the walk of
// gemm_panels.hpp, block after block of the triangle's steps, in the order in which the unknowns of a block are still
// as they were when their turn comes.
//
//   beside     unknowns that are complete but for the products with this block: the tiles of GEMM
//   own        the block's own unknowns, which its products replace: tiles that know where they cross the diagonal.
//              Nothing beyond it is multiplied, so that NaN and infinities stay where they belong
//
//   left       panels hold rows of op(A), strips columns of B, which each column group of own rows then overwrites
//   right      panels hold rows of B, strips columns of op(A)
//   memory     as gemm_panels.hpp
//   reads      the triangle that is named; its diagonal unless it is taken to be 1
#pragma once

#include <cstddef>
#include <cstdint>

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/gemm_call.hpp"
#include "blas/kernel/common/action.hpp"
#include "blas/kernel/common/gemm/gemm_panels.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"
#include "service/work_pool.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// A tile across the diagonal: of p.k steps the first or the last `tip` ones meet the triangle's edge, at whose corner
// they begin. On the left row i takes the steps from i on (upper) or up to i, on the right column j those up to j
// (upper) or from j on. All rows of its vectors and all columns are stored.
template <class Vector, class T, int vectors, Side side, bool upper>
void triangle_tile(const DirectProduct<T>& p, int tip, const float* a, const float* b, float* c, std::ptrdiff_t ldc) {
    constexpr int group = 4, parts = floatsIn<T>, columns = DirectTiles<Vector, T>::columns;
    constexpr int vectorRows = Vector::lanes / parts;
    constexpr bool tipFirst = (side == Side::left) == upper;
    const std::ptrdiff_t aStep = p.aStep, bStep = p.bStep, bColumn = p.bColumn, bColumns3 = 3 * bColumn;
    Vector sums[columns][vectors][parts];
    QRV_UNROLL
    for (int j = 0; j < columns; ++j)
        QRV_UNROLL
    for (int v = 0; v < vectors; ++v)
        QRV_UNROLL
    for (int part = 0; part < parts; ++part)
        sums[j][v][part] = Vector::zero();
    const float* start[(columns + group - 1) / group];
    QRV_UNROLL
    for (int g = 0; g * group < columns; ++g)
        start[g] = b + g * group * bColumn;
    // Vectors [first, end) times columns [firstColumn, endColumn), of vector `cut` what the mask keeps.
    const auto step = [&](auto first, auto end, auto cut, typename Vector::Mask mask, auto firstColumn, auto endColumn)
        __attribute__((always_inline)) {
        Vector rows[vectors];
        QRV_UNROLL
        for (int v = 0; v < vectors; ++v)
            if (v >= first() && v < end())
                rows[v] = once_for<columns>(Vector::load_aligned(a + v * Vector::lanes));
        QRV_UNROLL
        for (int j = 0; j < columns; ++j)
            QRV_UNROLL
        for (int part = 0; part < parts; ++part) {
            if (j < firstColumn() || j >= endColumn())
                continue;
            const Vector x = Vector::splat(start[j / group][(j % group == 3 ? bColumns3 : j % group * bColumn) + part]);
            QRV_UNROLL
            for (int v = 0; v < vectors; ++v) {
                Vector& sum = sums[j][v][part];
                if (v == cut())
                    sum = multiply_add_kept(rows[v], x, sum, mask);
                else if (v >= first() && v < end())
                    sum = multiply_add(rows[v], x, sum);
            }
        }
        a += aStep;
        QRV_UNROLL
        for (int g = 0; g * group < columns; ++g)
            start[g] += bStep;
    };
    constexpr Lanes<0> none;
    constexpr Lanes<vectors> allVectors;
    constexpr Lanes<columns> allColumns;
    const auto noMask = Vector::Mask::first(0);
    const auto rest = [&]() __attribute__((always_inline)) {
        for (int left = p.k - tip; left > 0; --left)
            step(none, allVectors, allVectors, noMask, none, allColumns);
    };
    if constexpr (!tipFirst)
        rest();
    if constexpr (side == Side::left)
        repeat<vectors>([&](auto v) __attribute__((always_inline)) {
            const int steps = smaller(vectorRows, tip - v() * vectorRows);
            for (int s = 0; s < steps; ++s) {
                if constexpr (upper)
                    step(none, Lanes<v() + 1>(), v, Vector::Mask::first((s + 1) * parts), none, allColumns);
                else
                    step(v, allVectors, v, Vector::Mask::from(s * parts), none, allColumns);
            }
        });
    else
        repeat<columns>([&](auto j) __attribute__((always_inline)) {
            if (j() < tip)
                step(none, allVectors, allVectors, noMask, Lanes<(upper ? j() : 0)>(),
                     Lanes<(upper ? columns : j() + 1)>());
        });
    if constexpr (tipFirst)
        rest();
    const Factor<Vector, T> alpha(p.alpha);
    const bool scales = scales_c(p.alpha);
    QRV_UNROLL
    for (int j = 0; j < columns; ++j, c += ldc)
        QRV_UNROLL
    for (int v = 0; v < vectors; ++v) {
        const Vector total = combine(p, sums[j][v]);
        (scales ? alpha.times(total) : total).store(c + v * Vector::lanes);
    }
}

template <class T>
using TriangleTile = void(const DirectProduct<T>& p, int tip, const float* a, const float* b, float* c,
                          std::ptrdiff_t ldc);
template <class Vector, class T>
struct TriangleTileTable {
    TriangleTile<T>* tile[2][2][DirectTiles<Vector, T>::vectors]; // right or left, lower or upper

    template <int vectors = 1>
    constexpr void fill() {
        tile[0][0][vectors - 1] = triangle_tile<Vector, T, vectors, Side::right, false>;
        tile[0][1][vectors - 1] = triangle_tile<Vector, T, vectors, Side::right, true>;
        tile[1][0][vectors - 1] = triangle_tile<Vector, T, vectors, Side::left, false>;
        tile[1][1][vectors - 1] = triangle_tile<Vector, T, vectors, Side::left, true>;
        if constexpr (vectors < DirectTiles<Vector, T>::vectors)
            fill<vectors + 1>();
    }
    constexpr TriangleTileTable() : tile{} { fill(); }
};
template <class Vector, class T>
constexpr TriangleTileTable<Vector, T> triangleTiles;

template <class Vector, class T>
class TriangleByPanels {
public:
    TriangleByPanels(Side side, Uplo uplo, Op op, Diag diag, int m, int n, T alpha, Matrix<const T> a, Matrix<T> b)
        : left_(side == Side::left), upper_(is_upper(uplo, transposes(op))), unit_(diag == Diag::unit),
          order_(left_ ? m : n), a_(a), transposed_(transposes(op)),
          call_(left_ ? GemmCall<T>{op, Op::none, m, n, m, alpha, a, b, scalar<T>(1), b}
                      : GemmCall<T>{Op::none, op, m, n, n, alpha, b, a, scalar<T>(1), b}),
          blocks_(call_), p_(direct_product(call_)) {
        QRV_ASSERT(call_.is_well_formed() && order_ > 0);
        blocks_.strips = true;
    }

    // False if memory is refused: nothing has been done then.
    bool multiply() {
        void* const memory = qrv_serv_allocate(blocks_.bytes(), Blocks::lineBytes);
        if (!memory)
            return false;
        const std::uintptr_t mask = Blocks::lineBytes - 1;
        panels_ = reinterpret_cast<float*>((reinterpret_cast<std::uintptr_t>(memory) + mask) & ~mask);
        strips_ = panels_ + blocks_.panels_length();
        const bool ascends = upper_ == left_;
        for (int done = 0; done < order_; done += p_.k) {
            p_.k = smaller(blocks_.steps, order_ - done);
            const Range block{ascends ? done : order_ - done - p_.k, p_.k};
            const Range complete{ascends ? 0 : block.end(), done};
            left_ ? multiply_left(block, complete) : multiply_right(block, complete);
        }
        qrv_serv_deallocate(memory);
        return true;
    }

private:
    using Blocks = PanelBlocks<Vector, T>;
    static constexpr int element = floatsIn<T>, full = Blocks::tileFloats, tileColumns = Blocks::tileColumns;

    static const float* floats(const T* x) { return reinterpret_cast<const float*>(x); }

    // each(rows) for as many of a range as panels hold at once.
    template <class Each>
    void each_rows(Range range, bool ascends, const Each& each) const {
        for (int done = 0, count; done < range.count; done += count) {
            count = smaller(even_block(range.count, blocks_.rows, Blocks::tileRows), range.count - done);
            each(Range{ascends ? range.first + done : range.end() - done - count, count});
        }
    }
    // each(share, rows, panel) for the panels of these rows.
    template <class Each>
    void each_panel(Range rows, const Each& each) const {
        float* panel = panels_;
        for (int i = rows.first, next; i < rows.end(); i = next, panel += blocks_.panel_length()) {
            const RowShare<Vector, T> share((rows.end() - i) * element);
            next = i + share.rows / element;
            each(share, Range{i, next - i}, panel);
        }
    }

    // Rows of the first operand, times columns that are complete but for them.
    void multiply_beside(Range rows, Range columns, int l) const {
        const std::ptrdiff_t lda = call_.a.ld * element;
        const int count =
            copy_panels<Vector, T>(transposes(call_.opA), rows.count * element, p_.k,
                                   floats(call_.view_of_a().at(rows.first, l)), lda, panels_, blocks_.panel_length());
        multiply_panels_by_columns<Vector, T>(blocks_, call_, WholeOfC{call_.n}, p_, l, rows, count, columns, panels_,
                                              strips_);
    }

    void multiply_left(Range block, Range complete) const {
        each_rows(complete, true, [&](Range rows) { multiply_beside(rows, {0, call_.n}, block.first); });
        // Own rows are overwritten in the order in which the others do not need them.
        each_rows(block, upper_, [&](Range rows) {
            const std::ptrdiff_t ldb = call_.b.ld * element;
            int count = 0;
            each_panel(rows, [&](const auto& share, Range own, float* panel) {
                copy_own_panel(block, share, own, panel);
                ++count;
            });
            DirectProduct<T> p = p_;
            p.bStep = element;
            p.bColumn = blocks_.column_length();
            for (int j = 0, columns; j < call_.n; j += columns) {
                columns = smaller(tileColumns, call_.n - j);
                const float* b = floats(&call_.b(block.first, j));
                clear_strip_beyond(columns);
                copy_columns<Vector>(columns, block.count * element, b, ldb, strips_, p.bColumn);
                NextColumnsOfB nextColumns(smaller(columns, call_.n - j - columns), block.count * element,
                                           b + columns * ldb, ldb, count);
                each_panel(rows, [&](const auto& share, Range own, const float* panel) {
                    nextColumns.take_share();
                    const int from = upper_ ? own.first - block.first : 0;
                    p.k = (upper_ ? block.end() : own.end()) - block.first - from;
                    compute_own(p, share, own.count, panel, from, strips_ + from * element, own.first, j, columns);
                });
            }
        });
    }
    void multiply_right(Range block, Range complete) const {
        each_rows({0, call_.m}, true, [&](Range rows) {
            multiply_beside(rows, complete, block.first);
            for (int j = block.first, columns; j < block.end(); j += columns) {
                columns = smaller(tileColumns, block.end() - j);
                DirectProduct<T> p = p_;
                const int from = upper_ ? 0 : j - block.first;
                p.k = (upper_ ? j + columns : block.end()) - block.first - from;
                copy_own_strip(block, j, columns, p);
                each_panel(rows, [&](const auto& share, Range own, const float* panel) {
                    if (own.end() < rows.end())
                        prefetch_rows(smaller(full, (rows.end() - own.end()) * element), columns,
                                      floats(&call_.c(own.end(), j)), p.ldc);
                    compute_own(p, share, columns, panel, from, strips_, own.first, j, columns);
                });
            }
        });
    }

    // A panel of rows of the block, with its steps on the triangle's side of the diagonal.
    void copy_own_panel(Range block, const RowShare<Vector, T>& share, Range own, float* panel) const {
        const std::ptrdiff_t lda = a_.ld * element;
        const int aStep = share.vectors * Vector::lanes;
        const Range beside =
            upper_ ? Range{own.end(), block.end() - own.end()} : Range{block.first, own.first - block.first};
        if (beside.count > 0) {
            const float* a = floats(call_.view_of_a().at(own.first, beside.first));
            float* const to = panel + (beside.first - block.first) * aStep;
            if (transposed_)
                transpose_tile<Vector, T>(share.rows, share.vectors, beside.count, a, lda, to);
            else
                copy_tile<Vector>(share.rows, share.vectors, beside.count, a, lda, to);
        }
        float* const tip = panel + (own.first - block.first) * aStep;
        if (transposed_) {
            alignas(64) float buffer[full * full / element];
            copy_stored_triangle(own, buffer, full);
            transpose_tile<Vector, T>(share.rows, share.vectors, own.count, buffer, full, tip);
        } else {
            copy_stored_triangle(own, tip, aStep);
        }
    }
    // A small triangle on the diagonal as it is stored, zeros beside it.
    void copy_stored_triangle(Range own, float* out, int ldOut) const {
        const int left = unit_ ? 1 : 0; // of the diagonal
        for (int j = 0; j < own.count; ++j, out += ldOut) {
            const float* a = floats(&a_(own.first, own.first + j));
            const int from = upper_ != transposed_ ? 0 : (j + left) * element;
            const int end = (upper_ != transposed_ ? j + 1 - left : own.count) * element;
            for (int v = 0; v < ldOut; v += Vector::lanes) {
                const auto within = [=](int i) { return smaller(larger(i - v, 0), Vector::lanes); };
                load_kept(a + v, Vector::Mask::first(within(end)) & Vector::Mask::from(within(from)))
                    .store_aligned(out + v);
            }
            if (unit_)
                reinterpret_cast<T*>(out)[j] = scalar<T>(1);
        }
    }

    // A strip of the triangle's columns in the block, where p finds them: whole ones as in the panels of GEMM.
    void copy_own_strip(Range block, int j, int columns, DirectProduct<T>& p) const {
        const OpView<const T> triangle = call_.view_of_b();
        const std::ptrdiff_t lda = a_.ld * element;
        const Range beside =
            upper_ ? Range{block.first, j - block.first} : Range{j + columns, block.end() - j - columns};
        const bool byRows = transposed_ && columns == tileColumns;
        p.bStep = byRows ? tileColumns * element : element;
        p.bColumn = byRows ? element : blocks_.column_length();
        clear_strip_beyond(columns);
        const auto place = [&](int l) { return strips_ + (l - (upper_ ? block.first : j)) * p.bStep; };
        if (beside.count > 0) {
            const float* x = floats(triangle.at(beside.first, j));
            if (byRows)
                copy_rows<Vector, T>(columns, 0, beside.count, x, lda, place(beside.first), 0);
            else if (!transposed_)
                copy_columns<Vector>(columns, beside.count * element, x, lda, place(beside.first), p.bColumn);
        }
        const Range single =
            transposed_ && !byRows ? Range{smaller(j, beside.first), columns + beside.count} : Range{j, columns};
        for (int c = 0; c < columns; ++c)
            for (int l = single.first; l < single.end(); ++l) {
                const bool inside = upper_ ? l <= j + c : l >= j + c;
                auto& to = *reinterpret_cast<T*>(place(l) + c * p.bColumn);
                to = unit_ && l == j + c ? scalar<T>(1) : inside ? triangle(l, j + c) : scalar<T>(0);
            }
    }
    // Of the last columns: tiles compute as many as they have.
    void clear_strip_beyond(int columns) const {
        for (std::ptrdiff_t i = 0; columns < tileColumns && i < blocks_.strip_length(); ++i)
            strips_[i] = 0;
    }

    // A tile of own rows and columns from its step `from` on.
    void compute_own(DirectProduct<T>& p, const RowShare<Vector, T>& share, int tip, const float* panel, int from,
                     const float* b, int i, int j, int columns) const {
        const auto tile = triangleTiles<Vector, T>.tile[left_][upper_][share.vectors - 1];
        auto* const c = reinterpret_cast<float*>(&call_.c(i, j));
        p.aStep = share.vectors * Vector::lanes;
        const float* const a = panel + from * p.aStep;
        if (columns == tileColumns && share.last_rows() == Vector::lanes)
            return tile(p, tip, a, b, c, p.ldc);
        alignas(64) float buffer[full * tileColumns];
        tile(p, tip, a, b, buffer, full);
        for (int k = 0; k < columns; ++k)
            add_column<Vector>(share.rows, buffer + k * full, scalar<T>(0), c + k * p.ldc);
    }

    bool left_, upper_, unit_; // upper: op(A)
    int order_;
    Matrix<const T> a_;
    bool transposed_;
    GemmCall<T> call_;
    Blocks blocks_;
    DirectProduct<T> p_;
    float *panels_ = nullptr, *strips_ = nullptr;
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
