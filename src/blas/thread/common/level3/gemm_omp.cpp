// GEMM on a team: C := alpha*op(A)*op(B) + beta*C.
//
// The decision: tiny calls go straight to the serial kernel, small ones are cut into one serial call a thread, large
// ones take the partition of their machine class (gemm_partition.hpp), complex ones a plain one. Every thread writes
// its own rows or columns of C only, and sums each element in an order that depends on the team's size alone, so a run
// is repeatable bit for bit.
#include <omp.h>

#include "blas/native.hpp"
#include "blas/thread/common/level3/gemm_team.hpp"
#include "blas/thread/common/team_omp.hpp"
#include "service/work_pool.hpp"

namespace qrv {
namespace {

// Whether the machine class chooses the partition and has C scaled ahead of the products.
template <class T>
inline constexpr bool byMachine = !isComplex<T>;

// ---- Work routines -------------------------------------------------------------------------------------------

// What a thread of the large region works from. Each has its own copy, and of the plan too: every thread then
// computes the same partition for itself, and nothing is broadcast.
template <class T>
struct GemmThreadContext {
    GemmMachine machineClass;
    bool planAvailable; // or else each part is a serial call
    typename GemmPlan<T>::CopyA* copyA;
    GemmPartition partition;
    T* aShared; // aligned base of the shared packed copies of A
};

// The blocked core. Result: 0 done, 1 no memory where the caller packed an operand.
template <class T>
int blocked(const GemmCall<T>& q, GemmMode mode, GemmPlan<T>* plan) {
    const char transa = letter(q.opA), transb = letter(q.opB);
    const int lda = static_cast<int>(q.a.ld), ldb = static_cast<int>(q.b.ld), ldc = static_cast<int>(q.c.ld);
    return kernel::Native<T>::blocked(&transa, &transb, &q.m, &q.n, &q.k, &q.alpha, q.a.data, &lda, q.b.data, &ldb,
                                      &q.beta, q.c.data, &ldc, mode, plan);
}

// One thread's slice of C, from the caller's operands. The core takes its own buffers and does without if it
// must.
template <class T>
void work_on(const GemmCall<T>& part, GemmPlan<T>* plan, const GemmThreadContext<T>& context) {
    if (context.planAvailable)
        blocked(part, context.partition.mode, plan);
    else
        serial(part);
}

template <class T>
void gemm_1d_row(const GemmCall<T>& call, GemmPlan<T>* plan, const GemmThreadContext<T>& context) {
    const int threads = context.partition.threads;
#pragma omp for schedule(static, 1)
    for (int i = 0; i < threads; ++i)
        work_on(rows_of(call, equal_slice(call.m, threads, i)), plan, context);
}

template <class T>
void gemm_1d_col(const GemmCall<T>& call, GemmPlan<T>* plan, const GemmThreadContext<T>& context) {
    const int threads = context.partition.threads;
#pragma omp for schedule(static, 1)
    for (int i = 0; i < threads; ++i)
        work_on(columns_of(call, equal_slice(call.n, threads, i)), plan, context);
}

// Packed A of one group of threads, for the current block of rows and steps.
template <class T>
struct SharedBlock {
    GemmCall<T> part; // what the block contributes to: its rows, its steps, all columns
    T* packed;
    int stride;
};

template <class T>
void pack(const SharedBlock<T>& block, const GemmThreadContext<T>& context) {
    const GemmCall<T>& part = block.part;
    const int lda = static_cast<int>(part.a.ld);
    if (part.m > 0)
        context.copyA(&part.m, &part.k, part.a.data, &lda, block.packed, &block.stride, &part.alpha);
}

// C += packed A times B. The core answers 1 if it got no memory for its sliver: the block then goes through the
// serial kernel, from the caller's A.
template <class T>
void multiply(const SharedBlock<T>& block, GemmPlan<T>* plan, const GemmThreadContext<T>& context) {
    if (block.part.m <= 0)
        return;
    GemmCall<T> packed = block.part;
    packed.a = {block.packed, block.stride};
    if (blocked(packed, context.partition.mode, plan) != 0)
        serial(block.part);
}

// Rows in slices of whole panels. Block after block, A is packed into the shared copies and multiplied from
// there; the loops end in barriers, as a copy may belong to several threads (a grid of more than one column).
template <class T>
void gemm_1d_acopy(const GemmCall<T>& call, GemmPlan<T>* plan, const GemmThreadContext<T>& context) {
    const GemmPartition& grid = context.partition;
    const std::size_t copyLength = plan->aBuffer.bytes / sizeof(T);
    const int kUnit = plan->kUnit, mUnit = plan->mUnit;
    const int longest = equal_slice(call.m, grid.rowThreads, grid.rowThreads - 1, mUnit).count;
    GemmCall<T> adding = call;
    adding.beta = scalar<T>(1);
    for (int l = 0, kc; l < call.k; l += kc) {
        kc = std::min(grid.blocks.kb, call.k - l);
        const int stride = (kc + kUnit - 1) / kUnit * kUnit * mUnit;
        const GemmCall<T> deep = steps_of(adding, Slice{l, kc});
        for (int i0 = 0, mc; i0 < longest; i0 += mc) {
            mc = std::min(grid.blocks.mb, longest - i0);
            const auto block = [&](int thread) -> SharedBlock<T> {
                const int group = thread / grid.colThreads;
                const Slice rows = gemm_block(equal_slice(call.m, grid.rowThreads, group, mUnit), i0, mc);
                return {rows_of(deep, rows), context.aShared + static_cast<std::size_t>(group) * copyLength, stride};
            };
#pragma omp for schedule(static, 1)
            for (int t = 0; t < grid.threads; ++t)
                pack(block(t), context);
#pragma omp for schedule(static, 1)
            for (int t = 0; t < grid.threads; ++t)
                multiply(block(t), plan, context);
        }
    }
}

// The chosen one: every thread of a region calls it.
template <class T>
void work(const GemmCall<T>& call, GemmPlan<T>* plan, const GemmThreadContext<T>& context) {
    switch (context.partition.region) {
    case GemmRegion::row:
        return gemm_1d_row(call, plan, context);
    case GemmRegion::column:
        return gemm_1d_col(call, plan, context);
    case GemmRegion::acopy:
        if constexpr (byMachine<T>)
            gemm_1d_acopy(call, plan, context);
    }
}

// ---- Partition -------------------------------------------------------------------------------------------------

// Chooses region, mode, grid and blocks for the team, and stores the blocks in the plan.
template <class T>
GemmPartition partition(GemmSizes sizes, GemmPlan<T>* plan, const GemmThreadContext<T>& context, int team) {
    const GemmBlocks blocks{plan->mb, plan->nb, plan->kb};
    const GemmPartition chosen = byMachine<T>
                                     ? gemm_partition(context.machineClass, context.planAvailable, sizes, blocks, team)
                                     : gemm_plain_partition(sizes, blocks, team);
    kernel::Native<T>::plan_set_blocks(chosen.blocks.mb, chosen.blocks.nb, chosen.blocks.kb, plan);
    return chosen;
}

// What all threads of the large region start from. The plan is filled if the build has one.
template <class T>
GemmThreadContext<T> start_context(const GemmCall<T>& call, const GemmFacts& facts, GemmPlan<T>* plan) {
    using Native = kernel::Native<T>;
    GemmThreadContext<T> context{};
    context.machineClass = gemm_machine_class(facts);
    context.planAvailable = Native::plan_available() != 0;
    if (!context.planAvailable)
        return context;
    Native::plan_reset(plan);
    Native::plan_load(plan);
    plan->setBlocks(&call.m, &call.n, &call.k, plan);
    context.copyA = call.opA == Op::none ? plan->copyAN : call.opA == Op::adjoint ? plan->copyAC : plan->copyAT;
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
    kernel::Native<T>::buffer_sizes(BufferSet::a, BlockClip::toProblem, &s.m, &s.n, &s.k, plan);
    const GemmBuffer<T>& copy = plan->aBuffer;
#pragma omp master
    *cell = qrv_serv_allocate(gemm_shared_bytes(context->partition.aCopies, copy.bytes, copy.alignShift), 128);
#pragma omp barrier
    if (*cell) {
        context->aShared = aligned<T>(*cell, copy.alignShift);
    } else {
        context->partition.region = GemmRegion::row;
        context->partition.mode = GemmMode::packA;
    }
}

} // namespace

// ---- Regions ---------------------------------------------------------------------------------------------------

template <class T>
void gemm_grid_region(const GemmCall<T>& call, int threads, int pieces) {
    on_team_in_pieces(threads, pieces, [&](int team, int share, int piece) {
        const GemmGrid grid = gemm_grid(sizes_of(call), call.opA != Op::none, team);
        const Slice rows = gemm_piece_rows(call.m, grid.rows, share % grid.rows, pieces, piece);
        serial(columns_of(rows_of(call, rows), column_slice(call.n, grid.columns, share / grid.rows)));
    });
}

template <class T>
void gemm_small_region(const GemmCall<T>& call, int threads) {
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads(), thread = omp_get_thread_num();
        if (team == 1) {
            serial(call);
        } else if (gemm_plain_split(sizes_of(call), team) == GemmSplit::rows) {
            serial(rows_of(call, equal_slice(call.m, team, thread)));
        } else {
            GemmCall<T> part = columns_of(call, equal_slice(call.n, team, thread));
            if (byMachine<T> && part.beta != scalar<T>(1)) {
                kernel::scale(part.m, part.n, part.beta, part.c);
                part.beta = scalar<T>(1);
            }
            if (!byMachine<T> || part.alpha != scalar<T>(0))
                serial(part);
        }
    }
}

template <class T>
void gemm_large_region(GemmCall<T> call, const GemmFacts& facts, int threads) {
    if constexpr (byMachine<T>)
        if (gemm_scales_first(gemm_machine_class(facts))) {
            if (call.beta != scalar<T>(1))
                gemm_scale_region(call, threads);
            call.beta = scalar<T>(1);
            if (call.alpha == scalar<T>(0))
                return;
        }
    GemmPlan<T> commonPlan{};
    const GemmThreadContext<T> common = start_context(call, facts, &commonPlan);
    void* sharedCopies = nullptr;
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads();
        if (team == 1) {
            serial(call);
        } else {
            GemmPlan<T> plan = commonPlan;
            GemmThreadContext<T> context = common;
            context.partition = partition(sizes_of(call), &plan, context, team);
            if (context.partition.aCopies > 0)
                share_copies(sizes_of(call), &plan, &context, &sharedCopies);
            work(call, &plan, context);
        }
    }
    qrv_serv_deallocate(sharedCopies);
}

template void gemm_grid_region(const GemmCall<float>&, int, int);
template void gemm_grid_region(const GemmCall<SingleComplex>&, int, int);
template void gemm_small_region(const GemmCall<float>&, int);
template void gemm_small_region(const GemmCall<SingleComplex>&, int);
template void gemm_large_region(GemmCall<float>, const GemmFacts&, int);
template void gemm_large_region(GemmCall<SingleComplex>, const GemmFacts&, int);

// ---- Decision --------------------------------------------------------------------------------------------------

namespace {

// Calls that may repay threads. Out of line, so that a tiny call pays for the gate alone.
template <class T>
[[gnu::noinline]] void gemm_with_budget(const GemmCall<T>& call) {
    const GemmSizes sizes = sizes_of(call);
    if (goes_by_work(ThisMachine{})) {
        const double work = work_of<T>(call.m, call.n, call.k);
        const int threads = gemm_threads_by_work(sizes, work, ThisMachine{});
        if (threads <= 1)
            return serial(call);
        return gemm_grid_region(call, threads,
                                gemm_pieces(sizes, call.opA != Op::none, call.opB != Op::none, work / threads, threads,
                                            vector_form_in_use()));
    }
    const int threads = ThisMachine::budget();
    const bool small = gemm_is_small(sizes);
    if (threads <= 1 || (small && !gemm_gains(row_for<T>(realGemmGain, complexGemmGain), sizes, threads,
                                              gemm_thread_cost(vector_form_in_use()))))
        return serial(call);
    if (small)
        return gemm_small_region(call, threads);
    const GemmFacts facts{qrv_serv_get_cpu_ma(), qrv_serv_get_cache_size(2)};
    gemm_large_region(call, facts, threads);
}

// With the caller's addresses: the serial way of a tiny call is one call with the arguments as they came.
template <class T>
inline void gemm(QRV_GEMM_PARAMETERS(T)) {
    const GemmSizes sizes{*m, *n, *k};
    if (sizes.m <= 0 || sizes.n <= 0)
        return;
    if (!gemm_may_thread(sizes))
        return kernel::Native<T>::gemm(QRV_GEMM_ARGUMENTS);
    gemm_with_budget<T>({op_of(*transa), op_of(*transb), *m, *n, *k, *alpha, {a, *lda}, {b, *ldb}, *beta, {c, *ldc}});
}

} // namespace

template <class T>
void blas::gemm(Op opA, Op opB, int m, int n, int k, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, Scalar<T> beta,
                Matrix<T> c) {
    if (m <= 0 || n <= 0)
        return;
    const GemmCall<T> call{opA, opB, m, n, k, alpha, a, b, beta, c};
    if (gemm_may_thread(sizes_of(call)))
        gemm_with_budget(call);
    else
        serial(call);
}

template void blas::gemm(Op, Op, int, int, int, float, Matrix<const float>, Matrix<const float>, float, Matrix<float>);
template void blas::gemm(Op, Op, int, int, int, SingleComplex, Matrix<const SingleComplex>, Matrix<const SingleComplex>,
                         SingleComplex, Matrix<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_sgemm(QRV_GEMM_PARAMETERS(float)) {
    gemm<float>(QRV_GEMM_ARGUMENTS);
}
void qrv_blas_cgemm(QRV_GEMM_PARAMETERS(SingleComplex)) {
    gemm<SingleComplex>(QRV_GEMM_ARGUMENTS);
}
