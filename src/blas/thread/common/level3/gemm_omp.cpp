// GEMM on a team: C := alpha*op(A)*op(B) + beta*C.
//
// qrv_blas_sgemm and qrv_blas_cgemm decide: tiny calls go straight to the serial kernel, small ones are cut into one
// serial call a thread, large ones take the partition of their machine class (gemm_partition.hpp), complex ones a plain
// one. Every thread writes its own rows or columns of C only, and sums each element in an order that depends on the
// team's size alone, so a run is repeatable bit for bit.
#include <omp.h>

#include "blas/blas.hpp"
#include "blas/thread/common/level3/gemm_team.hpp"
#include "service/work_pool.hpp"

namespace qrv {
namespace {

// What differs between the element types.
template <class T>
struct GemmFamily;

// `byMachine` says whether the machine class chooses the partition and whether C is scaled ahead of the products.
#define QRV_GEMM_FAMILY(gemm)                                                                                          \
    static constexpr auto& serial = qrv_blas_##gemm##_kernel;                                                          \
    static constexpr auto& scale_c = qrv_blas_##gemm##_scale_c;                                                        \
    static constexpr auto& plan_available = qrv_blas_##gemm##_plan_available;                                          \
    static constexpr auto& plan_reset = qrv_blas_##gemm##_plan_reset;                                                  \
    static constexpr auto& plan_load = qrv_blas_##gemm##_plan_load;                                                    \
    static constexpr auto& plan_set_blocks = qrv_blas_##gemm##_plan_set_blocks;                                        \
    static constexpr auto& buffer_sizes = qrv_blas_##gemm##_buffer_sizes;                                              \
    static constexpr auto& blocked = qrv_blas_##gemm##_blocked;                                                        \
    static constexpr auto& row = qrv_blas_##gemm##_1d_row;                                                             \
    static constexpr auto& col = qrv_blas_##gemm##_1d_col;

template <>
struct GemmFamily<float> {
    QRV_GEMM_FAMILY(sgemm)
    static constexpr GemmGainRule gain = realGemmGain;
    static constexpr bool byMachine = true;
    static constexpr auto& scale_region = gemm_scale_region;
    static constexpr auto& acopy = qrv_blas_sgemm_1d_acopy;
};
template <>
struct GemmFamily<SingleComplex> {
    QRV_GEMM_FAMILY(cgemm)
    static constexpr GemmGainRule gain = complexGemmGain;
    static constexpr bool byMachine = false;
};
#undef QRV_GEMM_FAMILY

// The address list of a problem, for a call in the native form.
#define QRV_GEMM_FIELDS(p)                                                                                             \
    &(p).transa, &(p).transb, &(p).m, &(p).n, &(p).k, &(p).alpha, (p).a, &(p).lda, (p).b, &(p).ldb, &(p).beta, (p).c,  \
        &(p).ldc

template <class T>
GemmProblem<T> problem_of(QRV_GEMM_PARAMETERS(T)) {
    return {*transa, *transb, *m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc};
}

template <class T>
void serial(const GemmProblem<T>& problem) {
    GemmFamily<T>::serial(QRV_GEMM_FIELDS(problem));
}

// ---- Work routines -------------------------------------------------------------------------------------------

// One thread's slice of C, from the caller's operands. The core takes its own buffers and does without if it
// must.
template <class T>
void work_on(const GemmProblem<T>& part, GemmPlan<T>* plan, const GemmThreadContext<T>& context) {
    if (context.blocked)
        context.blocked(QRV_GEMM_FIELDS(part), context.mode, plan);
    else
        context.serial(QRV_GEMM_FIELDS(part));
}

template <class T>
void gemm_1d_row(const GemmProblem<T>& problem, GemmPlan<T>* plan, const GemmThreadContext<T>& context) {
#pragma omp for schedule(static, 1)
    for (int i = 0; i < context.threads; ++i)
        work_on(problem.rows(equal_slice(problem.m, context.threads, i)), plan, context);
}

template <class T>
void gemm_1d_col(const GemmProblem<T>& problem, GemmPlan<T>* plan, const GemmThreadContext<T>& context) {
#pragma omp for schedule(static, 1)
    for (int i = 0; i < context.threads; ++i)
        work_on(problem.columns(equal_slice(problem.n, context.threads, i)), plan, context);
}

// Packed A of one group of threads, for the current block of rows and steps.
template <class T>
struct SharedBlock {
    GemmProblem<T> part; // what the block contributes to: its rows, its steps, all columns
    T* packed;
    int stride;
};

template <class T>
void pack(const SharedBlock<T>& block, const GemmThreadContext<T>& context) {
    const GemmProblem<T>& part = block.part;
    if (part.m > 0)
        context.copyA(&part.m, &part.k, part.a, &part.lda, block.packed, &block.stride, &part.alpha);
}

// C += packed A times B. The core answers 1 if it got no memory for its sliver: the block then goes through the
// serial kernel, from the caller's A.
template <class T>
void multiply(const SharedBlock<T>& block, GemmPlan<T>* plan, const GemmThreadContext<T>& context) {
    const GemmProblem<T>& part = block.part;
    if (part.m <= 0)
        return;
    GemmProblem<T> packed = part;
    packed.a = block.packed;
    packed.lda = block.stride;
    if (context.blocked(QRV_GEMM_FIELDS(packed), context.mode, plan) != 0)
        serial(part);
}

// Rows in slices of whole panels. Block after block, A is packed into the shared copies and multiplied from
// there; the loops end in barriers, as a copy may belong to several threads (a grid of more than one column).
template <class T>
void gemm_1d_acopy(const GemmProblem<T>& problem, GemmPlan<T>* plan, const GemmThreadContext<T>& context) {
    const int threads = context.threads, groups = context.rowThreads;
    const std::size_t copyLength = plan->aBuffer.bytes / sizeof(T);
    const int kUnit = plan->kUnit, mUnit = plan->mUnit;
    const int longest = equal_slice(problem.m, groups, groups - 1, mUnit).count;
    GemmProblem<T> adding = problem;
    adding.beta = scalar<T>(1);
    for (int l = 0, kc; l < problem.k; l += kc) {
        kc = std::min(context.kb, problem.k - l);
        const int stride = (kc + kUnit - 1) / kUnit * kUnit * mUnit;
        const GemmProblem<T> deep = adding.steps({l, kc});
        for (int i0 = 0, mc; i0 < longest; i0 += mc) {
            mc = std::min(context.mb, longest - i0);
            const auto block = [&](int thread) -> SharedBlock<T> {
                const int group = thread / context.colThreads;
                const Slice rows = gemm_block(equal_slice(problem.m, groups, group, mUnit), i0, mc);
                return {deep.rows(rows), context.aShared + static_cast<std::size_t>(group) * copyLength, stride};
            };
#pragma omp for schedule(static, 1)
            for (int t = 0; t < threads; ++t)
                pack(block(t), context);
#pragma omp for schedule(static, 1)
            for (int t = 0; t < threads; ++t)
                multiply(block(t), plan, context);
        }
    }
}

// ---- Partition -------------------------------------------------------------------------------------------------

template <class T>
void partition(GemmSizes sizes, GemmPlan<T>* plan, GemmThreadContext<T>* context) {
    using Family = GemmFamily<T>;
    const GemmBlocks blocks{context->mb, context->nb, context->kb};
    GemmPartition chosen = gemm_plain_partition(sizes, blocks, context->threads);
    if constexpr (Family::byMachine)
        chosen = gemm_partition(context->machineClass, context->planAvailable != 0, sizes, blocks, context->threads);
    context->region = chosen.region == GemmRegion::row ? Family::row : Family::col;
    if constexpr (Family::byMachine)
        if (chosen.region == GemmRegion::acopy)
            context->region = Family::acopy;
    context->mode = chosen.mode;
    context->threads = chosen.threads;
    context->rowThreads = chosen.rowThreads;
    context->colThreads = chosen.colThreads;
    context->mb = chosen.blocks.mb;
    context->aCopies = chosen.aCopies;
    Family::plan_set_blocks(context->mb, context->nb, context->kb, plan);
}

// What all threads of the large region start from. The plan is filled if the build has one.
template <class T>
GemmThreadContext<T> start_context(const GemmProblem<T>& problem, const GemmFacts& facts, GemmPlan<T>* plan) {
    using Family = GemmFamily<T>;
    GemmThreadContext<T> context{};
    context.machineClass = gemm_machine_class(facts);
    context.lastCacheBytes = facts.lastCacheBytes;
    context.planAvailable = Family::plan_available();
    if (!context.planAvailable) {
        context.serial = Family::serial;
        return context;
    }
    Family::plan_reset(plan);
    Family::plan_load(plan);
    context.copyA = !transposes(problem.transa)  ? plan->copyAN
                    : conjugates(problem.transa) ? plan->copyAC
                                                 : plan->copyAT;
    plan->setBlocks(&problem.m, &problem.n, &problem.k, plan);
    context.mb = plan->mb;
    context.nb = plan->nb;
    context.kb = plan->kb;
    context.blocked = Family::blocked;
    return context;
}

template <class T>
T* aligned(void* block, int alignShift) {
    const std::uintptr_t mask = (std::uintptr_t{1} << alignShift) - 1;
    return reinterpret_cast<T*>((reinterpret_cast<std::uintptr_t>(block) + mask) & ~mask);
}

// Takes the shared copies of A; called by all threads, with one cell for all. If memory is refused, the rows are
// split without copies. The team's first thread is the caller, so the block is from the pool of the thread that
// gives it back.
template <class T>
void share_copies(GemmSizes s, GemmPlan<T>* plan, GemmThreadContext<T>* context, void** cell) {
    GemmFamily<T>::buffer_sizes(BufferSet::a, BlockClip::toProblem, &s.m, &s.n, &s.k, plan);
    const GemmBuffer<T>& copy = plan->aBuffer;
#pragma omp master
    *cell = qrv_serv_allocate(gemm_shared_bytes(context->aCopies, copy.bytes, copy.alignShift), 128);
#pragma omp barrier
    if (*cell) {
        context->aShared = aligned<T>(*cell, copy.alignShift);
    } else {
        context->region = GemmFamily<T>::row;
        context->mode = GemmMode::packA;
    }
}

} // namespace

// ---- Regions ---------------------------------------------------------------------------------------------------

template <class T>
void gemm_small_region(const GemmProblem<T>& problem, int threads) {
    using Family = GemmFamily<T>;
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads();
        const int thread = omp_get_thread_num();
        if (team == 1) {
            serial(problem);
        } else if (gemm_plain_split(problem.sizes(), team) == GemmSplit::rows) {
            serial(problem.rows(equal_slice(problem.m, team, thread)));
        } else {
            GemmProblem<T> part = problem.columns(equal_slice(problem.n, team, thread));
            if (Family::byMachine && part.beta != scalar<T>(1)) {
                Family::scale_c(&part.m, &part.n, &part.beta, part.c, &part.ldc);
                part.beta = scalar<T>(1);
            }
            if (!Family::byMachine || part.alpha != scalar<T>(0))
                serial(part);
        }
    }
}

template <class T>
void gemm_large_region(GemmProblem<T> problem, const GemmFacts& facts, int threads) {
    using Family = GemmFamily<T>;
    if constexpr (Family::byMachine)
        if (gemm_scales_first(gemm_machine_class(facts))) {
            if (problem.beta != scalar<T>(1))
                Family::scale_region(problem, threads);
            problem.beta = scalar<T>(1);
            if (problem.alpha == scalar<T>(0))
                return;
        }
    GemmPlan<T> commonPlan{};
    const GemmThreadContext<T> common = start_context(problem, facts, &commonPlan);
    void* sharedCopies = nullptr;
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads();
        if (team == 1) {
            serial(problem);
        } else {
            GemmPlan<T> plan = commonPlan;
            GemmThreadContext<T> context = common;
            context.threads = team;
            partition(problem.sizes(), &plan, &context);
            if (context.aCopies > 0)
                share_copies(problem.sizes(), &plan, &context, &sharedCopies);
            context.region(QRV_GEMM_FIELDS(problem), &plan, &context);
        }
    }
    qrv_serv_deallocate(sharedCopies);
}

template void gemm_small_region<float>(const GemmProblem<float>&, int);
template void gemm_large_region<float>(GemmProblem<float>, const GemmFacts&, int);
template void gemm_small_region<SingleComplex>(const GemmProblem<SingleComplex>&, int);
template void gemm_large_region<SingleComplex>(GemmProblem<SingleComplex>, const GemmFacts&, int);

// ---- Decision --------------------------------------------------------------------------------------------------

namespace {

// The forms belong to the newest class; the others have none.
VectorForm form_in_use() {
    constexpr int sse42Class = 5;
    return qrv_serv_get_cpu_type() == sse42Class ? vector_form() : VectorForm::sse;
}

// Calls that may repay threads. Out of line, so that a tiny call pays for the gate alone.
template <class T>
[[gnu::noinline]] void gemm_with_budget(QRV_GEMM_PARAMETERS(T)) {
    using Family = GemmFamily<T>;
    const GemmSizes sizes{*m, *n, *k};
    const int threads = qrv_serv_domain_get_max_threads(QRV_DOMAIN_BLAS);
    const bool small = gemm_is_small(sizes);
    if (threads <= 1 || (small && !gemm_gains(Family::gain, sizes, threads, gemm_thread_cost(form_in_use()))))
        return Family::serial(QRV_GEMM_ARGUMENTS);
    const GemmProblem<T> problem = problem_of<T>(QRV_GEMM_ARGUMENTS);
    if (small)
        return gemm_small_region(problem, threads);
    const GemmFacts facts{qrv_serv_get_cpu_ma(), qrv_serv_get_cache_size(2), qrv_serv_get_cache_size(0)};
    gemm_large_region(problem, facts, threads);
}

// Nothing is asked or taken before the gate; the serial way is one call with the caller's arguments.
template <class T>
inline void gemm(QRV_GEMM_PARAMETERS(T)) {
    const GemmSizes sizes{*m, *n, *k};
    if (sizes.m <= 0 || sizes.n <= 0)
        return;
    if (!gemm_may_thread(sizes))
        return GemmFamily<T>::serial(QRV_GEMM_ARGUMENTS);
    gemm_with_budget<T>(QRV_GEMM_ARGUMENTS);
}

} // namespace
} // namespace qrv

using namespace qrv;

#define QRV_DEFINE_GEMM(T, name)                                                                                       \
    void qrv_blas_##name(QRV_GEMM_PARAMETERS(T)) {                                                                     \
        gemm<T>(QRV_GEMM_ARGUMENTS);                                                                                   \
    }                                                                                                                  \
    void qrv_blas_##name##_1d_row(QRV_GEMM_PARAMETERS(T), GemmPlan<T>* plan, const GemmThreadContext<T>* context) {    \
        gemm_1d_row(problem_of<T>(QRV_GEMM_ARGUMENTS), plan, *context);                                                \
    }                                                                                                                  \
    void qrv_blas_##name##_1d_col(QRV_GEMM_PARAMETERS(T), GemmPlan<T>* plan, const GemmThreadContext<T>* context) {    \
        gemm_1d_col(problem_of<T>(QRV_GEMM_ARGUMENTS), plan, *context);                                                \
    }
QRV_DEFINE_GEMM(float, sgemm)
QRV_DEFINE_GEMM(SingleComplex, cgemm)
#undef QRV_DEFINE_GEMM

void qrv_blas_sgemm_partition(const int* m, const int* n, const int* k, GemmPlan<float>* plan,
                              GemmThreadContext<float>* context) {
    partition<float>({*m, *n, *k}, plan, context);
}
void qrv_blas_sgemm_1d_acopy(QRV_GEMM_PARAMETERS(float), GemmPlan<float>* plan,
                             const GemmThreadContext<float>* context) {
    gemm_1d_acopy(problem_of<float>(QRV_GEMM_ARGUMENTS), plan, *context);
}
