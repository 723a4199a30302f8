// SLASD7: deflation in a merge that keeps its factors (deflation.hpp).
#include <algorithm>
#include <cmath>

#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/deflation.hpp"

namespace qrv::lapack {
namespace {

// The first elements of all right vectors and the last ones, by place; those of the parts stay as they were.
struct EndsOfVectors {
    const float *partsFirst, *partsLast;
    float *first, *last;
    int nl, m;
    bool factors;
    const CompactMerge& to;

    void begin() const {
        std::copy_n(partsFirst, nl + 1, first);
        std::fill(first + nl + 1, first + m, 0.0F);
        std::fill_n(last, nl + 1, 0.0F);
        std::copy(partsLast + nl + 1, partsLast + m, last + nl + 1);
        *to.givptr = 0;
    }
    float last_of_left(int i) const { return partsLast[i]; }
    float first_of_right(int i) const { return partsFirst[i]; }
    void turn(int i, int j, float c, float s) const {
        if (factors) {
            const int r = (*to.givptr)++;
            to.givcol(r, 1) = i + 1, to.givcol(r, 0) = j + 1;
            to.givnum(r, 1) = c, to.givnum(r, 0) = s;
        }
        turn_ends(i, j, c, s);
    }
    void turn_first(float c, float s) const {
        *to.c = c, *to.s = -s;
        turn_ends(nl, m - 1, c, s);
    }

private:
    void turn_ends(int i, int j, float c, float s) const {
        for (float* const x : {first, last}) {
            const float other = x[j];
            x[j] = c * other - s * x[i];
            x[i] = c * x[i] + s * other;
        }
    }
};

} // namespace

// The kinds in IDX, the order in IDXP.
void lasd7(bool factors, int nl, int nr, bool longer, float* d, float* zw, const CompactVectors& v, float alpha,
           float beta, float* dsigma, const CompactOrders& orders, const CompactMerge& to) {
    const int n = nl + nr + 1, m = n + longer;
    constexpr float roundings = 64; // z comes in float
    Deflation deflation{nl, n, m, orders.idxp, orders.idx, to.z, dsigma, roundings};
    const EndsOfVectors ends{v.vf, v.vl, v.vfw, v.vlw, nl, m, factors, to};
    ends.begin();
    *to.c = 1, *to.s = 0;
    deflation.run(d, alpha, beta, orders.idxq, orders.idxq, zw, ends);
    *to.k = deflation.kept;
    for (int r = 0; r < n; ++r) {
        const int from = deflation.place(deflation.order[r]);
        v.vf[r] = v.vfw[from];
        v.vl[r] = v.vlw[from];
        if (factors)
            to.perm[r] = from + 1;
    }
    if (longer) {
        v.vf[n] = v.vfw[n];
        v.vl[n] = v.vlw[n];
    }
}

} // namespace qrv::lapack
