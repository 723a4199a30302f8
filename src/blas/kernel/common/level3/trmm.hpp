// Triangular products in place: a block of unknowns at a time, in the order in which each needs only itself and blocks
// that are still as they were.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/level3/triangular_blocks.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

struct Multiply {
    static constexpr Action action = Action::multiply;

    // So many unknowns and right-hand sides at least go by panels: with 512 bits see trmm_panels.hpp, with 256 real
    // ones trmm_packed.hpp.
    template <class T>
    static constexpr bool byPanels = Vec::lanes == 16 || isWide<T>;
    static constexpr int panelsOrder = Vec::lanes == 16 ? 960 : 384, panelsCount = Vec::lanes == 16 ? 384 : 256;

    // Blocks for the GEMM that follows each, chunks for what stays in the cache meanwhile.
    template <class T>
    static constexpr Blocking left =
        isWide<T> ? Blocking{3, {{512, 1024}, {256, 1024}, {128, 256}}} : Blocking{2, {{128, 1024}, {64, 512}}};
    template <class T>
    static constexpr Blocking right = isWide<T> ? Blocking{3, {{512, 1024}, {256, 1024}, {128, 512}}}
                                                : Blocking{3, {{256, 512}, {128, 512}, {64, 512}}};

    template <class T>
    static T factor(T diagonal) {
        return diagonal;
    }

    template <class T>
    static void combine(const TriangularProblem<T>& problem, Range finished, Range unchanged) {
        problem.add(finished, unchanged, scalar<T>(1));
    }

    // A group needs the unknowns behind it,
    static Range beside(int first, int rows, int n) { return {first + rows, n - first - rows}; }

    // and itself.
    template <int rows, int vectors, class T>
    static void group(int first, Range behind, const Coefficients<T>& own, const Coefficients<T>& beside,
                      const T* diagonal, const Unknowns& x) {
        StripOf<T, vectors> sums[rows];
        QRV_UNROLL
        for (int k = 0; k < rows; ++k) {
            const auto unknown = StripOf<T, vectors>::load(x.at(first + k));
            sums[k] = unknown;
            if (diagonal)
                sums[k].multiply_by(diagonal[first + k]);
            QRV_UNROLL
            for (int r = 0; r < k; ++r)
                sums[r].template add<action>(*own.at(r, k), unknown);
        }
        add_unknowns<action>(sums, beside, behind, x);
        QRV_UNROLL
        for (int r = 0; r < rows; ++r)
            sums[r].store(x.at(first + r));
    }
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
