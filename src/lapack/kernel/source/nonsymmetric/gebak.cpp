// SGEBAK: eigenvectors of a matrix from those of the balanced one.
#include "blas/calls.hpp"
#include "lapack/calls/nonsymmetric.hpp"

namespace qrv::lapack {

void gebak(Balance what, Side side, int n, ActiveRange range, const float* scale, int m, Matrix<float> v) {
    if (m == 0)
        return;
    if (what.scales && range.size() > 1)
        for (int i = range.begin; i < range.end; ++i)
            kernel::scal(m, side == Side::right ? scale[i] : 1 / scale[i], v.row(i, 0));
    if (!what.permutes)
        return;
    const auto interchange = [&](int i) {
        if (const int k = static_cast<int>(scale[i]) - 1; k != i)
            blas::swap(m, v.row(i, 0), v.row(k, 0));
    };
    for (int i = range.begin - 1; i >= 0; --i) // the last interchange first
        interchange(i);
    for (int i = range.end; i < n; ++i)
        interchange(i);
}

} // namespace qrv::lapack
