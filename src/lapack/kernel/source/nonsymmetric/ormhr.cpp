// SORMHR: products with the orthogonal matrix of SGEHRD, which is the unit matrix outside of its active range.
#include <algorithm>

#include "lapack/calls/nonsymmetric.hpp"
#include "lapack/calls/qr.hpp"

namespace qrv::lapack {

std::int64_t ormhr_work(Side side, int m, int n, ActiveRange range) {
    const int order = range.size() - 1;
    const bool left = side == Side::left;
    return m == 0 || n == 0 || order <= 0 ? 1
                                          : orm_work<float>(QForm::qr, side, left ? order : m, left ? n : order, order);
}

void ormhr(Side side, Op op, int m, int n, ActiveRange range, Matrix<const float> a, const float* tau, Matrix<float> c,
           float* work, int lwork) {
    const int order = range.size() - 1, first = range.begin + 1;
    if (m == 0 || n == 0 || order <= 0)
        return;
    const bool left = side == Side::left;
    orm<float>(QForm::qr, side, op, left ? order : m, left ? n : order, order, a.block(first, range.begin),
               tau + range.begin, left ? c.block(first, 0) : c.block(0, first), work, lwork);
}

} // namespace qrv::lapack
