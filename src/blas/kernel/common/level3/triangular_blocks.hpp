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
// most baseSize unknowns, computed a strip of right-hand sides at a time. A few right-hand sides, which would fill
// little of a strip, are vectors to level 2.
//
//   memory     a tile on the stack, 34 KB at most, work memory for copies of coefficients (none if it is refused), and
//              what GEMM takes, or trmm_panels.hpp, trmm_packed.hpp
//   reads      the triangle that is named; its diagonal unless it is taken to be 1; A and B not at all for alpha = 0
#pragma once

#include <cstddef>

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/kernel/common/action.hpp"
#include "blas/kernel/common/level3/own_kernels.hpp"
#include "blas/kernel/common/level3/triangular_sums.hpp"
#include "blas/kernel/common/level3/triangular_tile.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/vec.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"
#include "service/work_pool.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// One level of blocking: unknowns of a block, right-hand sides of a chunk.
struct BlockLevel {
    int block, chunk;
};
struct Blocking {
    int levels;
    BlockLevel level[3];

    constexpr int innermost() const { return level[levels - 1].block; }
};

// Unknowns of the innermost triangles. Real ones that wide vectors compute are as fast as GEMM, which would take their
// blocks with too little work for each call.
template <class T>
constexpr bool isWide = Vec::lanes > 4 && !isComplex<T>;
template <class T>
constexpr int baseSize = isWide<T> ? 256 : 64;
// The same where their coefficients are copied.
template <class T>
constexpr int copiedSize = isWide<T> ? 128 : 64;

template <class T>
struct TriangularProblem {
    Side side;
    Op op;
    Uplo uplo;
    Diag diag;
    Matrix<const T> a; // of the order `unknowns`
    Matrix<T> b;
    int unknowns, count; // count: of right-hand sides

    bool left() const { return side == Side::left; }
    // Whether the walk goes from the first unknown to the last.
    bool ascends(Action action) const {
        return kernel::QRV_KERNEL_BUILD::ascends(action, is_upper(uplo, swaps_indices()));
    }
    // Whether the coefficient of unknown k in equation i is stored in A as element (k, i).
    bool swaps_indices() const { return left() == (op != Op::none); }

    // The coefficients in the order of the walk.
    Coefficients<T> coefficients(bool ascending) const {
        const T* const start = ascending ? a.data : a.data + (unknowns - 1) * (a.ld + 1);
        const std::ptrdiff_t step = ascending ? 1 : -1;
        return {start, step * (swaps_indices() ? a.ld : 1), step * (swaps_indices() ? 1 : a.ld)};
    }

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
        const auto coefficients =
            swaps_indices() ? a.block(source.first, target.first) : a.block(target.first, source.first);
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

// ---- A few right-hand sides ----------------------------------------------------------------------------------------

// Whether so few are faster one by one, as vectors. Times of strips over vectors, triangular solves, left, option N:
//
//   unknowns                          32     64     128    256    1000   2000
//   real, AVX-512,  2 right sides     0.61   0.83   1.22   1.70   1.02   0.97
//                   3                        0.56          1.15   0.74
//   real, SSE,      2                        1.16          1.12   1.14
//                   3                        0.78          0.90   0.91
//   complex, AVX-512, 3                      1.0           0.8    0.6    0.8
template <class T>
constexpr bool go_as_vectors(int unknowns, int count) {
    return count <= (unknowns < (isComplex<T> ? 32 : 100) ? 1 : 2);
}

template <class Operation, class T>
void compute_vectors(const TriangularProblem<T>& problem) {
    const bool left = problem.left();
    const int n = problem.unknowns, inc = left ? 1 : static_cast<int>(problem.b.ld);
    // A row stands on the left of op(A), so that op(A)' works on it; the conjugate of A alone is no option of level 2.
    const bool conjugates = isComplex<T> && !left && problem.op == Op::adjoint;
    const Op op = left ? problem.op : problem.op == Op::none ? Op::transpose : Op::none;
    for (int j = 0; j < problem.count; ++j) {
        T* const x = problem.chunk({j, 1}).b.data;
        const auto conjugate = [&] {
            for (int i = 0; i < n; ++i)
                x[std::ptrdiff_t{i} * inc] = conj_if<true>(x[std::ptrdiff_t{i} * inc]);
        };
        if (conjugates)
            conjugate();
        triangular_vector<Operation::action>(problem.uplo, op, problem.diag, n, problem.a, x, inc);
        if (conjugates)
            conjugate();
    }
}

// ---- Triangles of at most baseSize ----------------------------------------------------------------------------------

// All unknowns of a strip.
template <class Operation, int vectors, class T, class CoefficientsBeside>
QRV_INLINE void compute_groups(int n, const Coefficients<T>& a, const T* diagonal, const Unknowns& x,
                               const CoefficientsBeside& coefficients_beside) {
    each_group(n, [&](auto rows, int first) {
        const Range beside = Operation::beside(first, rows(), n);
        Operation::template group<rows(), vectors>(first, beside, {a.at(first, first), a.rowStep, a.columnStep},
                                                   coefficients_beside(first, rows(), beside), diagonal, x);
    });
}

template <class Operation, template <class> class StripOfB, class T>
void compute_strips(const TriangularProblem<T>& problem) {
    using Copies = CoefficientCopies<Operation, T>;
    alignas(64) float tile[baseSize<T> * unknownFloats<T>];
    T factors[baseSize<T>];
    const int n = problem.unknowns;
    const bool ascending = problem.ascends(Operation::action);
    const Coefficients<T> a = problem.coefficients(ascending);
    const bool unit = problem.diag == Diag::unit;
    for (int k = 0; !unit && k < n; ++k)
        factors[k] = Operation::factor(*a.at(k, k));
    const T* const diagonal = unit ? nullptr : factors;
    const Unknowns x =
        ascending ? Unknowns{tile, unknownFloats<T>} : Unknowns{tile + (n - 1) * unknownFloats<T>, -unknownFloats<T>};

    const auto each_strip = [&](const auto& compute) {
        for (int j = 0, count; j < problem.count; j += count) {
            count = smaller(stripWidth<T>, problem.count - j);
            const Matrix<T> b = problem.chunk({j, count}).b;
            const StripOfB<T> strip{{b.data, b.ld, n, count, problem.op == Op::adjoint}};
            strip.load(tile);
            if (strip_vectors<T>(count) < stripVectors<T>)
                compute(Count<narrowVectors<T>>());
            else
                compute(Count<stripVectors<T>>());
            strip.store(tile);
        }
    };
    T* buffer = nullptr;
    if (n <= copiedSize<T> && Copies::repays(a, problem.count / stripWidth<T>))
        buffer = static_cast<T*>(qrv_serv_allocate(Copies::room(n) * sizeof(T), 64));
    if (buffer) {
        const Copies copies(n, a, buffer);
        each_strip([&](auto vectors) {
            Copies left = copies;
            compute_groups<Operation, vectors()>(n, a, diagonal, x,
                                                 [&](int, int rows, Range beside) { return left.take(rows, beside); });
        });
        qrv_serv_deallocate(buffer);
    } else {
        each_strip([&](auto vectors) {
            compute_groups<Operation, vectors()>(n, a, diagonal, x, [&](int first, int, Range beside) {
                return Coefficients<T>{a.at(first, beside.first), a.rowStep, a.columnStep};
            });
        });
    }
}

template <class Operation, class T>
int base_size(const TriangularProblem<T>& problem, bool ascending) {
    const bool copies =
        CoefficientCopies<Operation, T>::repays(problem.coefficients(ascending), problem.count / stripWidth<T>);
    return copies ? copiedSize<T> : baseSize<T>;
}

// ---- Blocks -------------------------------------------------------------------------------------------------------

template <class Operation, class T>
void walk_triangle(const TriangularProblem<T>& problem, const BlockLevel* level, int levels) {
    const int n = problem.unknowns;
    const bool ascending = problem.ascends(Operation::action);
    if (levels == 0 || (isWide<T> && n <= base_size<Operation>(problem, ascending)))
        return problem.left() ? compute_strips<Operation, ColumnStrip>(problem)
                              : compute_strips<Operation, RowStrip>(problem);
    for (int j = 0, count; j < problem.count; j += count) {
        count = smaller(level->chunk, problem.count - j);
        const auto chunk = problem.chunk({j, count});
        for (int done = 0, size; done < n; done += size) {
            size = smaller(level->block, n - done);
            const int left = n - done - size;
            const Range block{ascending ? done : left, size}, toCome{ascending ? done + size : 0, left};
            walk_triangle<Operation>(chunk.block(block), level + 1, levels - 1);
            if (left > 0)
                Operation::combine(chunk, block, toCome);
        }
    }
}

template <class Operation, class T>
void triangular(Side side, Uplo uplo, Op op, Diag diag, int m, int n, T alpha, Matrix<const T> a, Matrix<T> b) {
    if (m == 0 || n == 0)
        return;
    const bool left = side == Side::left;
    if constexpr (Operation::template byPanels<T>)
        if (alpha != scalar<T>(0) && (left ? m : n) >= Operation::panelsOrder &&
            (left ? n : m) >= Operation::panelsCount && trmm_panels(side, uplo, op, diag, m, n, alpha, a, b))
            return;
    if (alpha != scalar<T>(1))
        scale(m, n, alpha, b);
    if (alpha == scalar<T>(0))
        return;
    const TriangularProblem<T> problem{side, op, uplo, diag, a, b, left ? m : n, left ? n : m};
    QRV_ASSERT(a.ld >= problem.unknowns && b.ld >= m);
    if (go_as_vectors<T>(problem.unknowns, problem.count))
        return compute_vectors<Operation>(problem);
    const Blocking& blocks = left ? Operation::template left<T> : Operation::template right<T>;
    static_assert(Operation::template left<T>.innermost() <= copiedSize<T> &&
                  Operation::template right<T>.innermost() <= copiedSize<T>);
    walk_triangle<Operation>(problem, blocks.level, blocks.levels);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
