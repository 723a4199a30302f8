// SSYMM and CSYMM on a team.
#include "blas/thread/32/level3/symm_team_omp.hpp"

using namespace qrv;

void qrv_blas_ssymm(QRV_SYMM_PARAMETERS(float)) {
    symm_on_team<qrv_blas_ssymm_kernel>(QRV_SYMM_ARGUMENTS);
}
void qrv_blas_csymm(QRV_SYMM_PARAMETERS(SingleComplex)) {
    symm_on_team<qrv_blas_csymm_kernel>(QRV_SYMM_ARGUMENTS);
}
