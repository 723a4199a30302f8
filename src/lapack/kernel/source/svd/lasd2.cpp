// SLASD2: deflation in a merge. A value whose element of z is negligible is a singular value already; of two values
// that are equal, a rotation of their vectors makes one such.
#include <algorithm>
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/merge.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

// Roundings of the largest number: by so much may values differ that count as equal, as the vectors of closer ones
// would lose their orthogonality; and so large may an element of z be that is left out.
constexpr float equalUnits = 8, negligibleUnits = 8;

} // namespace

// The two parts, each ascending in the order of idxq, into one order.
void Merge::sort(const float* d, const int* idxq) {
    int left = 0, right = nl + 1;
    for (int k = 1; k < n; ++k) {
        const int l = left < nl ? idxq[left] - 1 : 0, r = right < n ? nl + idxq[right] : 0; // places in d
        const bool fromLeft = right >= n || (left < nl && d[l] <= d[r]);
        order[k] = fromLeft ? l + 1 : r;
        ++(fromLeft ? left : right);
    }
}

// Row nl of V' and, if there is one, the last row, which has no value, are combined such that z reaches the former
// alone. Result: its element of z.
float Merge::form_first_row(float alpha, float beta, float tolerance) {
    const float own = alpha * vt(nl, nl);
    if (m == n)
        return std::fabs(own) <= tolerance ? tolerance : own;
    const float last = beta * vt(m - 1, nl + 1), length = std::hypot(own, last);
    const bool negligible = length <= tolerance;
    const float c = negligible ? 1 : own / length, s = negligible ? 0 : last / length;
    kernel::rot(m, vt.row(nl, 0), vt.row(m - 1, 0), c, s);
    return negligible ? tolerance : length;
}

void Merge::deflate(float* d, float alpha, float beta, const int* idxq) {
    sort(d, idxq);
    for (int i = 0; i < nl; ++i)
        z[i + 1] = alpha * vt(i, nl);
    for (int i = nl + 1; i < n; ++i)
        z[i] = beta * vt(i, nl + 1);
    std::copy_backward(d, d + nl, d + nl + 1); // now by value
    d[0] = 0;
    const float unit = machine::epsilon * std::max({d[order[n - 1]], std::fabs(alpha), std::fabs(beta)});
    const float equal = equalUnits * unit, negligible = negligibleUnits * unit;
    kind[0] = ofBoth;
    for (int j = 1; j < n; ++j)
        kind[j] = j <= nl ? ofLeft : ofRight;

    int before = 0; // the value that comes before in the order and is not deflated
    for (int k = 1; k < n; ++k) {
        const int j = order[k];
        if (std::fabs(z[j]) <= negligible) {
            kind[j] = deflated;
            continue;
        }
        if (before != 0 && d[j] - d[before] <= equal) {
            const float length = std::hypot(z[before], z[j]), c = z[j] / length, s = -z[before] / length;
            kernel::rot(n, u.column(0, place(before)), u.column(0, place(j)), c, s);
            kernel::rot(m, vt.row(place(before), 0), vt.row(place(j), 0), c, s);
            z[j] = length;
            if (kind[j] != kind[before])
                kind[j] = ofBoth;
            kind[before] = deflated;
        }
        before = j;
    }
    z[0] = form_first_row(alpha, beta, negligible);
    arrange(d);
    // No pole may meet that at 0.
    if (kept > 1)
        dsigma[1] = std::max(dsigma[1], negligible / 2);
}

// What is kept comes first, ascending, then the deflated values, descending. The vectors of the former are moved
// together by the rows of U that they have.
void Merge::arrange(float* d) {
    int* const all = group;
    std::copy(order + 1, order + n, all);
    kept = 1;
    order[0] = 0;
    for (int k = 0, behind = n; k < n - 1; ++k)
        if (kind[all[k]] == deflated)
            order[--behind] = all[k];
        else
            order[kept++] = all[k];
    float* const byValue = u2.data; // which is made below
    std::copy(z, z + n, byValue);
    for (int k = 0; k < n; ++k) {
        z[k] = byValue[order[k]];
        dsigma[k] = d[order[k]];
    }
    std::copy(dsigma + kept, dsigma + n, d + kept);

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
    Merge merge{nl, nr, n, n + longer, u, vt, orders.idxp, orders.idx, orders.idxc, z, dsigma, u2, vt2, {nullptr, 1}};
    merge.deflate(d, alpha, beta, orders.idxq);
    *k = merge.kept;
    for (int j = 0; j < merge.kept; ++j)
        ++orders.idxc[j];
    std::copy_n(merge.count, 3, orders.coltyp);
    orders.coltyp[3] = n - merge.kept;
}

} // namespace qrv::lapack
