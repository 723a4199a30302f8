/* A C program on the C interface: both layouts, complex results, reports through its own xerbla_, and other names of
 * its own. */
#include <complex.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

void cblas_sgemm(int order, int transa, int transb, int m, int n, int k, float alpha, const float* a, int lda,
                 const float* b, int ldb, float beta, float* c, int ldc);
void cblas_cdotc_sub(int n, const void* x, int incx, const void* y, int incy, void* result);
size_t cblas_isamax(int n, const float* x, int incx);

static char name[32];
static int position, failures;

void xerbla_(const char* routine, const int* info, size_t length) {
    memcpy(name, routine, length < sizeof name ? length : sizeof name - 1);
    position = *info;
}

/* The program's own, which no call of the library may reach. */
void SGEMM(void) {
    position = -1;
}
void qrv_serv_allocate(void) {
    position = -1;
}

static void expect(int condition, const char* what) {
    if (!condition) {
        printf("failed: %s\n", what);
        ++failures;
    }
}

int main(void) {
    const int rows = 101, columns = 102, noTranspose = 111;
    const float a[6] = {1, 2, 3, 4, 5, 6}, b[6] = {1, 0, -1, 2, 1, 0};
    float c[4] = {9, 9, 9, 9};
    cblas_sgemm(rows, noTranspose, noTranspose, 2, 2, 3, 1, a, 3, b, 2, 0, c, 2); /* [1 2 3; 4 5 6] [1 0; -1 2; 1 0] */
    expect(c[0] == 2 && c[1] == 4 && c[2] == 5 && c[3] == 10, "product of matrices by rows");

    const float complex x[2] = {1 + 2 * I, 3 - I}, y[2] = {2, 1 + I};
    float complex dot;
    cblas_cdotc_sub(2, x, 1, y, 1, &dot);
    expect(crealf(dot) == 4 && cimagf(dot) == 0, "inner product");
    expect(cblas_isamax(6, a, 1) == 5, "index from 0");
    expect(cblas_isamax(0, a, 1) == 0, "index into nothing");

    expect(position == 0, "no report so far");
    cblas_sgemm(rows, noTranspose, noTranspose, 2, 2, -1, 1, a, 3, b, 2, 0, c, 2);
    expect(position == 5 && strcmp(name, "SGEMM ") == 0, "a bad size is reported");
    cblas_sgemm(columns, noTranspose, 7, 2, 2, 3, 1, a, 3, b, 3, 0, c, 2);
    expect(position == 2, "a bad option is reported");
    cblas_sgemm(0, noTranspose, noTranspose, 2, 2, 3, 1, a, 3, b, 2, 0, c, 2);
    expect(position == 1 && strcmp(name, "cblas_sgemm") == 0, "a bad layout is reported");
    expect(c[0] == 2 && c[3] == 10, "nothing was written");
    return failures != 0;
}
