// The threaded GEMM behind its entry: slices of a call, the record that each thread of a team works from, and
// the regions.
#pragma once

#include "blas/calls.hpp"
#include "blas/gemm_call.hpp"
#include "blas/thread/common/level3/gemm_partition.hpp"
#include "blas/thread/common/machine.hpp"
#include "blas/thread/common/work_threads.hpp"

namespace qrv {

template <class T>
GemmSizes sizes_of(const GemmCall<T>& q) {
    return {q.m, q.n, q.k};
}

// Slices of a call, each a call of its own: those of op(A) and C, of op(B) and C, of op(A) and op(B).
template <class T>
GemmCall<T> rows_of(GemmCall<T> q, Slice slice) {
    q.m = slice.count;
    q.a = q.opA == Op::none ? q.a.block(slice.first, 0) : q.a.block(0, slice.first);
    q.c = q.c.block(slice.first, 0);
    return q;
}
template <class T>
GemmCall<T> columns_of(GemmCall<T> q, Slice slice) {
    q.n = slice.count;
    q.b = q.opB == Op::none ? q.b.block(0, slice.first) : q.b.block(slice.first, 0);
    q.c = q.c.block(0, slice.first);
    return q;
}
template <class T>
GemmCall<T> steps_of(GemmCall<T> q, Slice slice) {
    q.k = slice.count;
    q.a = q.opA == Op::none ? q.a.block(0, slice.first) : q.a.block(slice.first, 0);
    q.b = q.opB == Op::none ? q.b.block(slice.first, 0) : q.b.block(0, slice.first);
    return q;
}

template <class T>
void serial(const GemmCall<T>& q) {
    kernel::gemm(q.opA, q.opB, q.m, q.n, q.k, q.alpha, q.a, q.b, q.beta, q.c);
}

// C := beta*C on a team.
void gemm_scale_region(const GemmCall<float>& call, int threads);

// The whole product on a team of at most `threads`: where threads go by work, with the rows of a thread in `pieces`,
// and elsewhere for a call that gemm_is_small, respectively for others.
template <class T>
void gemm_grid_region(const GemmCall<T>& call, int threads, int pieces);
template <class T>
void gemm_small_region(const GemmCall<T>& call, int threads);
template <class T>
void gemm_large_region(GemmCall<T> call, const GemmFacts& facts, int threads);

} // namespace qrv
