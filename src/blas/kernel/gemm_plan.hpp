// GemmPlan: the numbers, buffers and routines of one plan-driven GEMM call, for the element type T.
//
// A plan lives on the caller's stack; each thread of a team has its own copy. It is filled from the constant row
// of the build in use. This header holds plain types only: kernel sources of all builds include it.
#pragma once

#include <cstddef>

namespace qrv {

template <class T>
struct GemmPlan;

// One work buffer inside the plan's block of work memory.
template <class T>
struct GemmBuffer {
    T* data;
    int stride;        // elements from one packed panel to the next
    std::size_t bytes; // the slack that kernels may read past the last panel included
    int alignShift;    // data is aligned to 1 << alignShift bytes
};

// Which buffers a call needs. The one allocation holds them in the order of the name; `aB` sizes them only.
enum class BufferSet : int { aSliverB = 100, a = 101, b = 102, aB = 103, sliverB = 104, aSliver = 105, sliver = 106 };

// Whether buffer sizes follow the problem, where it is smaller than a block, or the blocks as they stand.
enum class BlockClip : int { toProblem = 107, none = 108 };

// Who packs what in the blocked core.
enum class GemmMode : int {
    choose = 0,
    packBoth = 2,       // loops: columns, k, rows
    packA = 4,          // the same; B is read in place
    packBGivenA = 8,    // A packed by the caller, k one block; loop: columns
    directBGivenA = 16, // A packed by the caller, B read in place, k one block; loop: columns
    packAGivenB = 32,   // B packed by the caller, k one block; loop: rows
    givenBoth = 64,     // both packed by the caller, k one block
};

// Whether the micro-kernel's B is packed (ldb is then its panel stride) or the caller's matrix; expandedB: that of the
// call before, at most sliverColumns of the plan, and just as deep.
enum class MicroForm : int { packedB = 2, directB = 3, expandedB = 4 };

template <class T>
struct GemmPlan {
    // op(A) block of m x k, times alpha, into panels of mUnit rows, `stride` elements apart.
    using CopyA = void(const int* m, const int* k, const T* a, const int* lda, T* buffer, const int* stride,
                       const T* alpha);
    // op(B) block of k x n into panels of nUnit columns, `stride` elements apart.
    using CopyB = void(const int* k, const int* n, const T* b, const int* ldb, T* buffer, const int* stride);
    // C += packed A times B over kp steps. Form packedB: kp is a multiple of kUnit. Form directB: kp is the number of
    // steps that B has, which the kernel fills up to kUnit. alpha and beta are passed along and not used, but for a
    // plan with microScalesC, whose kernel computes beta*C + A times B.
    using Micro = void(const char* transa, const char* transb, const int* m, const int* n, const int* kp,
                       const T* alpha, const T* aPacked, const int* aStride, const T* b, const int* ldb, const T* beta,
                       T* c, const int* ldc, T* sliver, MicroForm form);

    int rowIndex;            // row of the plan table in use
    int tableTag;            // constant of the table, never consulted
    int mb, nb, kb;          // block sizes; 0: not decided yet
    int mUnit, nUnit, kUnit; // panel width in rows and in columns, unit to which k is filled up
    int smallM, smallN, smallK;
    GemmBuffer<T> aBuffer;
    GemmBuffer<T> bBuffer;
    void (*setBlocks)(const int* m, const int* n, const int* k, GemmPlan* plan);
    int (*bufferSizes)(BufferSet set, BlockClip clip, const int* m, const int* n, const int* k, GemmPlan* plan);
    int (*allocateBuffers)(BufferSet set, void** rawBlock, GemmPlan* plan);
    CopyA *copyAN, *copyAT, *copyAC;
    CopyB *copyBN, *copyBT, *copyBC;
    int smallFactor; // sliver floats per float of B
    Micro* micro;
    GemmBuffer<T> sliver; // the expanded columns of B of one pass over the row panels
    bool microScalesC;    // whether micro applies beta; if not, C is scaled beforehand
    int sliverColumns;    // those that the sliver still holds after a call with no more; 0: none
};

} // namespace qrv
