/* Usage: reload LIBRARY NAME - loads a library, multiplies on several threads and unloads it again, many times. NAME is
 * that of the product of matrices. The host itself has no OpenMP runtime, so what the library brings leaves with it,
 * unless it is marked to stay.
 */
#include <dlfcn.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>

typedef void gemm(const char* transa, const char* transb, const int* m, const int* n, const int* k, const float* alpha,
                  const float* a, const int* lda, const float* b, const int* ldb, const float* beta, float* c,
                  const int* ldc);

enum { n = 200, cycles = 100 };

static float a[n * n], c[n * n];

static int next_key(void) {
    pthread_key_t key;
    if (pthread_key_create(&key, NULL) != 0)
        return -1;
    pthread_key_delete(key);
    return (int)key;
}

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    setenv("QRV_DYNAMIC", "FALSE", 1);
    setenv("QRV_NUM_THREADS", "3", 1);
    const int order = n;
    const float one = 1, zero = 0;
    int key = 0;
    for (int cycle = 0; cycle < cycles; ++cycle) {
        void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
        if (!library) {
            puts(dlerror());
            return 1;
        }
        gemm* multiply = NULL;
        *(void**)&multiply = dlsym(library, argv[2]);
        a[0] = (float)cycle;
        multiply("N", "N", &order, &order, &order, &one, a, &order, a, &order, &zero, c, &order);
        if (c[0] != (float)(cycle * cycle)) {
            printf("wrong result in cycle %d\n", cycle);
            return 1;
        }
        dlclose(library);
        if (cycle == 0)
            key = next_key();
    }
    if (next_key() != key) {
        puts("thread keys were left behind");
        return 1;
    }
    return 0;
}
