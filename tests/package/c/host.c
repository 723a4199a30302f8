/* Programs in C on the names of other libraries link with libqrv_blas alone, and reach its controls. */
#include <qrv/service.h>
#include <stdio.h>

float sdot_(const int* n, const float* x, const int* incx, const float* y, const int* incy);
float cblas_sdot(int n, const float* x, int incx, const float* y, int incy);

int main(void) {
    const float x[3] = {1, 2, 3};
    const int n = 3, step = 1;
    qrv_serv_set_num_threads(2);
    printf("qrv %s\n", qrv_serv_get_version());
    return sdot_(&n, x, &step, x, &step) != 14 || cblas_sdot(n, x, step, x, step) != 14;
}
