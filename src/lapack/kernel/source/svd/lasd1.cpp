// SLASD1: the merge of divide and conquer, for the singular values of a bidiagonal matrix.
//
// With the decompositions of both parts the matrix is U (first row z, the rest diagonal) V'. Values that are equal, and
// those that z does not reach, need no merging: they are deflated (lasd2.cpp). The others are the roots of the secular
// equation, and their vectors are products with the old ones (lasd3.cpp).
#include <algorithm>
#include <cmath>
#include <cstddef>

#include "lapack/calls/norms.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/merge.hpp"

namespace qrv::lapack {

int lasd1(int nl, int nr, bool longer, float* d, float alpha, float beta, Matrix<float> u, Matrix<float> vt, int* idxq,
          int* iwork, float* work) {
    const int n = nl + nr + 1;
    d[nl] = 0;
    float norm = std::max(std::fabs(alpha), std::fabs(beta));
    for (int i = 0; i < n; ++i)
        norm = std::max(norm, std::fabs(d[i]));
    if (norm == 0)
        norm = 1;
    lascl({}, norm, 1, n, 1, Matrix<float>{d, n});
    const int m = n + longer;
    float *const u2 = work + std::ptrdiff_t{2} * m, *const vt2 = u2 + std::ptrdiff_t{n} * n,
                 *const q = vt2 + std::ptrdiff_t{m} * m;
    Merge merge{nl,   nr,       n,       m,        u,     vt, iwork, iwork + n, iwork + std::ptrdiff_t{2} * n,
                work, work + m, {u2, n}, {vt2, m}, {q, n}};
    merge.deflate(d, alpha / norm, beta / norm, idxq);
    if (!merge.solve(d))
        return 1;
    lascl({}, 1, norm, n, 1, Matrix<float>{d, n});
    lamrg(merge.kept, n - merge.kept, d, 1, -1, idxq);
    return 0;
}

} // namespace qrv::lapack
