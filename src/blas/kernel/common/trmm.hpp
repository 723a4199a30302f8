// Triangular products in place: a block of unknowns at a time, in the order in which each needs only itself and blocks
// that are still as they were.
#pragma once

#include "blas/kernel/common/triangular_blocks.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

struct Multiply {
    static constexpr Action action = Action::multiply;

    // Blocks for the GEMM that follows each, chunks for what stays in the cache meanwhile.
    static constexpr BlockLevel left[] = {{128, 1024}, {64, 512}}, right[] = {{256, 512}, {128, 512}, {64, 512}};
    static constexpr int leftLevels = 2, rightLevels = 3;

    template <class T>
    static T factor(T diagonal) {
        return diagonal;
    }

    template <class T>
    static void combine(const TriangularProblem<T>& problem, Range finished, Range unchanged) {
        problem.add(finished, unchanged, scalar<T>(1));
    }

    // Unknowns first to first + rows - 1 become sums over themselves and those behind, up to n.
    template <int rows, class T>
    static void group(int first, int n, const Coefficients<T>& a, const T* diagonal, const Unknowns& x) {
        StripOf<T> sums[rows];
        const Coefficients<T> own{a.at(first, 0), a.rowStep, a.columnStep};
        QRV_UNROLL
        for (int k = 0; k < rows; ++k) {
            const auto unknown = StripOf<T>::load(x.at(first + k));
            sums[k] = unknown;
            if (diagonal)
                sums[k].multiply_by(diagonal[first + k]);
            QRV_UNROLL
            for (int r = 0; r < k; ++r)
                sums[r].template add<action>(*own.at(r, first + k), unknown);
        }
        add_unknowns<action>(sums, own, first + rows, n, x);
        QRV_UNROLL
        for (int r = 0; r < rows; ++r)
            sums[r].store(x.at(first + r));
    }
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
