/* The public headers as C99, with the complex numbers of C, and a program's own XERBLA in place of the library's. */
#include "qrv/native.h"
#include "qrv/service.h"

#include <complex.h>
#include <stdio.h>
#include <string.h>

static int position;

void XERBLA(const char* name, const int* info, int length) {
    if (length == 6 && memcmp(name, "SGEMM ", 6) == 0)
        position = *info;
}

int main(void) {
    const int two = 2, bad = 1, step = 1;
    const float one = 1;
    float a[4] = {1, 2, 3, 4}, c[4] = {0, 0, 0, 0};

    SGEMM("N", "N", &two, &two, &two, &one, a, &bad, a, &two, &one, c, &two);
    if (position != 8 || c[0] != 0) {
        printf("the library's XERBLA was called: position %d\n", position);
        return 1;
    }
    const float complex x[2] = {1 + 2 * I, 3 - I}, y[2] = {2, 1 + I};
    float complex dot;
    CDOTC((qrv_complex*)&dot, &two, (const qrv_complex*)x, &step, (const qrv_complex*)y, &step);
    if (crealf(dot) != 4 || cimagf(dot) != 0) {
        printf("wrong inner product: %g %g\n", (double)crealf(dot), (double)cimagf(dot));
        return 1;
    }
    printf("qrv %s\n", qrv_serv_get_version());
    return 0;
}
