// The blocked core of the plan-driven GEMM and what surrounds it: the plan's life, block and buffer sizes, the
// mode, the serial entry. Told once for the element type T; a build adds its GemmPlanRow and its micro-kernel.
//
//   for j over n in blocks of nb            B, nb columns: expanded sliver by sliver inside the micro-kernel
//     for l over k in blocks of kb
//       for i over m in blocks of mb        A, mb x kb: packed into panels of mUnit rows, stays in the outer cache
//         micro: C[i, j] += A[i, l] * B[l, j]
//
// The modes differ in which operand the caller has packed already. Such an operand is one block in k, and of the
// packed operand there is one block only, so its loop runs once.
#pragma once

#include <cstdint>

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/cgemm_small.hpp"
#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "blas/kernel/common/gemm/gemm_scale_c.hpp"
#include "blas/kernel/common/gemm/gemm_small.hpp"
#include "blas/kernel/gemm_plan.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"
#include "qrv/service.h"
#include "service/work_pool.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// The constants of a plan: one row for each kind of processor that a build distinguishes.
template <class T>
struct GemmPlanRow {
    int rowIndex;
    int tableTag;
    int mUnit, nUnit, kUnit;    // register tile, and the steps to which k is filled up
    int smallFactor;            // sliver floats per float of B
    int smallM, smallN, smallK; // below these the blocked core hands over to the unpacked path
    void (*setBlocks)(const int* m, const int* n, const int* k, GemmPlan<T>* plan);
    typename GemmPlan<T>::CopyA *copyAN, *copyAT, *copyAC;
    typename GemmPlan<T>::CopyB *copyBN, *copyBT, *copyBC;
    typename GemmPlan<T>::Micro* micro;
};

// ---- Blocks and buffers ------------------------------------------------------------------------------------

constexpr int bufferSlack = 512;        // bytes behind each buffer that kernels may read ahead into
constexpr int panelAlignShift = 12;     // a page: packed panels start on one
constexpr int sliverAlignShift = 7;     // two lines
constexpr int blockAlignment = 128;     // of the one block of work memory
constexpr int packBothBytes = 0x600000; // a block of B above this is worth packing

inline CacheTable cache_table() {
    int words[5] = {};
    qrv_serv_get_cache_sizes(words);
    return {words[0], {words[1], words[2], words[3], words[4]}};
}

// Decides what is still 0, so blocks preset by the caller survive.
template <class T, const BlockRule& rule>
void set_blocks(const int*, const int* n, const int* k, GemmPlan<T>* plan) {
    if (plan->kb == 0)
        plan->kb = k_block(rule, *k, plan->kUnit);
    if (plan->mb == 0)
        plan->mb = row_block(rule, cache_table());
    if (plan->nb == 0)
        plan->nb = column_block(rule, *n, plan->nUnit);
}

// Which buffers a set has. In the one allocation they stand in the order A, sliver, B.
struct BufferMembers {
    bool known; // whether it is a set at all
    bool a, sliver, b;
};

inline BufferMembers members_of(BufferSet set) {
    switch (set) {
    case BufferSet::aSliverB:
        return {true, true, true, true};
    case BufferSet::a:
        return {true, true, false, false};
    case BufferSet::b:
        return {true, false, false, true};
    case BufferSet::aB:
        return {true, true, false, true};
    case BufferSet::sliverB:
        return {true, false, true, true};
    case BufferSet::aSliver:
        return {true, true, true, false};
    case BufferSet::sliver:
        return {true, false, true, false};
    }
    return {};
}

template <class T>
int buffer_sizes(BufferSet set, BlockClip clip, const int* m, const int* n, const int* k, GemmPlan<T>* plan) {
    const BufferMembers has = members_of(set);
    if (!has.known || (clip != BlockClip::toProblem && clip != BlockClip::none))
        return 1;
    const bool clipped = clip == BlockClip::toProblem;
    const auto panel_buffer = [](int lanes, int depth, int unit, GemmBuffer<T>& buffer) {
        buffer.stride = unit * depth;
        buffer.bytes = static_cast<std::size_t>(lanes) * static_cast<std::size_t>(depth) * sizeof(T) + bufferSlack;
        buffer.alignShift = panelAlignShift;
    };
    const int kk = round_up(clipped ? smaller(plan->kb, *k) : plan->kb, plan->kUnit);
    if (has.a)
        panel_buffer(round_up(clipped ? smaller(plan->mb, *m) : plan->mb, plan->mUnit), kk, plan->mUnit, plan->aBuffer);
    if (has.b)
        panel_buffer(round_up(clipped ? smaller(plan->nb, *n) : plan->nb, plan->nUnit), kk, plan->nUnit, plan->bBuffer);
    if (has.sliver) {
        const auto floats = static_cast<std::size_t>(kk) * static_cast<std::size_t>(plan->nUnit * plan->smallFactor);
        plan->sliver.bytes = floats * sizeof(T) + bufferSlack;
        plan->sliver.alignShift = sliverAlignShift;
    }
    return 0;
}

// Bytes that a buffer takes in the block, alignment included.
template <class T>
std::size_t room_for(const GemmBuffer<T>& buffer) {
    return buffer.bytes + (std::size_t{2} << buffer.alignShift);
}

// Places a buffer at the next aligned address from `address` on. Result: the address behind it.
template <class T>
std::uintptr_t place(GemmBuffer<T>& buffer, std::uintptr_t address) {
    const std::uintptr_t mask = (std::uintptr_t{1} << buffer.alignShift) - 1;
    const std::uintptr_t start = (address + mask) & ~mask;
    buffer.data = reinterpret_cast<T*>(start);
    return start + buffer.bytes;
}

// Takes one block of work memory for the buffers of a set, whose sizes are known. Null in *rawBlock says that there
// was none. The set `aB` is for sizes only.
template <class T>
int allocate_buffers(BufferSet set, void** rawBlock, GemmPlan<T>* plan) {
    const BufferMembers has = members_of(set);
    if (!has.known || set == BufferSet::aB)
        return 1;
    *rawBlock = qrv_serv_allocate((has.a ? room_for(plan->aBuffer) : 0) + (has.sliver ? room_for(plan->sliver) : 0) +
                                      (has.b ? room_for(plan->bBuffer) : 0),
                                  blockAlignment);
    auto address = reinterpret_cast<std::uintptr_t>(*rawBlock);
    if (has.a)
        address = place(plan->aBuffer, address);
    if (has.sliver)
        address = place(plan->sliver, address);
    if (has.b)
        place(plan->bBuffer, address);
    return 0;
}

// ---- The plan ----------------------------------------------------------------------------------------------

// A fresh plan: blocks are not decided, buffers have no memory.
template <class T>
void fill_plan(const GemmPlanRow<T>& row, GemmPlan<T>* plan) {
    plan->rowIndex = row.rowIndex;
    plan->tableTag = row.tableTag;
    plan->mb = plan->nb = plan->kb = 0;
    plan->mUnit = row.mUnit;
    plan->nUnit = row.nUnit;
    plan->kUnit = row.kUnit;
    plan->smallM = row.smallM;
    plan->smallN = row.smallN;
    plan->smallK = row.smallK;
    plan->setBlocks = row.setBlocks;
    plan->bufferSizes = buffer_sizes<T>;
    plan->allocateBuffers = allocate_buffers<T>;
    plan->copyAN = row.copyAN;
    plan->copyAT = row.copyAT;
    plan->copyAC = row.copyAC;
    plan->copyBN = row.copyBN;
    plan->copyBT = row.copyBT;
    plan->copyBC = row.copyBC;
    plan->smallFactor = row.smallFactor;
    plan->micro = row.micro;
    plan->microScalesC = false;
    plan->sliverColumns = 0;
}

template <class T>
void store_blocks(int mb, int nb, int kb, GemmPlan<T>* plan) {
    plan->mb = mb;
    plan->nb = nb;
    plan->kb = kb;
}

template <class T>
typename GemmPlan<T>::CopyA* copy_a(const GemmPlan<T>& plan, Op op) {
    if (!transposes(op))
        return plan.copyAN;
    return conjugates(op) ? plan.copyAC : plan.copyAT;
}
template <class T>
typename GemmPlan<T>::CopyB* copy_b(const GemmPlan<T>& plan, Op op) {
    if (!transposes(op))
        return plan.copyBN;
    return conjugates(op) ? plan.copyBC : plan.copyBT;
}

// ---- The blocked core --------------------------------------------------------------------------------------

// Packing both operands pays when the block of B is too large for the outer cache.
template <class T>
GemmMode pick_mode(int n, int k, const GemmPlan<T>& plan) {
    const std::int64_t bytes =
        std::int64_t{smaller(plan.kb, k)} * smaller(plan.nb, n) * static_cast<std::int64_t>(sizeof(T));
    return bytes > packBothBytes ? GemmMode::packBoth : GemmMode::packA;
}

// A mode, taken apart.
struct ModeTraits {
    BufferSet set;
    bool packsA, packsB; // packed here
    bool givenA, givenB; // packed by the caller
    constexpr bool one_k_block() const { return givenA || givenB; }
    constexpr MicroForm form() const { return packsB || givenB ? MicroForm::packedB : MicroForm::directB; }
};

inline bool mode_traits(GemmMode mode, ModeTraits& traits) {
    switch (mode) {
    case GemmMode::packBoth:
        traits = {BufferSet::aSliverB, true, true, false, false};
        return true;
    case GemmMode::choose: // until decided
    case GemmMode::packA:
        traits = {BufferSet::aSliver, true, false, false, false};
        return true;
    case GemmMode::packBGivenA:
        traits = {BufferSet::sliverB, false, true, true, false};
        return true;
    case GemmMode::directBGivenA:
        traits = {BufferSet::sliver, false, false, true, false};
        return true;
    case GemmMode::packAGivenB:
        traits = {BufferSet::aSliver, true, false, false, true};
        return true;
    case GemmMode::givenBoth:
        traits = {BufferSet::sliver, false, false, true, true};
        return true;
    }
    return false;
}

// The two modes that pack for themselves leave small problems to the unpacked path, one a little earlier.
template <class T>
bool is_small(GemmMode mode, const GemmCall<T>& p, const GemmPlan<T>& plan) {
    if (mode == GemmMode::packBoth)
        return p.m <= plan.smallM || p.n <= plan.smallN || p.k <= plan.smallK;
    return mode == GemmMode::packA && (p.m < plan.smallM || p.n < plan.smallN || p.k < plan.smallK);
}

// The loop nest of all modes; buffers are there. Of beta only a micro-kernel that scales C takes notice.
template <class T>
void multiply_blocks(const GemmCall<T>& p, const ModeTraits& mode, const GemmPlan<T>& plan) {
    const OpView<const T> viewA = p.view_of_a(), viewB = p.view_of_b();
    const char transa = letter(p.opA), transb = letter(p.opB);
    const int lda = static_cast<int>(p.a.ld), ldb = static_cast<int>(p.b.ld), ldc = static_cast<int>(p.c.ld);
    const MicroForm form = mode.form();
    const T one = scalar<T>(1);
    const int columnStep = mode.givenB ? p.n : plan.nb;
    const int kStep = mode.one_k_block() ? p.k : plan.kb;
    const int rowStep = mode.givenA ? p.m : plan.mb;
    for (int j = 0, nc; j < p.n; j += nc) {
        nc = smaller(columnStep, p.n - j);
        for (int l = 0, kc; l < p.k; l += kc) {
            kc = smaller(kStep, p.k - l);
            // The direct form is told the true depth: it must not read B past it.
            const int depth = form == MicroForm::packedB ? round_up(kc, plan.kUnit) : kc;
            const T* beta = l == 0 ? &p.beta : &one;
            const T* b = mode.givenB ? p.b.data : viewB.at(l, j);
            int bStride = ldb;
            if (mode.packsB) {
                copy_b(plan, p.opB)(&kc, &nc, b, &ldb, plan.bBuffer.data, &plan.bBuffer.stride);
                b = plan.bBuffer.data;
                bStride = plan.bBuffer.stride;
            }
            for (int i = 0, mc; i < p.m; i += mc) {
                mc = smaller(rowStep, p.m - i);
                const T* a = p.a.data;
                int aStride = lda;
                if (mode.packsA) {
                    copy_a(plan, p.opA)(&mc, &kc, viewA.at(i, l), &lda, plan.aBuffer.data, &plan.aBuffer.stride,
                                        &p.alpha);
                    a = plan.aBuffer.data;
                    aStride = plan.aBuffer.stride;
                }
                plan.micro(&transa, &transb, &mc, &nc, &depth, &p.alpha, a, &aStride, b, &bStride, beta, &p.c(i, j),
                           &ldc, plan.sliver.data, form);
            }
        }
    }
}

// The unpacked path, out of line: once in a build, whoever falls back on it.
template <class T>
[[gnu::noinline]] void gemm_unpacked(GemmCall<T> p) {
    gemm_small(p);
}

template <class T>
int blocked(GemmCall<T> call, GemmMode mode, GemmPlan<T>* plan) {
    if (call.is_empty())
        return 0;
    ModeTraits traits;
    if (!mode_traits(mode, traits))
        return 1;
    if (plan->mb == 0 || plan->nb == 0 || plan->kb == 0)
        plan->setBlocks(&call.m, &call.n, &call.k, plan);
    if (mode == GemmMode::choose) {
        mode = pick_mode(call.n, call.k, *plan);
        mode_traits(mode, traits);
    }
    const T one = scalar<T>(1);
    const bool small = is_small(mode, call, *plan);
    if (call.adds_nothing() || small || !plan->microScalesC) {
        gemm_scale_c(call.m, call.n, call.beta, call.c);
        call.beta = one;
    }
    if (call.adds_nothing())
        return 0;
    if (small) {
        gemm_unpacked(call);
        return 0;
    }
    // Where the caller packed an operand, k is one block, whatever the plan would cut it into.
    if (traits.one_k_block() && plan->kb < call.k)
        plan->kb = round_up(call.k, plan->kUnit);
    void* rawBlock = nullptr;
    plan->bufferSizes(traits.set, BlockClip::toProblem, &call.m, &call.n, &call.k, plan);
    plan->allocateBuffers(traits.set, &rawBlock, plan);
    if (!rawBlock) {
        gemm_scale_c(call.m, call.n, call.beta, call.c);
        call.beta = one;
        if (traits.one_k_block())
            return 1;
        gemm_unpacked(call);
        return 0;
    }
    multiply_blocks(call, traits, *plan);
    qrv_serv_deallocate(rawBlock);
    return 0;
}

// ---- A triangle of C -------------------------------------------------------------------------------------------

// Columns that are computed at once where they cross the diagonal, in whole panels, at most: what lies in the other
// triangle is in vain.
constexpr int crossingMost = 8;

// C := C + alpha*op(A)*op(B) in a triangle of a square C with its diagonal; buffers are there. A block of rows takes
// the columns beside its diagonal block at once, those across it a few at a time: the rows that are in the triangle
// with all of these, and a square, computed aside, of which the triangle is added.
template <class T>
void multiply_triangle(Uplo uplo, const GemmCall<T>& p, const GemmPlan<T>& plan) {
    const OpView<const T> viewA = p.view_of_a(), viewB = p.view_of_b();
    const char transa = letter(p.opA), transb = letter(p.opB);
    const int lda = static_cast<int>(p.a.ld), ldb = static_cast<int>(p.b.ld);
    const T one = scalar<T>(1);
    const bool upper = uplo == Uplo::upper;
    const int crossing = plan.sliverColumns > 0 ? smaller(plan.sliverColumns, crossingMost) : crossingMost;
    QRV_ASSERT(crossing % plan.mUnit == 0 && plan.mb % plan.mUnit == 0);
    for (int l = 0, kc; l < p.k; l += kc) {
        kc = smaller(plan.kb, p.k - l);
        for (int i = 0, mc; i < p.m; i += mc) {
            mc = smaller(plan.mb, p.m - i);
            copy_a(plan, p.opA)(&mc, &kc, viewA.at(i, l), &lda, plan.aBuffer.data, &plan.aBuffer.stride, &p.alpha);
            // Rows of the block and columns of C, into `out`.
            const auto multiply = [&](int row, int rows, int column, int columns, Matrix<T> out,
                                      MicroForm form = MicroForm::directB) {
                if (rows <= 0 || columns <= 0)
                    return;
                const T* a = plan.aBuffer.data + row / plan.mUnit * std::ptrdiff_t{plan.aBuffer.stride};
                const int ldo = static_cast<int>(out.ld);
                plan.micro(&transa, &transb, &rows, &columns, &kc, &p.alpha, a, &plan.aBuffer.stride,
                           viewB.at(l, column), &ldb, &one, out.data, &ldo, plan.sliver.data, form);
            };
            if (upper)
                multiply(0, mc, i + mc, p.n - i - mc, p.c.block(i, i + mc));
            else
                multiply(0, mc, 0, i, p.c.block(i, 0));
            for (int row = 0, width; row < mc; row += width) {
                width = smaller(crossing, mc - row);
                const int column = i + row, next = row + width;
                if (upper)
                    multiply(0, row, column, width, p.c.block(i, column));
                else
                    multiply(next, mc - next, column, width, p.c.block(i + next, column));
                const bool expanded = plan.sliverColumns > 0 && (upper ? row : mc - next) > 0;
                alignas(64) T buffer[crossingMost * crossingMost] = {};
                multiply(row, width, column, width, {buffer, crossing},
                         expanded ? MicroForm::expandedB : MicroForm::directB);
                for (int j = 0; j < width; ++j)
                    for (int r = upper ? 0 : j, end = upper ? j + 1 : width; r < end; ++r)
                        p.c(column + r, column + j) = p.c(column + r, column + j) + buffer[r + j * crossing];
            }
        }
    }
}

// The same with beta*C for C; false if work memory is refused: nothing has been done then.
template <class T>
bool triangle_by_plan(Uplo uplo, const GemmCall<T>& call, GemmPlan<T>* plan) {
    plan->setBlocks(&call.m, &call.n, &call.k, plan);
    void* rawBlock = nullptr;
    plan->bufferSizes(BufferSet::aSliver, BlockClip::toProblem, &call.m, &call.n, &call.k, plan);
    plan->allocateBuffers(BufferSet::aSliver, &rawBlock, plan);
    if (!rawBlock)
        return false;
    for (int j = 0; j < call.n; ++j) {
        const int first = uplo == Uplo::upper ? 0 : j, end = uplo == Uplo::upper ? j + 1 : call.n;
        gemm_scale_c(end - first, 1, call.beta, call.c.block(first, j));
    }
    multiply_triangle(uplo, call, *plan);
    qrv_serv_deallocate(rawBlock);
    return true;
}

// ---- The serial entry ----------------------------------------------------------------------------------------

// The whole operation; the plan is loaded and has no blocks yet.
template <class T>
void serial_gemm(GemmCall<T> call, GemmPlan<T>* plan) {
    QRV_ASSERT(call.is_well_formed());
    const bool small = call.m < plan->mUnit || call.n < plan->nUnit || call.k < plan->kUnit;
    if (call.alpha == scalar<T>(0) || small || !plan->microScalesC) {
        gemm_scale_c(call.m, call.n, call.beta, call.c);
        call.beta = scalar<T>(1);
    }
    if (call.alpha == scalar<T>(0))
        return;
    if (small)
        return gemm_unpacked(call);
    plan->setBlocks(&call.m, &call.n, &call.k, plan);
    blocked(call, pick_mode(call.n, call.k, *plan), plan);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
