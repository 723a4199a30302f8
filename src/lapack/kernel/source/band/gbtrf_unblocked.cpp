// SGBTF2: the LU factorization of a band, column by column: choose the pivot among the kl rows below, interchange,
// divide, and take the product off the rows and columns that the pivot row reaches.
#include <algorithm>
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/kernel/source/band/gbtrf.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {

void clear_first_fill(const BandShape& shape, int column, Matrix<float> a) {
    std::fill_n(&a(0, column), std::min(column - shape.ku, shape.m), 0.0F);
}

void clear_fill(const BandShape& shape, int j, Matrix<float> a) {
    if (shape.kv() < shape.n - j)
        std::fill_n(&a(j, j + shape.kv()), std::min(shape.kl, shape.m - j), 0.0F);
}

void divide_multipliers(int n, float pivot, float* x) {
    if (std::fabs(pivot) >= machine::safeMinimum)
        kernel::scal(n, 1 / pivot, Vector{x});
    else
        for (int i = 0; i < n; ++i)
            x[i] /= pivot;
}

int gbtrf_unblocked(const BandShape& shape, Matrix<float> a, int* ipiv) {
    const int m = shape.m, n = shape.n, kl = shape.kl, ku = shape.ku;
    for (int column = ku + 1; column < std::min(shape.kv(), n); ++column)
        clear_first_fill(shape, column, a);
    int info = 0;
    int reach = 0; // the last column that a pivot row so far has elements in
    for (int j = 0; j < std::min(m, n); ++j) {
        clear_fill(shape, j, a);
        const int below = std::min(kl, m - j - 1);
        const int pivotRow = j + kernel::iamax(below + 1, a.column(j, j)) - 1;
        ipiv[j] = pivotRow + 1;
        const float pivot = a(pivotRow, j);
        if (pivot == 0) {
            info = info == 0 ? j + 1 : info;
            continue;
        }
        reach = std::max(reach, pivotRow + std::min(ku, n - 1 - pivotRow));
        if (pivotRow != j)
            kernel::swap(reach - j + 1, a.row(j, j), a.row(pivotRow, j));
        if (below > 0) {
            divide_multipliers(below, pivot, &a(j + 1, j));
            if (reach > j)
                kernel::geru(below, reach - j, -1, a.column(j + 1, j), a.row(j, j + 1), a.block(j + 1, j + 1));
        }
    }
    return info;
}

} // namespace qrv::lapack
