// SGEHD2: Hessenberg form by one reflector after the other.
//
// Source: G. Golub, C. Van Loan, Matrix Computations, 7.4.3.
#include <algorithm>

#include "lapack/calls/nonsymmetric.hpp"
#include "lapack/calls/reflectors.hpp"

namespace qrv::lapack {

void gehd2(int n, ActiveRange range, Matrix<float> a, float* tau, float* work) {
    for (int i = range.begin; i + 1 < range.end; ++i) {
        const int length = range.end - i - 1;
        float& first = a(i + 1, i);
        tau[i] = larfg(length, first, a.column(std::min(i + 2, n - 1), i));
        const float beta = first;
        first = 1;
        const Vector<const float> v = a.column(i + 1, i);
        larf(Side::right, range.end, length, v, tau[i], a.block(0, i + 1), work);
        larf(Side::left, length, n - i - 1, v, tau[i], a.block(i + 1, i + 1), work);
        first = beta;
    }
}

} // namespace qrv::lapack
