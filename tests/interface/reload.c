/* Usage: reload LIBRARY NAMES - loads a library, computes on several threads and unloads it again, many times. NAMES is
 * "SGEMM" or "sgemm_", as the library writes names. The host itself has no OpenMP runtime, so what the library brings
 * leaves with it, unless it is marked to stay.
 */
#include <ctype.h>
#include <dlfcn.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

typedef void routine(); /* all arguments are pointers */

enum { n = 200, cycles = 100, diagonals = 70, rows_of_band = 3 * diagonals + 1, length = 5 * n * n };

static float a[rows_of_band * n], b[n * n], c[n * n], work[length], values[2 * n];
static int pivots[12 * n];
static const char* names;

static int next_key(void) {
    pthread_key_t key;
    if (pthread_key_create(&key, NULL) != 0)
        return -1;
    pthread_key_delete(key);
    return (int)key;
}

static routine* find(void* library, const char* name) {
    const int is_lower = islower((unsigned char)names[0]);
    char written[16] = "";
    for (size_t k = 0; name[k]; ++k)
        written[k] = (char)(is_lower ? tolower((unsigned char)name[k]) : name[k]);
    strcat(written, is_lower ? "_" : "");
    routine* found = NULL;
    *(void**)&found = dlsym(library, written);
    if (!found) {
        puts(dlerror());
        exit(1);
    }
    return found;
}

/* A symmetric matrix with a large diagonal; one of bands if `first`, the row of the diagonal, is not 0. */
static float* matrix(int rows, int first) {
    for (int k = 0; k < rows * n; ++k)
        a[k] = 0.25F;
    for (int j = 0; j < n; ++j)
        a[(first > 0 ? first : j) + j * rows] = (float)n + (float)j;
    return a;
}

/* What each family with teams does; the sum of what is told of failures. */
static int decompose(void* library) {
    static const int order = n, kd = diagonals, ldab = rows_of_band, lwork = length, liwork = 10 * n;
    const int* const no = &order;
    int infos[7] = {0}, found;
    find(library, "SGETRF")(no, no, matrix(n, 0), no, pivots, &infos[0]);
    find(library, "SPOTRF")("L", no, matrix(n, 0), no, &infos[1]);
    find(library, "SGBTRF")(no, no, &kd, &kd, matrix(ldab, 2 * kd), &ldab, pivots, &infos[2]);
    find(library, "SGEQRF")(no, no, matrix(n, 0), no, values, work, &lwork, &infos[3]);
    find(library, "SSYEVR")("V", "A", "U", no, matrix(n, 0), no, a, a, no, no, a, &found, values, b, no, pivots, work,
                            &lwork, pivots + 2 * n, &liwork, &infos[4]);
    find(library, "SGESDD")("S", no, no, matrix(n, 0), no, values, b, no, c, no, work, &lwork, pivots, &infos[5]);
    find(library, "SGEEV")("N", "V", no, matrix(n, 0), no, values, values + n, b, no, c, no, work, &lwork, &infos[6]);
    int sum = 0;
    for (int k = 0; k < 7; ++k)
        sum += infos[k] != 0;
    return sum;
}

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    names = argv[2];
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
        memset(a, 0, sizeof a);
        a[0] = (float)cycle;
        find(library, "SGEMM")("N", "N", &order, &order, &order, &one, a, &order, a, &order, &zero, c, &order);
        if (c[0] != (float)(cycle * cycle) || (cycle % 20 == 0 && decompose(library) != 0)) {
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
