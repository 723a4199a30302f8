// SLASR: a sequence of plane rotations applied to a matrix, to its rows from the left or to its columns from the right.
//
// Of the two lines that a rotation turns, one is carried on to the next rotation, in registers; the other passes by:
//
//   pivot      direct     carried line    rotation k reads   and writes
//   variable   forward    from the top    k + 1              k
//   variable   backward   from the end    k                  k + 1
//   top        both       the top one     k + 1              k + 1
//   bottom     both       the last one    k                  k
//
// So each element is loaded and stored once. Columns are turned in strips of rows as they lie; rows are turned in
// strips of columns, in tiles which are transposed on the stack before and after.
//
//   c, s     one fewer than A has lines
//   A        m x n; a rotation with c = 1 and s = 0 changes nothing, not even a NaN's neighbour
#pragma once

#include "blas/assert.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/pack.hpp"
#include "blas/options.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

template <Pivot pivot, Direct direct>
struct RotationPlan {
    static constexpr bool forward = direct == Direct::forward, shifts = pivot == Pivot::variable,
                          carriesUpper = pivot == Pivot::top || (shifts && forward);
    static constexpr int reads = carriesUpper ? 1 : 0, writes = shifts ? 1 - reads : reads; // beyond line k

    int count;
    const float *c, *s;

    int first_carried() const { return carriesUpper ? 0 : count; }
    int last_carried() const { return shifts ? count - first_carried() : first_carried(); }
    // Of `size` rotations, those of a step: from the returned one on.
    int block(int done, int size) const { return forward ? done : count - done - size; }

    // Rotation k in so many vectors of either line.
    template <int vectors>
    QRV_INLINE void turn(int k, Vec (&carried)[vectors], Vec (&passing)[vectors]) const {
        if (!(c[k] == 1 && s[k] == 0)) {
            const Vec cosine = Vec::splat(c[k]), sine = Vec::splat(s[k]);
            QRV_UNROLL
            for (int v = 0; v < vectors; ++v) {
                Vec &upper = carriesUpper ? carried[v] : passing[v], &lower = carriesUpper ? passing[v] : carried[v];
                const Vec turned = multiply_add(cosine, upper, sine * lower);
                lower = subtract_product(sine, upper, cosine * lower);
                upper = turned;
            }
        }
        if (shifts) {
            QRV_UNROLL
            for (int v = 0; v < vectors; ++v) {
                const Vec next = passing[v];
                passing[v] = carried[v];
                carried[v] = next;
            }
        }
    }
};

// ---- From the right -------------------------------------------------------------------------------------------------

// A strip of `rows` rows, which are so many vectors or, if `part`, fewer than one has lanes.
template <int vectors, bool part, class Plan>
void turn_columns(const Plan& plan, int rows, Matrix<float> a) {
    Vec carried[vectors], passing[vectors];
    const auto load = [&](int column, Vec(&x)[vectors]) __attribute__((always_inline)) {
        QRV_UNROLL
        for (int v = 0; v < vectors; ++v)
            x[v] = part ? load_part<Vec>(a.column(column), rows) : Vec::load(a.column(column) + v * Vec::lanes);
    };
    const auto store = [&](int column, const Vec(&x)[vectors]) __attribute__((always_inline)) {
        QRV_UNROLL
        for (int v = 0; v < vectors; ++v)
            if constexpr (part)
                store_part(a.column(column), x[v], rows);
            else
                x[v].store(a.column(column) + v * Vec::lanes);
    };
    load(plan.first_carried(), carried);
    for (int done = 0; done < plan.count; ++done) {
        const int k = plan.block(done, 1);
        load(k + Plan::reads, passing);
        plan.turn(k, carried, passing);
        store(k + Plan::writes, passing);
    }
    store(plan.last_carried(), carried);
}

constexpr int rowVectorsOfStrip = 4; // as many as hide the latency of a rotation

template <class Plan>
void lasr_right(const Plan& plan, int m, Matrix<float> a) {
    constexpr int strip = rowVectorsOfStrip * Vec::lanes;
    int i = 0;
    for (; i + strip <= m; i += strip)
        turn_columns<rowVectorsOfStrip, false>(plan, strip, a.block(i, 0));
    for (; i + Vec::lanes <= m; i += Vec::lanes)
        turn_columns<1, false>(plan, Vec::lanes, a.block(i, 0));
    if (i < m)
        turn_columns<1, true>(plan, m - i, a.block(i, 0));
}

// ---- From the left --------------------------------------------------------------------------------------------------

// Rows next to each other in a strip of columns, transposed: what a row has in the strip is contiguous.
template <int vectors>
struct RowTile {
    static constexpr int rows = 16, width = vectors * Vec::lanes;
    alignas(64) float row[rows][width];

    // `count` rows in `columns` columns, width at most, at a.
    void load(int count, int columns, Matrix<const float> a) {
        squares(
            count, columns,
            [&](int i, int j) { SmallSquare<float>::transpose<false>(&a(i, j), a.ld, &row[i][j], width); },
            [&](int i, int j) { row[i][j] = a(i, j); });
    }
    void store(int count, int columns, Matrix<float> a) const {
        squares(
            count, columns,
            [&](int i, int j) { SmallSquare<float>::transpose<false>(&row[i][j], width, &a(i, j), a.ld); },
            [&](int i, int j) { a(i, j) = row[i][j]; });
    }

private:
    // All elements in squares and what is beside these one by one.
    template <class Square, class Single>
    static void squares(int count, int columns, const Square& square, const Single& single) {
        constexpr int side = SmallSquare<float>::side;
        int j = 0;
        for (; j + side <= columns; j += side) {
            int i = 0;
            for (; i + side <= count; i += side)
                square(i, j);
            for (; i < count; ++i)
                for (int k = 0; k < side; ++k)
                    single(i, j + k);
        }
        for (; j < columns; ++j)
            for (int i = 0; i < count; ++i)
                single(i, j);
    }
};

template <int vectors, class Plan>
void turn_rows(const Plan& plan, int columns, Matrix<float> a) {
    RowTile<vectors> tile{};
    Vec carried[vectors], passing[vectors];
    const auto load = [&](int row, Vec(&x)[vectors]) __attribute__((always_inline)) {
        QRV_UNROLL
        for (int v = 0; v < vectors; ++v)
            x[v] = Vec::load_aligned(tile.row[row] + v * Vec::lanes);
    };
    const auto store = [&](int row, const Vec(&x)[vectors]) __attribute__((always_inline)) {
        QRV_UNROLL
        for (int v = 0; v < vectors; ++v)
            x[v].store_aligned(tile.row[row] + v * Vec::lanes);
    };
    tile.load(1, columns, a.block(plan.first_carried(), 0));
    load(0, carried);
    for (int done = 0, size; done < plan.count; done += size) {
        size = smaller(RowTile<vectors>::rows, plan.count - done);
        const int first = plan.block(done, size);
        tile.load(size, columns, a.block(first + Plan::reads, 0));
        for (int step = 0; step < size; ++step) {
            const int at = Plan::forward ? step : size - 1 - step;
            load(at, passing);
            plan.turn(first + at, carried, passing);
            store(at, passing);
        }
        tile.store(size, columns, a.block(first + Plan::writes, 0));
    }
    store(0, carried);
    tile.store(1, columns, a.block(plan.last_carried(), 0));
}

constexpr int columnVectorsOfStrip = 4;

template <class Plan>
void lasr_left(const Plan& plan, int n, Matrix<float> a) {
    constexpr int strip = columnVectorsOfStrip * Vec::lanes;
    int j = 0;
    for (; j + strip <= n; j += strip)
        turn_rows<columnVectorsOfStrip>(plan, strip, a.block(0, j));
    for (int columns; j < n; j += columns) {
        columns = smaller(Vec::lanes, n - j);
        turn_rows<1>(plan, columns, a.block(0, j));
    }
}

// ---- The twelve cases -----------------------------------------------------------------------------------------------

template <Pivot pivot, Direct direct>
void lasr_planned(Side side, int m, int n, const float* c, const float* s, Matrix<float> a) {
    if (side == Side::left)
        lasr_left(RotationPlan<pivot, direct>{m - 1, c, s}, n, a);
    else
        lasr_right(RotationPlan<pivot, direct>{n - 1, c, s}, m, a);
}

inline void lasr(Side side, Pivot pivot, Direct direct, int m, int n, const float* c, const float* s, Matrix<float> a) {
    QRV_ASSERT(a.ld >= m || n <= 1);
    if (m <= 0 || n <= 0 || (side == Side::left ? m : n) == 1)
        return;
    const bool forward = direct == Direct::forward;
    switch (pivot) {
    case Pivot::variable:
        return forward ? lasr_planned<Pivot::variable, Direct::forward>(side, m, n, c, s, a)
                       : lasr_planned<Pivot::variable, Direct::backward>(side, m, n, c, s, a);
    case Pivot::top:
        return forward ? lasr_planned<Pivot::top, Direct::forward>(side, m, n, c, s, a)
                       : lasr_planned<Pivot::top, Direct::backward>(side, m, n, c, s, a);
    case Pivot::bottom:
        return forward ? lasr_planned<Pivot::bottom, Direct::forward>(side, m, n, c, s, a)
                       : lasr_planned<Pivot::bottom, Direct::backward>(side, m, n, c, s, a);
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
