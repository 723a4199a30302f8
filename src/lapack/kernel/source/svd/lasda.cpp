// SLASDA: singular values of a bidiagonal matrix by divide and conquer, with the factors of the vectors: those of the
// leaves, and of each merge what tells how it multiplies the vectors of its parts (lasd6.cpp).
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/division.hpp"

namespace qrv::lapack {

int lasda(bool factors, int leaf, int n, bool longer, float* d, float* e, const CompactForm& to, float* work,
          int* iwork) {
    const int m = n + longer;
    float *const vf = work, *const vl = vf + m, *const rest = vl + m;
    // Of a leaf without factors V' is needed too, for its ends.
    const auto solve_leaf = [&](int first, int size, bool longerLeaf, bool vectors) {
        const int columns = size + longerLeaf;
        const Matrix<float> u = to.u.block(first, 0),
                            vt = factors ? to.vt.block(first, 0) : Matrix<float>{rest, columns};
        if (vectors)
            laset(Part::whole, columns, columns, 0.0F, 1.0F, vt);
        if (factors)
            laset(Part::whole, size, size, 0.0F, 1.0F, u);
        const int info = lasdq(Uplo::upper, longerLeaf, size, d + first, e + first,
                               {vectors ? columns : 0, factors ? size : 0, 0, vt, u},
                               factors ? rest : rest + std::ptrdiff_t{columns} * columns);
        if (vectors) {
            kernel::copy(columns, vt.column(0, 0), Vector<float>{vf + first});
            kernel::copy(columns, vt.column(0, columns - 1), Vector<float>{vl + first});
        }
        return info;
    };
    if (n <= leaf)
        return solve_leaf(0, n, longer, factors);
    return divide_and_conquer(
        n, longer, leaf, iwork, [&](int first, int size, bool last) { return solve_leaf(first, size, last, true); },
        [&](const DivisionNode& node) {
            return lasd6(factors, node.nl, node.nr, node.longer, d + node.first, vf + node.first, vl + node.first,
                         d[node.row], e[node.row], node.idxq,
                         to.merge(factors, node.first, node.level, node.number - 1), rest,
                         iwork + std::ptrdiff_t{4} * n);
        });
}

} // namespace qrv::lapack
