// Triangular product on a team: B := alpha*op(A)*B or B := alpha*B*op(A).
#include "blas/blas.hpp"
#include "blas/thread/32/level3/triangular_team_omp.hpp"

using namespace qrv;

void qrv_blas_strmm(QRV_TRSM_PARAMETERS(float)) {
    triangular_on_team<WithoutRows::serial>(qrv_blas_strmm_kernel, QRV_TRSM_ARGUMENTS);
}
void qrv_blas_ctrmm(QRV_TRSM_PARAMETERS(SingleComplex)) {
    triangular_on_team<WithoutRows::serial>(qrv_blas_ctrmm_kernel, QRV_TRSM_ARGUMENTS);
}
