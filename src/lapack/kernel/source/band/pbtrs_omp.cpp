// SPBTRS: solution of a positive definite banded system from the factor of SPBTRF, many right-hand sides on a team.
#include <algorithm>

#include "lapack/calls/band.hpp"
#include "lapack/kernel/source/band/band_view.hpp"
#include "lapack/kernel/source/band/right_hand_sides.hpp"
#include "lapack/kernel/source/band/triangular_band.hpp"
#include "qrv/service.h"
#include "service/tuning.hpp"

namespace qrv::lapack {

void pbtrs(Uplo uplo, int n, int kd, int nrhs, const float* ab, int ldab, Matrix<float> b) {
    if (n == 0 || nrhs == 0)
        return;
    const bool upper = uplo == Uplo::upper;
    const Matrix<const float> a = band_view(ab, ldab, upper ? kd : 0);
    const Op first = upper ? Op::transpose : Op::none, second = upper ? Op::none : Op::transpose;
    const int threads =
        right_hand_side_threads(nrhs, qrv_serv_get_max_threads(), tuning::crossover("SPBTRS", n, kd, nrhs));
    share_right_hand_sides(threads, nrhs, [&](int column, int count) {
        const int nb = std::min(tuning::block_size("SPBTRS", n, kd, count), kd);
        for (const Op op : {first, second})
            solve_band({uplo, op, Diag::nonUnit, n, kd, a}, nb, count, b.block(0, column));
    });
}

} // namespace qrv::lapack
