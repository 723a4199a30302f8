// The threaded GEMM behind its entry: one call as a value, the record that each thread of a team works from, and
// the regions.
#pragma once

#include "blas/kernel/kernels.hpp"
#include "blas/matrix.hpp"
#include "blas/thread/common/level3/gemm_partition.hpp"

namespace qrv {

// The arguments of one GEMM call, which can be cut into slices. A slice is a call of its own.
template <class T>
struct GemmProblem {
    char transa, transb;
    int m, n, k;
    T alpha;
    const T* a;
    int lda;
    const T* b;
    int ldb;
    T beta;
    T* c;
    int ldc;

    GemmSizes sizes() const { return {m, n, k}; }
    OpView<const T> op_a() const { return {a, lda, transposes(transa)}; }
    OpView<const T> op_b() const { return {b, ldb, transposes(transb)}; }

    GemmProblem rows(Slice slice) const {
        GemmProblem part = *this;
        part.m = slice.count;
        part.a = op_a().at(slice.first, 0);
        part.c = c + slice.first;
        return part;
    }
    GemmProblem columns(Slice slice) const {
        GemmProblem part = *this;
        part.n = slice.count;
        part.b = op_b().at(0, slice.first);
        part.c = Matrix<T>{c, ldc}.column(slice.first);
        return part;
    }
    GemmProblem steps(Slice slice) const {
        GemmProblem part = *this;
        part.k = slice.count;
        part.a = op_a().at(0, slice.first);
        part.b = op_b().at(slice.first, 0);
        return part;
    }
};

// What a thread of the large region works from. Each has its own copy, and of the plan too: every thread then
// computes the same partition for itself, and nothing is broadcast.
template <class T>
struct GemmThreadContext {
    using Serial = void(QRV_GEMM_PARAMETERS(T));
    using Blocked = int(QRV_GEMM_PARAMETERS(T), GemmMode mode, GemmPlan<T>* plan);
    using Region = void(QRV_GEMM_PARAMETERS(T), GemmPlan<T>* plan, const GemmThreadContext* context);

    int threads;                // team size; after the partition, the threads that get work
    int rowThreads, colThreads; // grid of the threads
    int mb, nb, kb;             // block sizes for the plan
    Serial* serial;             // without a plan, else null
    Blocked* blocked;           // with a plan
    Region* region;             // the chosen work routine, null until the partition ran
    typename GemmPlan<T>::CopyA* copyA;
    T* aShared; // aligned base of the shared packed copies of A
    GemmMode mode;
    int aCopies; // shared copies wanted
    GemmMachine machineClass;
    int lastCacheBytes; // recorded; no rule consults it
    int planAvailable;
};

// C := beta*C on a team.
void gemm_scale_region(const GemmProblem<float>& problem, int threads);

// The whole product on a team of at most `threads`, for a call that gemm_is_small, respectively for others.
template <class T>
void gemm_small_region(const GemmProblem<T>& problem, int threads);
template <class T>
void gemm_large_region(GemmProblem<T> problem, const GemmFacts& facts, int threads);

extern template void gemm_small_region<float>(const GemmProblem<float>&, int);
extern template void gemm_large_region<float>(GemmProblem<float>, const GemmFacts&, int);
extern template void gemm_small_region<SingleComplex>(const GemmProblem<SingleComplex>&, int);
extern template void gemm_large_region<SingleComplex>(GemmProblem<SingleComplex>, const GemmFacts&, int);

} // namespace qrv

extern "C" {

// The work routines: every thread of a region calls the same one, with the caller's arguments.
#define QRV_DECLARE_GEMM_WORK(T, work)                                                                                 \
    void qrv_blas_##work(QRV_GEMM_PARAMETERS(T), qrv::GemmPlan<T>* plan, const qrv::GemmThreadContext<T>* context);
QRV_DECLARE_GEMM_WORK(float, sgemm_1d_row)
QRV_DECLARE_GEMM_WORK(float, sgemm_1d_col)
QRV_DECLARE_GEMM_WORK(float, sgemm_1d_acopy)
QRV_DECLARE_GEMM_WORK(qrv::SingleComplex, cgemm_1d_row)
QRV_DECLARE_GEMM_WORK(qrv::SingleComplex, cgemm_1d_col)
#undef QRV_DECLARE_GEMM_WORK

// Chooses region, mode, grid and blocks for the team of `context`, and stores the blocks in the plan.
void qrv_blas_sgemm_partition(const int* m, const int* n, const int* k, qrv::GemmPlan<float>* plan,
                              qrv::GemmThreadContext<float>* context);
}
