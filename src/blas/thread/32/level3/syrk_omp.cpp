// SSYRK and CSYRK on a team.
#include "blas/thread/32/level3/rank_update_team_omp.hpp"

using namespace qrv;

void qrv_blas_ssyrk(QRV_SYRK_PARAMETERS(float, float)) {
    syrk_on_team<Op::transpose, qrv_blas_ssyrk_kernel>(QRV_SYRK_ARGUMENTS);
}
void qrv_blas_csyrk(QRV_SYRK_PARAMETERS(SingleComplex, SingleComplex)) {
    syrk_on_team<Op::transpose, qrv_blas_csyrk_kernel>(QRV_SYRK_ARGUMENTS);
}
