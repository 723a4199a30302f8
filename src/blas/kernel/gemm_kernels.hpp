// The dispatched kernels of GEMM: result, name, parameters, arguments (see kernels.hpp).
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/gemm_plan.hpp"

// The arguments of a GEMM call, all by address: C := alpha*op(A)*op(B) + beta*C. Options are 'N' or 'n' for no
// transpose, anything else transposes, 'C' and 'c' of complex operands their conjugates; nothing is checked.
#define QRV_GEMM_PARAMETERS(T)                                                                                         \
    const char *transa, const char *transb, const int *m, const int *n, const int *k, const T *alpha, const T *a,      \
        const int *lda, const T *b, const int *ldb, const T *beta, T *c, const int *ldc
#define QRV_GEMM_ARGUMENTS transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc

// clang-format off
#define QRV_GEMM_KERNELS_OF(KERNEL, T, gemm)                                                                         \
    /* The whole serial GEMM. */                                                                                     \
    KERNEL(void, blas_##gemm##_kernel, (QRV_GEMM_PARAMETERS(T)), (QRV_GEMM_ARGUMENTS))                               \
    /* C := beta*C for an m x n matrix; beta = 0 stores zeros and does not read C. */                                \
    KERNEL(void, blas_##gemm##_scale_c, (const int* m, const int* n, const T* beta, T* c, const int* ldc),           \
           (m, n, beta, c, ldc))                                                                                     \
    /* Pieces of the plan-driven GEMM. Builds without a plan answer 0, respectively do nothing. */                   \
    KERNEL(int, blas_##gemm##_plan_available, (), ())                                                                \
    KERNEL(void, blas_##gemm##_plan_reset, (qrv::GemmPlan<T>* plan), (plan))                                         \
    KERNEL(void, blas_##gemm##_plan_load, (qrv::GemmPlan<T>* plan), (plan))                                          \
    KERNEL(void, blas_##gemm##_plan_set_blocks, (int mb, int nb, int kb, qrv::GemmPlan<T>* plan), (mb, nb, kb, plan)) \
    KERNEL(int, blas_##gemm##_buffer_sizes,                                                                          \
           (qrv::BufferSet set, qrv::BlockClip clip, const int* m, const int* n, const int* k,                       \
            qrv::GemmPlan<T>* plan), (set, clip, m, n, k, plan))                                                     \
    /* The blocked core. Result: 0 done, 1 unknown mode or, where the caller packed an operand, no memory. */        \
    KERNEL(int, blas_##gemm##_blocked, (QRV_GEMM_PARAMETERS(T), qrv::GemmMode mode, qrv::GemmPlan<T>* plan),         \
           (QRV_GEMM_ARGUMENTS, mode, plan))
#define QRV_GEMM_KERNELS(KERNEL)                                                                                     \
    QRV_GEMM_KERNELS_OF(KERNEL, float, sgemm)                                                                        \
    QRV_GEMM_KERNELS_OF(KERNEL, qrv::SingleComplex, cgemm)
// clang-format on
