// SLASD6: the merge of divide and conquer that keeps its factors instead of the vectors.
//
// Of the vectors only the first and the last elements of the right ones are carried on, which is what the next merge
// needs for its z. Each merge multiplies the vectors of its parts by rotations, a permutation, and the vectors of its
// secular equation, which z, its poles and its roots tell.
#include <algorithm>

#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/deflation.hpp"

namespace qrv::lapack {

int lasd6(bool factors, int nl, int nr, bool longer, float* d, float* vf, float* vl, float alpha, float beta, int* idxq,
          const CompactMerge& to, float* work, int* iwork) {
    const int n = nl + nr + 1, m = n + longer;
    float *const dsigma = work, *const zw = dsigma + n, *const vfw = zw + m, *const vlw = vfw + m;
    return merge_scaled(nl, n, d, alpha, beta, idxq, [&](float ownAlpha, float ownBeta) {
        lasd7(factors, nl, nr, longer, d, zw, {vf, vfw, vl, vlw}, ownAlpha, ownBeta, dsigma, {iwork, iwork + n, idxq},
              to);
        const int kept = *to.k;
        if (lasd8(factors, kept, d, to.z, vf, vl, to.difl, to.difr, dsigma, zw) != 0)
            return 0;
        if (factors) {
            std::copy_n(d, kept, to.poles.column(0));
            std::copy_n(dsigma, kept, to.poles.column(1));
        }
        return kept;
    });
}

} // namespace qrv::lapack
