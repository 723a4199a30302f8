// STBTRS: solution of a triangular banded system, many right-hand sides on a team.
#include <algorithm>

#include "lapack/calls/band.hpp"
#include "lapack/kernel/source/band/band_view.hpp"
#include "lapack/kernel/source/band/right_hand_sides.hpp"
#include "lapack/kernel/source/band/triangular_band.hpp"
#include "qrv/service.h"
#include "service/tuning.hpp"

namespace qrv::lapack {

int tbtrs(Uplo uplo, Op op, Diag diag, int n, int kd, int nrhs, const float* ab, int ldab, Matrix<float> b) {
    const Matrix<const float> a = band_view(ab, ldab, uplo == Uplo::upper ? kd : 0);
    if (diag == Diag::nonUnit)
        for (int i = 0; i < n; ++i)
            if (a(i, i) == 0)
                return i + 1;
    if (n == 0 || nrhs == 0)
        return 0;
    const int threads =
        right_hand_side_threads(nrhs, qrv_serv_get_max_threads(), tuning::crossover("STBTRS", n, kd, nrhs));
    share_right_hand_sides(threads, nrhs, [&](int first, int count) {
        const int nb = std::min(tuning::block_size("STBTRS", n, kd, count), kd);
        solve_band({uplo, op == Op::none ? op : Op::transpose, diag, n, kd, a}, nb, count, b.block(0, first));
    });
    return 0;
}

} // namespace qrv::lapack
