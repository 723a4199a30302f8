// CHEMM on a team.
#include "blas/thread/32/level3/symm_team_omp.hpp"

using namespace qrv;

void qrv_blas_chemm(QRV_SYMM_PARAMETERS(SingleComplex)) {
    symm_on_team<qrv_blas_chemm_kernel>(QRV_SYMM_ARGUMENTS);
}
