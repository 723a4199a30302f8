// Triangular solve on a team: op(A)*X = alpha*B or X*op(A) = alpha*B.
#include "blas/blas.hpp"
#include "blas/thread/32/level3/triangular_team_omp.hpp"

using namespace qrv;

void qrv_blas_strsm(QRV_TRSM_PARAMETERS(float)) {
    triangular_on_team<WithoutRows::asOthers>(qrv_blas_strsm_kernel, QRV_TRSM_ARGUMENTS);
}
void qrv_blas_ctrsm(QRV_TRSM_PARAMETERS(SingleComplex)) {
    triangular_on_team<WithoutRows::asOthers>(qrv_blas_ctrsm_kernel, QRV_TRSM_ARGUMENTS);
}
