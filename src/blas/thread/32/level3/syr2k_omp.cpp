// SSYR2K and CSYR2K on a team.
#include "blas/thread/32/level3/rank_update_team_omp.hpp"

using namespace qrv;

void qrv_blas_ssyr2k(QRV_SYR2K_PARAMETERS(float, float)) {
    syr2k_on_team<Op::transpose, qrv_blas_ssyr2k_kernel>(QRV_SYR2K_ARGUMENTS);
}
void qrv_blas_csyr2k(QRV_SYR2K_PARAMETERS(SingleComplex, SingleComplex)) {
    syr2k_on_team<Op::transpose, qrv_blas_csyr2k_kernel>(QRV_SYR2K_ARGUMENTS);
}
