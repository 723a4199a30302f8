// Scaling of C by a team, ahead of work regions that only add to it.
#include <omp.h>

#include "blas/thread/common/level3/gemm_team.hpp"

void qrv::gemm_scale_region(const GemmCall<float>& call, int threads) {
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads(), thread = omp_get_thread_num();
        const GemmCall<float> part = gemm_scale_split(call.sizes(), team) == GemmSplit::rows
                                         ? call.rows(equal_slice(call.m, team, thread))
                                         : call.columns(equal_slice(call.n, team, thread));
        kernel::scale(part.m, part.n, part.beta, part.c);
    }
}
