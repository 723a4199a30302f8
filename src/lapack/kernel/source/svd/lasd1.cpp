// SLASD1: the merge of divide and conquer, for the singular values of a bidiagonal matrix.
//
// With the decompositions of both parts the matrix is U (first row z, the rest diagonal) V'. Values that are equal, and
// those that z does not reach, need no merging: they are deflated (lasd2.cpp). The others are the roots of the secular
// equation, and their vectors are products with the old ones (lasd3.cpp).
#include <cstddef>

#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/merge.hpp"

namespace qrv::lapack {

int lasd1(int nl, int nr, bool longer, float* d, float alpha, float beta, Matrix<float> u, Matrix<float> vt, int* idxq,
          int* iwork, float* work) {
    const int n = nl + nr + 1, m = n + longer;
    float *const u2 = work + std::ptrdiff_t{2} * m, *const vt2 = u2 + std::ptrdiff_t{n} * n,
                 *const q = vt2 + std::ptrdiff_t{m} * m;
    Merge merge{{nl, n, m, iwork, iwork + n, work, work + m, roundingsOfMerge},
                nr,
                u,
                vt,
                iwork + std::ptrdiff_t{2} * n,
                {u2, n},
                {vt2, m},
                {q, n}};
    return merge_scaled(nl, n, d, alpha, beta, idxq, [&](float ownAlpha, float ownBeta) {
        merge.deflate(d, ownAlpha, ownBeta, idxq);
        return merge.solve(d) ? merge.kept : 0;
    });
}

} // namespace qrv::lapack
