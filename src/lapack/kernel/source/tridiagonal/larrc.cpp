// SLARRC: eigenvalues in an interval, counted by the negative pivots at either end.
#include "lapack/calls/symmetric.hpp"

namespace qrv::lapack {
namespace {

// A pivot of 0 counts as negative: the next one is infinite then, and positive.
bool is_counted(float& pivot) {
    if (pivot == 0)
        pivot = -0.0F;
    return pivot <= 0;
}

int count_of_matrix(int n, const float* d, const float* e, float x) {
    float pivot = d[0] - x;
    int count = is_counted(pivot);
    for (int i = 0; i < n - 1; ++i) {
        const float square = e[i] * e[i];
        pivot = d[i + 1] - x - (square == 0 ? 0 : square / pivot);
        count += is_counted(pivot);
    }
    return count;
}

int count_of_factors(int n, const float* d, const float* l, float x) {
    float s = -x;
    int count = 0;
    for (int i = 0; i < n; ++i) {
        float pivot = d[i] + s;
        count += is_counted(pivot);
        if (i == n - 1)
            break;
        const float product = l[i] * d[i] * l[i], ratio = product == 0 ? 0 : product / pivot;
        s = ratio == 0 ? product - x : s * ratio - x; // s / pivot is 1 at an infinite pivot
    }
    return count;
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
