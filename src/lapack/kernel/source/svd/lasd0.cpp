// SLASD0: singular values of a bidiagonal matrix with vectors, by divide and conquer.
#include <numeric>

#include "lapack/calls/svd.hpp"

namespace qrv::lapack {

int lasd0(int n, bool longer, float* d, float* e, Matrix<float> u, Matrix<float> vt, int leaf, int* iwork,
          float* work) {
    const auto solve_leaf = [&](int first, int size, bool longerLeaf) {
        const BidiagonalVectors vectors{size + longerLeaf, size, 0, vt.block(first, first), u.block(first, first)};
        return lasdq(Uplo::upper, longerLeaf, size, d + first, e + first, vectors, work);
    };
    if (n <= leaf)
        return solve_leaf(0, n, longer);
    int *const center = iwork, *const left = center + n, *const right = left + n, *const idxq = right + n,
               *const rest = idxq + n;
    const DivisionTree tree = lasdt(n, center, left, right, leaf);
    // Only the very last part ends where the matrix does; all others have a column more.
    for (int node = tree.nodes / 2; node < tree.nodes; ++node) {
        const int row = center[node] - 1, nl = left[node], nr = right[node];
        if (const int info = solve_leaf(row - nl, nl, true))
            return info;
        if (const int info = solve_leaf(row + 1, nr, node < tree.nodes - 1 || longer))
            return info;
        std::iota(idxq + row - nl, idxq + row, 1);
        std::iota(idxq + row + 1, idxq + row + 1 + nr, 1);
    }
    for (int level = tree.levels - 1; level >= 0; --level) {
        const int firstNode = (1 << level) - 1, lastNode = 2 * firstNode;
        for (int node = firstNode; node <= lastNode; ++node) {
            const int row = center[node] - 1, nl = left[node], first = row - nl;
            if (const int info = lasd1(nl, right[node], node < lastNode || longer, d + first, d[row], e[row],
                                       u.block(first, first), vt.block(first, first), idxq + first, rest, work))
                return info;
        }
    }
    return 0;
}

} // namespace qrv::lapack
