// CHERK on a team.
#include "blas/thread/32/level3/rank_update_team_omp.hpp"

using namespace qrv;

void qrv_blas_cherk(QRV_SYRK_PARAMETERS(SingleComplex, float)) {
    syrk_on_team<Op::adjoint, qrv_blas_cherk_kernel>(QRV_SYRK_ARGUMENTS);
}
