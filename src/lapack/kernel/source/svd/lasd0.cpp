// SLASD0: singular values of a bidiagonal matrix with vectors, by divide and conquer.
#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/division.hpp"

namespace qrv::lapack {

int lasd0(int n, bool longer, float* d, float* e, Matrix<float> u, Matrix<float> vt, int leaf, int* iwork,
          float* work) {
    const auto solve_leaf = [&](int first, int size, bool longerLeaf) {
        const BidiagonalVectors vectors{size + longerLeaf, size, 0, vt.block(first, first), u.block(first, first)};
        return lasdq(Uplo::upper, longerLeaf, size, d + first, e + first, vectors, work);
    };
    if (n <= leaf)
        return solve_leaf(0, n, longer);
    return divide_and_conquer(n, longer, leaf, iwork, solve_leaf, [&](const DivisionNode& node) {
        return lasd1(node.nl, node.nr, node.longer, d + node.first, d[node.row], e[node.row],
                     u.block(node.first, node.first), vt.block(node.first, node.first), node.idxq,
                     iwork + std::ptrdiff_t{4} * n, work);
    });
}

} // namespace qrv::lapack
