// SORGHR: the orthogonal matrix of SGEHRD.
#include <algorithm>

#include "lapack/calls/nonsymmetric.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/qr.hpp"

namespace qrv::lapack {

std::int64_t orghr_work(ActiveRange range) {
    const int order = std::max(0, range.size() - 1);
    return order == 0 ? 1 : orgqr_work<float>(order, order, order);
}

// The reflectors move to the right by a column, to where the columns of Q are that they make.
void orghr(int n, ActiveRange range, Matrix<float> a, const float* tau, float* work, int lwork) {
    const auto [begin, end] = range;
    const int order = range.size() - 1;
    for (int j = end - 1; j > begin; --j) {
        std::copy(&a(j + 1, j - 1), a.column(j - 1) + end, &a(j + 1, j));
        std::fill(a.column(j), a.column(j) + j + 1, 0.0F);
        std::fill(a.column(j) + end, a.column(j) + n, 0.0F);
    }
    const int left = std::min(begin + 1, n), right = std::max(end, left); // unit columns before and behind
    laset<float>(Part::whole, n, left, 0, 1, a);
    for (int j = right; j < n; ++j) {
        std::fill(a.column(j), a.column(j) + n, 0.0F);
        a(j, j) = 1;
    }
    if (order > 0)
        orgqr<float>(order, order, order, a.block(begin + 1, begin + 1), tau + begin, work, lwork);
}

} // namespace qrv::lapack
