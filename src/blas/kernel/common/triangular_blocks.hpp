// Solves and products with a triangular matrix in place of B: op(A)*X = alpha*B, X*op(A) = alpha*B, B := alpha*op(A)*B,
// B := alpha*B*op(A).
//
// The triangle goes in blocks, the right-hand sides (columns of B on the left of which A stands, else rows) in chunks,
// in several levels, so that almost all work is done by GEMM. All cases are one walk along the diagonal:
//
//   solve      a block of unknowns is solved, then subtracted from those to come
//   product    a block is multiplied by its triangle, then the blocks to come, still as they were, are added
//
// The walk goes forward or backward along the diagonal as option and triangle demand. At its end are triangles of at
// most baseSize unknowns, computed a strip of right-hand sides at a time.
//
//   memory     a tile on the stack, and what GEMM takes
//   reads      the triangle that is named; its diagonal unless it is taken to be 1; A and B not at all for alpha = 0
#pragma once

#include <cstddef>

#include "blas/kernel/common/own_gemm.hpp"
#include "blas/kernel/common/triangular_sums.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int baseSize = 64; // unknowns of the innermost triangles: their coefficients fit the first cache level

// One level of blocking: unknowns of a block, right-hand sides of a chunk.
struct BlockLevel {
    int block, chunk;
};

// Unknowns or right-hand sides [first, first + count).
struct Range {
    int first, count;
};

template <class T>
struct TriangularProblem {
    Side side;
    Op op;
    bool upper, unit;
    Matrix<const T> a; // of the order `unknowns`
    Matrix<T> b;
    int unknowns, count; // count: of right-hand sides

    bool left() const { return side == Side::left; }
    // Whether each equation has the coefficients of its own unknown and of those before it.
    bool is_lower() const { return upper == swaps_indices(); }
    // Whether the coefficient of unknown k in equation i is stored in A as element (k, i).
    bool swaps_indices() const { return left() == (op != Op::none); }

    TriangularProblem block(Range range) const {
        TriangularProblem part = *this;
        part.a = a.block(range.first, range.first);
        part.b = of_unknowns(range);
        part.unknowns = range.count;
        return part;
    }
    TriangularProblem chunk(Range range) const {
        TriangularProblem part = *this;
        part.b = left() ? b.block(0, range.first) : b.block(range.first, 0);
        part.count = range.count;
        return part;
    }
    // The unknowns `target` += factor * their coefficients with the unknowns `source` * these.
    void add(Range target, Range source, T factor) const {
        const bool stored = left() == (op == Op::none);
        const auto coefficients = stored ? a.block(target.first, source.first) : a.block(source.first, target.first);
        if (left())
            gemm(op, Op::none, target.count, count, source.count, factor, coefficients, of_unknowns(source),
                 scalar<T>(1), of_unknowns(target));
        else
            gemm(Op::none, op, count, target.count, source.count, factor, of_unknowns(source), coefficients,
                 scalar<T>(1), of_unknowns(target));
    }

private:
    Matrix<T> of_unknowns(Range range) const { return left() ? b.block(range.first, 0) : b.block(0, range.first); }
};

// ---- Triangles of at most baseSize ----------------------------------------------------------------------------------

// All unknowns of a strip in groups: of groupRows, then of half as many, down to single ones.
template <class Operation, int rows, class T>
QRV_INLINE void compute_groups(int first, int n, const Coefficients<T>& a, const T* diagonal, const Unknowns& x) {
    for (; n - first >= rows; first += rows)
        Operation::template group<rows>(first, n, a, diagonal, x);
    if constexpr (rows > 1)
        compute_groups<Operation, rows / 2>(first, n, a, diagonal, x);
}

template <class Operation, template <class> class StripOfB, class T>
void compute_strips(const TriangularProblem<T>& problem) {
    alignas(64) float tile[baseSize * unknownFloats<T>];
    T factors[baseSize];
    const int n = problem.unknowns;
    const bool ascending = problem.is_lower() == (Operation::action == Action::solve);
    const std::ptrdiff_t direction = ascending ? 1 : -1, start = ascending ? 0 : n - 1;

    const std::ptrdiff_t ld = problem.a.ld;
    const bool swapped = problem.swaps_indices();
    const Coefficients<T> a{problem.a.data + start * (ld + 1), direction * (swapped ? ld : 1),
                            direction * (swapped ? 1 : ld)};
    for (int k = 0; !problem.unit && k < n; ++k)
        factors[k] = Operation::factor(*a.at(k, k));
    const T* const diagonal = problem.unit ? nullptr : factors;
    const Unknowns x{tile + start * unknownFloats<T>, direction * unknownFloats<T>};

    for (int j = 0; j < problem.count; j += stripWidth<T>) {
        const auto rest = problem.chunk({j, problem.count - j});
        const StripOfB<T> strip{{rest.b.data, rest.b.ld, n, rest.count, problem.op == Op::adjoint}};
        strip.load(tile);
        compute_groups<Operation, groupRows>(0, n, a, diagonal, x);
        strip.store(tile);
    }
}

// ---- Blocks
// -----------------------------------------------------------------------------------------------------------

template <class Operation, class T>
void walk_triangle(const TriangularProblem<T>& problem, const BlockLevel* level, const BlockLevel* end) {
    if (level == end)
        return problem.left() ? compute_strips<Operation, ColumnStrip>(problem)
                              : compute_strips<Operation, RowStrip>(problem);
    const int n = problem.unknowns;
    const bool ascending = problem.is_lower() == (Operation::action == Action::solve);
    for (int j = 0; j < problem.count; j += level->chunk) {
        const auto chunk = problem.chunk({j, smaller(level->chunk, problem.count - j)});
        for (int done = 0, size; done < n; done += size) {
            size = smaller(level->block, n - done);
            const int left = n - done - size;
            const Range block{ascending ? done : left, size}, toCome{ascending ? done + size : 0, left};
            walk_triangle<Operation>(chunk.block(block), level + 1, end);
            if (left > 0)
                Operation::combine(chunk, block, toCome);
        }
    }
}

template <class Operation, class T>
void triangular(Side side, Uplo uplo, Op op, Diag diag, int m, int n, T alpha, Matrix<const T> a, Matrix<T> b) {
    if (n == 0)
        return;
    if (alpha != scalar<T>(1))
        scale(m, n, alpha, b);
    if (alpha == scalar<T>(0))
        return;
    const bool left = side == Side::left;
    const TriangularProblem<T> problem{side, op, uplo == Uplo::upper, diag == Diag::unit,
                                       a,    b,  left ? m : n,        left ? n : m};
    if (left)
        walk_triangle<Operation>(problem, Operation::left, Operation::left + Operation::leftLevels);
    else
        walk_triangle<Operation>(problem, Operation::right, Operation::right + Operation::rightLevels);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
