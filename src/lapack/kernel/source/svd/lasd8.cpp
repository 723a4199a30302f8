// SLASD8: the values of a merge that keeps its factors, roots of the secular equation (secular_equation.hpp), and what
// their right vectors make of the first and last elements of those before.
#include <algorithm>
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/secular_equation.hpp"

namespace qrv::lapack {

int lasd8(bool factors, int k, float* d, float* z, float* vf, float* vl, float* difl, Matrix<float> difr,
          const float* dsigma, float* work) {
    if (k == 1) {
        d[0] = difl[0] = std::fabs(z[0]);
        if (factors)
            difr(0, 1) = 1;
        return 0;
    }
    float *const vector = work, *const other = vector + k, *const third = other + k;
    const float rho = take_length(k, z);
    std::fill_n(third, k, 1.0F);
    for (int j = 0; j < k; ++j) { // differences in `vector`, sums in `other`, squares of z in the third part
        if (lasd4(k, j, dsigma, z, vector, rho, &d[j], other) != 0)
            return 1;
        difl[j] = -vector[j];
        if (j + 1 < k)
            difr(j, 0) = -vector[j + 1];
        for (int i = 0; i < k; ++i)
            third[i] = static_cast<float>(third[i] * factor_of_root(dsigma, k, i, j, vector[i], other[i]));
    }
    for (int i = 0; i < k; ++i)
        z[i] = corrected(third[i], z[i]);

    // The right vectors, whose differences to farther poles come from those to the nearest two. New ends in `other` and
    // the third part.
    for (int j = 0; j < k; ++j) {
        for (int i = 0; i < k; ++i) {
            const float difference =
                i <= j ? (dsigma[i] - dsigma[j]) - difl[j] : (dsigma[i] - dsigma[j + 1]) - difr(j, 0);
            vector[i] = z[i] / difference / (dsigma[i] + d[j]);
        }
        const float length = kernel::nrm2(k, Vector<float>{vector});
        other[j] = kernel::dotu<const float>(k, {vector}, {vf}) / length;
        third[j] = kernel::dotu<const float>(k, {vector}, {vl}) / length;
        if (factors)
            difr(j, 1) = length;
    }
    std::copy_n(other, k, vf);
    std::copy_n(third, k, vl);
    return 0;
}

} // namespace qrv::lapack
