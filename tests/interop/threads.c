/* Threads that end do not leave their work memory behind. */
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "qrv/service.h"

void cblas_sgemm(int order, int transa, int transb, int m, int n, int k, float alpha, const float* a, int lda,
                 const float* b, int ldb, float beta, float* c, int ldc);

enum { n = 700, threads = 40 }; /* products that take memory on two threads */

static void* multiply(void* a) {
    float* const c = malloc(sizeof(float) * n * n);
    cblas_sgemm(102, 111, 111, n, n, n, 1, a, n, a, n, 0, c, n);
    const int wrong = c[0] != n;
    free(c);
    return wrong ? a : NULL;
}

static int buffers_kept(void) {
    int buffers;
    qrv_serv_memory_stat(&buffers);
    return buffers;
}

int main(void) {
    float* const a = malloc(sizeof(float) * n * n);
    for (int i = 0; i < n * n; ++i)
        a[i] = 1;
    int failures = multiply(a) != NULL;
    const int own = buffers_kept();
    for (int i = 0; i < threads; ++i) {
        pthread_t thread;
        void* wrong;
        if (pthread_create(&thread, NULL, multiply, a) != 0 || pthread_join(thread, &wrong) != 0 || wrong)
            ++failures;
    }
    /* Those of the OpenMP runtime end a little later. */
    const struct timespec moment = {0, 10000000};
    for (int i = 0; i < 1000 && buffers_kept() > own; ++i)
        nanosleep(&moment, NULL);
    printf("%d buffers before, %d after %d threads\n", own, buffers_kept(), threads);
    free(a);
    return own == 0 || buffers_kept() > own || failures;
}
