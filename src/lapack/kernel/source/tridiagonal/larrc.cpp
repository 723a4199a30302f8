// SLARRC: eigenvalues in an interval, counted by the pivots that are not positive at either end.
#include "lapack/calls/symmetric.hpp"

namespace qrv::lapack {
namespace {

int count_of_matrix(int n, const float* d, const float* e, float x) {
    float pivot = d[0] - x;
    int count = pivot <= 0;
    for (int i = 0; i < n - 1; ++i) {
        pivot = (d[i + 1] - x) - e[i] * e[i] / pivot;
        count += pivot <= 0;
    }
    return count;
}

int count_of_factors(int n, const float* d, const float* l, float x) {
    float s = -x;
    int count = 0;
    for (int i = 0; i < n - 1; ++i) {
        const float pivot = d[i] + s, product = l[i] * d[i] * l[i], ratio = product / pivot;
        count += pivot <= 0;
        s = ratio == 0 ? product - x : s * ratio - x;
    }
    return count + (d[n - 1] + s <= 0);
}

} // namespace

EndCounts larrc(bool factored, int n, float low, float high, const float* d, const float* e) {
    if (n <= 0)
        return {};
    const auto count = [=](float x) { return (factored ? count_of_factors : count_of_matrix)(n, d, e, x); };
    const int upToLow = count(low), upToHigh = count(high);
    return {upToHigh - upToLow, upToLow, upToHigh};
}

} // namespace qrv::lapack
