// Scaling of C by a team, ahead of work regions that only add to it.
#include <omp.h>

#include "blas/thread/common/level3/gemm_team.hpp"

namespace qrv {

void gemm_scale_region(const GemmProblem<float>& problem, int threads) {
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads();
        const int thread = omp_get_thread_num();
        const GemmProblem<float> part = gemm_scale_split(problem.sizes(), team) == GemmSplit::rows
                                            ? problem.rows(equal_slice(problem.m, team, thread))
                                            : problem.columns(equal_slice(problem.n, team, thread));
        qrv_blas_sgemm_scale_c(&part.m, &part.n, &part.beta, part.c, &part.ldc);
    }
}

} // namespace qrv
