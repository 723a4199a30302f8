// Triangular products in place by the packed loop nest, B := alpha*op(A)*B or alpha*B*op(A) of real elements: block
// after block of the triangle's steps, in the order in which the unknowns of a block are still as they were when their
// turn comes.
//
//   beside     unknowns that are complete but for the products with this block: the micro-kernel
//   own        the block's own unknowns, which its products replace: tiles that know where they cross the diagonal.
//              Nothing beyond it is multiplied, so that NaN and infinities stay where they belong
//
//   left       panels hold rows of op(A), slivers columns of B, which each group of own columns then overwrites
//   right      panels hold rows of B, slivers columns of op(A)
//   memory     packed A and a sliver, as the plan says
//   reads      the triangle that is named; its diagonal unless it is taken to be 1
#pragma once

#include <cstddef>

#include "blas/assert.hpp"
#include "blas/kernel/common/action.hpp"
#include "blas/kernel/common/gemm/gemm_wide.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/gemm_pieces.hpp"
#include "blas/kernel/gemm_plan.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"
#include "service/work_pool.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Step s of those that meet the triangle's edge: rows (left), respectively columns (right), up to s (left upper, right
// lower) or from s on. Where a vector has some of them only, the products of the others are 0*0: packed A, respectively
// the sliver, has zeros there.
template <Side side, bool upTo, int s, class Shape>
QRV_INLINE void add_edge_step(TileSums<Shape, float>& tile, const float* const (&panel)[Shape::panels],
                              std::ptrdiff_t offset, const float* sliver) {
    using Vector = typename Shape::Vector;
    using Spread = typename Shape::Spread;
    constexpr int group = Spread::rowsAtOnce, columns = Spread::columns, perColumn = Vector::lanes / columns;
    // Of `count` rows or columns from `first` on.
    const auto has = [](int first, int count) { return upTo ? first <= s : first + count > s; };
    const auto has_all = [](int first, int count) { return upTo ? first + count - 1 <= s : first >= s; };
    const auto mask = [](int groupLanes, int lanes, int first) __attribute__((always_inline)) {
        return upTo ? typename Vector::Mask(groupLanes, lanes * (s - first + 1))
                    : Vector::Mask::from(groupLanes, lanes * (s - first));
    };
    QRV_UNROLL
    for (int p = 0; p < Shape::panels; ++p)
        QRV_UNROLL
    for (int part = 0; part < tile.parts; ++part) {
        const int row = p * panelRows + part * group;
        if (side == Side::left && !has(row, group))
            continue;
        const Vector x = Spread::repeat_rows(panel[p] + offset + part * group);
        QRV_UNROLL
        for (int v = 0; v < Shape::vectors; ++v) {
            if (side == Side::right && !has(v * columns, columns))
                continue;
            Vector a = x, z = Vector::load_aligned(sliver + v * Vector::lanes);
            if (side == Side::left && !has_all(row, group))
                z = z.kept(mask(group, 1, row));
            if (side == Side::right && !has_all(v * columns, columns))
                a = a.kept(mask(Vector::lanes, perColumn, v * columns));
            tile.sums[p][v][part] = multiply_add(a, z, tile.sums[p][v][part]);
        }
    }
}

// A tile of k steps, of which the first or the last `tip` meet the edge, with C for what it has: `upper` is op(A).
template <class Shape, Side side, bool upper>
void triangle_tile(const float* a, std::ptrdiff_t aStride, const float* sliver, int k, int tip, TileOfC<float> c) {
    constexpr bool tipFirst = (side == Side::left) == upper;
    constexpr int most = side == Side::left ? Shape::rows : Shape::columns;
    prefetch_tile<Shape>(c);
    const float* panel[Shape::panels];
    QRV_UNROLL
    for (int p = 0; p < Shape::panels; ++p)
        panel[p] = a + p * aStride;
    TileSums<Shape, float> tile;
    tile.clear();
    std::ptrdiff_t offset = 0;
    const auto rest = [&]() __attribute__((always_inline)) {
        const typename Shape::Vector::Mask all[2] = {{4, 4}, {4, 4}};
        for (const std::ptrdiff_t end = offset + std::ptrdiff_t{k - tip} * panelRows; offset < end;
             offset += panelRows, sliver += Shape::sliverStep)
            tile.template add_step<false>(panel, offset, sliver, all);
    };
    if constexpr (!tipFirst)
        rest();
    repeat<most>([&](auto s) __attribute__((always_inline)) {
        if (s() >= tip)
            return;
        add_edge_step<side, tipFirst, s()>(tile, panel, offset, sliver);
        offset += panelRows;
        sliver += Shape::sliverStep;
    });
    if constexpr (tipFirst)
        rest();
    c.rows == Shape::rows ? store_tile<Shape, false>(tile, c) : store_tile<Shape, true>(tile, c);
}

// Steps of a block: more would leave less to the micro-kernel, fewer pass over B more often.
constexpr int triangleDepth = 192;

template <class Shape>
class TriangleByPlan {
public:
    // The plan has no blocks yet.
    TriangleByPlan(GemmPlan<float>* plan, Side side, Uplo uplo, Op op, Diag diag, int m, int n, float alpha,
                   Matrix<const float> a, Matrix<float> b)
        : plan_(*plan), left_(side == Side::left), upper_(is_upper(uplo, transposes(op))), unit_(diag == Diag::unit),
          transposed_(transposes(op)), m_(m), n_(n), order_(left_ ? m : n), alpha_(alpha), a_(a), b_(b),
          triangle_(a.data, a.ld, transposes(op)) {}

    // False if memory is refused: nothing has been done then.
    bool multiply() {
        plan_.kb = even_block(order_, triangleDepth, panelRows);
        plan_.setBlocks(&m_, &n_, &order_, &plan_);
        QRV_ASSERT(plan_.mb >= plan_.kb && plan_.mb % panelRows == 0 && plan_.mUnit == panelRows);
        void* memory = nullptr;
        plan_.bufferSizes(BufferSet::aSliver, BlockClip::toProblem, &m_, &n_, &order_, &plan_);
        plan_.allocateBuffers(BufferSet::aSliver, &memory, &plan_);
        if (!memory)
            return false;
        if (left_)
            each_block([&](Range block, Range complete) { multiply_left(block, complete); });
        else
            for (int i = 0, rows; i < m_; i += rows) {
                rows = smaller(plan_.mb, m_ - i);
                each_block([&](Range block, Range complete) { multiply_right({i, rows}, block, complete); });
            }
        qrv_serv_deallocate(memory);
        return true;
    }

private:
    // each(block, complete): unknowns of a block, and those that are complete but for their products with it.
    template <class Each>
    void each_block(const Each& each) const {
        const bool ascends = upper_ == left_;
        for (int done = 0, count; done < order_; done += count) {
            count = smaller(plan_.kb, order_ - done);
            const Range block{ascends ? done : order_ - done - count, count};
            each(block, Range{ascends ? 0 : block.end(), done});
        }
    }
    // each(i, rows) for the tiles of so many rows of packed A.
    template <class Each>
    static void each_tile(int count, const Each& each) {
        for (int i = 0, rows; i < count; i += rows) {
            rows = smaller(even_share((count - i + panelRows - 1) / panelRows, Shape::panels) * panelRows, count - i);
            each(i, rows);
        }
    }
    float* packed(int row, int step) const {
        return plan_.aBuffer.data + row / panelRows * std::ptrdiff_t{plan_.aBuffer.stride} + step * panelRows;
    }
    // The panel of the last rows, if not full, would keep what was there.
    void clear_rest(int rows, int steps) const {
        if (rows % panelRows != 0)
            for (int l = 0; l < steps * panelRows; ++l)
                packed(rows, 0)[l] = 0;
    }
    void pack(bool transposed, int rows, int steps, const float* a, std::ptrdiff_t lda, float* to) const {
        const int ld = static_cast<int>(lda);
        (transposed ? plan_.copyAT : plan_.copyAN)(&rows, &steps, a, &ld, to, &plan_.aBuffer.stride, &alpha_);
    }
    // B[rows, columns] += packed A * `operand`
    void multiply_beside(Range rows, Range columns, int steps, bool transposed, const float* operand,
                         std::ptrdiff_t ld) const {
        const char none = letter(Op::none), op = letter(transposed ? Op::transpose : Op::none);
        const int ldOperand = static_cast<int>(ld), ldb = static_cast<int>(b_.ld);
        const float one = 1;
        if (columns.count > 0)
            plan_.micro(&none, &op, &rows.count, &columns.count, &steps, &alpha_, plan_.aBuffer.data,
                        &plan_.aBuffer.stride, operand, &ldOperand, &one, &b_(rows.first, columns.first), &ldb,
                        plan_.sliver.data, MicroForm::directB);
    }
    MicroCall<float> own_call(int rows, int steps, const OperandB<float>& operand, float* c) const {
        return {rows, steps, steps, plan_.aBuffer.data, plan_.aBuffer.stride, operand, c, b_.ld, 0, plan_.sliver.data};
    }
    // A tile of own unknowns: steps `from` to `from` + k of the packed rows, and those of the sliver as it is.
    template <Side side>
    void compute_own(const MicroCall<float>& call, int i, int rows, int from, const float* sliver, int k, int tip,
                     int j, int columns) const {
        upper_ ? compute_own<side, true, Shape::panels>(call, i, rows, from, sliver, k, tip, j, columns)
               : compute_own<side, false, Shape::panels>(call, i, rows, from, sliver, k, tip, j, columns);
    }
    template <Side side, bool upper, int panels>
    static void compute_own(const MicroCall<float>& call, int i, int rows, int from, const float* sliver, int k,
                            int tip, int j, int columns) {
        if constexpr (panels > 1)
            if (rows <= (panels - 1) * panelRows)
                return compute_own<side, upper, panels - 1>(call, i, rows, from, sliver, k, tip, j, columns);
        triangle_tile<TileShape<typename Shape::Spread, panels, Shape::vectors>, side, upper>(
            call.panels(i) + from * panelRows, call.aStride, sliver, k, tip, call.tile(i, j, rows, columns));
    }

    void multiply_left(Range block, Range complete) const {
        for (int i = complete.first, rows; i < complete.end(); i += rows) {
            rows = smaller(plan_.mb, complete.end() - i);
            pack(transposed_, rows, block.count, triangle_.at(i, block.first), a_.ld, packed(0, 0));
            multiply_beside({i, rows}, {0, n_}, block.count, false, &b_(block.first, 0), b_.ld);
        }
        clear_rest(block.count, block.count);
        each_tile(block.count, [&](int i, int rows) { pack_own(block, {i, rows}); });
        float* const own = &b_(block.first, 0);
        const auto call =
            own_call(block.count, block.count, {own, b_.ld, OperandB<float>::Storage::columns, false, n_}, own);
        for (int j = 0, columns; j < n_; j += columns) {
            columns = smaller(Shape::columns, n_ - j);
            expand<Shape>(call.b, j, call.k, call.kp, call.sliver);
            each_tile(block.count, [&](int i, int rows) {
                const int from = upper_ ? i : 0, steps = upper_ ? block.count - i : i + rows;
                compute_own<Side::left>(call, i, rows, from, call.sliver + from * Shape::sliverStep, steps, rows, j,
                                        columns);
            });
        }
    }
    // Rows of the block, with their steps on the triangle's side of the diagonal.
    void pack_own(Range block, Range rows) const {
        const int first = block.first + rows.first;
        const Range beside = upper_ ? Range{rows.end(), block.count - rows.end()} : Range{0, rows.first};
        if (beside.count > 0)
            pack(transposed_, rows.count, beside.count, triangle_.at(first, block.first + beside.first), a_.ld,
                 packed(rows.first, beside.first));
        for (int s = 0; s < rows.count; ++s)
            for (int i = 0; i < round_up(rows.count, panelRows); ++i)
                packed(rows.first + i, rows.first + s)[i % panelRows] =
                    i < rows.count ? alpha_ * own_element(first + i, first + s) : 0;
    }
    // Of op(A), zero beyond the diagonal.
    float own_element(int i, int l) const {
        return i == l && unit_ ? 1 : (upper_ ? i <= l : i >= l) ? triangle_(i, l) : 0;
    }

    void multiply_right(Range rows, Range block, Range complete) const {
        clear_rest(rows.count, block.count);
        pack(false, rows.count, block.count, &b_(rows.first, block.first), b_.ld, packed(0, 0));
        multiply_beside(rows, complete, block.count, transposed_, triangle_.at(block.first, complete.first), a_.ld);
        for (int j = 0, columns; j < block.count; j += columns) {
            columns = smaller(Shape::columns, block.count - j);
            const int from = upper_ ? 0 : j, steps = upper_ ? j + columns : block.count - j;
            expand_own(block, {j, columns});
            const auto call = own_call(rows.count, steps, {}, &b_(rows.first, block.first));
            each_tile(rows.count, [&](int i, int tileRows) {
                compute_own<Side::right>(call, i, tileRows, from, call.sliver, steps, columns, j, columns);
            });
        }
    }
    // The sliver of columns of the block, with their steps on the triangle's side of the diagonal.
    void expand_own(Range block, Range columns) const {
        using Storage = OperandB<float>::Storage;
        const int first = block.first + columns.first;
        const Range beside = upper_ ? Range{0, columns.first} : Range{columns.end(), block.count - columns.end()};
        float* const sliver = plan_.sliver.data;
        if (beside.count > 0)
            expand<Shape>(OperandB<float>{triangle_.at(block.first + beside.first, first), a_.ld,
                                          transposed_ ? Storage::rows : Storage::columns, false, columns.count},
                          0, beside.count, beside.count, sliver + (upper_ ? 0 : columns.count * Shape::sliverStep));
        float tip[Shape::columns * Shape::columns];
        for (int j = 0; j < columns.count; ++j)
            for (int l = 0; l < columns.count; ++l)
                tip[l + j * Shape::columns] = own_element(first + l, first + j);
        expand<Shape>(OperandB<float>{tip, Shape::columns, Storage::columns, false, columns.count}, 0, columns.count,
                      columns.count, sliver + (upper_ ? columns.first * Shape::sliverStep : 0));
    }

    GemmPlan<float>& plan_;
    bool left_, upper_, unit_, transposed_; // upper: op(A)
    int m_, n_, order_;
    float alpha_;
    Matrix<const float> a_;
    Matrix<float> b_;
    OpView<const float> triangle_; // op(A)
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
