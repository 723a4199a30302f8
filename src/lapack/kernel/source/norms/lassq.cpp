// SLASSQ, CLASSQ: a sum of squares as scale^2 * sumsq, where scale is the largest magnitude met.
#include <cmath>

#include "lapack/calls/norms.hpp"

namespace qrv::lapack {
namespace {

void add_square(ScaledSquares& sum, float part) {
    if (part == 0)
        return;
    const float size = std::fabs(part);
    if (sum.scale < size) {
        const float ratio = sum.scale / size;
        sum = {size, 1 + sum.sumsq * (ratio * ratio)};
    } else {
        const float ratio = size == sum.scale ? 1 : size / sum.scale; // of two infinities too
        sum.sumsq += ratio * ratio;
    }
}
void add_square(ScaledSquares& sum, SingleComplex x) {
    add_square(sum, x.re);
    add_square(sum, x.im);
}

} // namespace

template <class T>
ScaledSquares lassq(int n, const T* x, int incx, ScaledSquares sum) {
    for (int i = 0; i < n; ++i)
        add_square(sum, x[std::ptrdiff_t{i} * incx]);
    return sum;
}

template ScaledSquares lassq(int, const float*, int, ScaledSquares);
template ScaledSquares lassq(int, const SingleComplex*, int, ScaledSquares);

} // namespace qrv::lapack
