// CHER2K on a team.
#include "blas/thread/32/level3/rank_update_team_omp.hpp"

using namespace qrv;

void qrv_blas_cher2k(QRV_SYR2K_PARAMETERS(SingleComplex, float)) {
    syr2k_on_team<Op::adjoint, qrv_blas_cher2k_kernel>(QRV_SYR2K_ARGUMENTS);
}
