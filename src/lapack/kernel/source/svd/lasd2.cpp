// SLASD2: deflation in a merge with all vectors (deflation.hpp).
#include <algorithm>

#include "lapack/kernel/source/svd/merge.hpp"

namespace qrv::lapack {

void Merge::deflate(float* d, float alpha, float beta, const int* idxq) {
    run(d, alpha, beta, idxq, group, u2.data, *this);
    group_vectors();
}

// The vectors of what is kept are moved together by the rows of U that they have.
void Merge::group_vectors() {
    group[0] = 0;
    int next = 1;
    for (const Kind one : {ofLeft, ofBoth, ofRight}) {
        const int first = next;
        for (int k = 1; k < kept; ++k)
            if (kind[order[k]] == one)
                group[next++] = k;
        count[one] = next - first;
    }
    for (int r = 0; r < n; ++r) {
        const int from = place(order[r < kept ? group[r] : r]);
        kernel::copy(n, u.column(0, from), u2.column(0, r));
        kernel::copy(m, vt.row(from, 0), vt2.row(r, 0));
    }
    lacpy<float>(Part::whole, n, n - kept, u2.block(0, kept), u.block(0, kept));
    lacpy<float>(Part::whole, n - kept, m, vt2.block(kept, 0), vt.block(kept, 0));
}

// The kinds in IDX, the order in IDXP. A group in IDXC is counted from 1.
void lasd2(int nl, int nr, bool longer, int* k, float* d, float* z, float alpha, float beta, Matrix<float> u,
           Matrix<float> vt, float* dsigma, Matrix<float> u2, Matrix<float> vt2, const MergeOrders& orders) {
    const int n = nl + nr + 1;
    Merge merge{{nl, n, n + longer, orders.idxp, orders.idx, z, dsigma, roundingsOfMerge},
                nr,
                u,
                vt,
                orders.idxc,
                u2,
                vt2,
                {nullptr, 1}};
    merge.deflate(d, alpha, beta, orders.idxq);
    *k = merge.kept;
    for (int j = 0; j < merge.kept; ++j)
        ++orders.idxc[j];
    std::copy_n(merge.count, 3, orders.coltyp);
    orders.coltyp[3] = n - merge.kept;
}

} // namespace qrv::lapack
