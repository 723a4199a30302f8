// SLASRT: numbers in order, NaN behind all others.
#include <algorithm>

#include "lapack/calls/symmetric.hpp"

namespace qrv::lapack {

void sort(Order order, int n, float* d) {
    const bool ascending = order == Order::ascending;
    std::sort(d, d + n, [ascending](float x, float y) {
        return x != x ? false : y != y ? true : ascending ? x < y : x > y;
    });
}

} // namespace qrv::lapack
