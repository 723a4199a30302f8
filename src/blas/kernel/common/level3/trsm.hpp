// Triangular solves: a block of unknowns at a time, in the order in which each equation has one unknown that is new.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/level3/triangular_blocks.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

struct Solve {
    static constexpr Action action = Action::solve;

    template <class T>
    static constexpr bool byPanels = false;

    // Blocks for the GEMM that follows each, chunks for what stays in the cache meanwhile.
    template <class T>
    static constexpr Blocking left =
        isWide<T> ? Blocking{3, {{512, 1024}, {256, 1024}, {128, 256}}} : Blocking{2, {{256, 1024}, {64, 256}}};
    template <class T>
    static constexpr Blocking right = isWide<T> ? Blocking{3, {{512, 1024}, {256, 1024}, {128, 512}}}
                                                : Blocking{3, {{256, 1024}, {128, 1024}, {64, 256}}};

    // One division for each element of the diagonal, multiplications from then on.
    template <class T>
    static T factor(T pivot) {
        return scalar<T>(1) / pivot;
    }

    template <class T>
    static void combine(const TriangularProblem<T>& problem, Range solved, Range toCome) {
        problem.add(toCome, solved, scalar<T>(-1));
    }

    // A group waits for the unknowns before it,
    static Range beside(int first, int, int) { return {0, first}; }

    // which are subtracted at once; then it goes row by row.
    template <int rows, int vectors, class T>
    static void group(int first, Range before, const Coefficients<T>& own, const Coefficients<T>& beside,
                      const T* reciprocals, const Unknowns& x) {
        StripOf<T, vectors> sums[rows];
        QRV_UNROLL
        for (int r = 0; r < rows; ++r)
            sums[r] = StripOf<T, vectors>::load(x.at(first + r));
        add_unknowns<action>(sums, beside, before, x);
        QRV_UNROLL
        for (int k = 0; k < rows; ++k) {
            if (reciprocals)
                sums[k].multiply_by(reciprocals[first + k]);
            sums[k].store(x.at(first + k));
            QRV_UNROLL
            for (int r = k + 1; r < rows; ++r)
                sums[r].template add<action>(*own.at(r, k), sums[k]);
        }
    }
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
