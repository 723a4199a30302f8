// The threaded GEMM behind its entry: one call as a value, the record that each thread of a team works from, and
// the regions.
#pragma once

#include "blas/calls.hpp"
#include "blas/thread/common/level3/gemm_partition.hpp"
#include "blas/thread/common/machine.hpp"

namespace qrv {

// One GEMM call, which can be cut into slices. A slice is a call of its own.
template <class T>
struct GemmCall {
    Op opA, opB;
    int m, n, k;
    T alpha;
    Matrix<const T> a, b;
    T beta;
    Matrix<T> c;

    GemmSizes sizes() const { return {m, n, k}; }

    // Those of op(A) and C, of op(B) and C, of op(A) and op(B).
    GemmCall rows(Slice slice) const {
        GemmCall part = *this;
        part.m = slice.count;
        part.a = opA == Op::none ? a.block(slice.first, 0) : a.block(0, slice.first);
        part.c = c.block(slice.first, 0);
        return part;
    }
    GemmCall columns(Slice slice) const {
        GemmCall part = *this;
        part.n = slice.count;
        part.b = opB == Op::none ? b.block(0, slice.first) : b.block(slice.first, 0);
        part.c = c.block(0, slice.first);
        return part;
    }
    GemmCall steps(Slice slice) const {
        GemmCall part = *this;
        part.k = slice.count;
        part.a = opA == Op::none ? a.block(0, slice.first) : a.block(slice.first, 0);
        part.b = opB == Op::none ? b.block(slice.first, 0) : b.block(0, slice.first);
        return part;
    }
};

template <class T>
void serial(const GemmCall<T>& q) {
    kernel::gemm(q.opA, q.opB, q.m, q.n, q.k, q.alpha, q.a, q.b, q.beta, q.c);
}

// C := beta*C on a team.
void gemm_scale_region(const GemmCall<float>& call, int threads);

// The whole product on a team of at most `threads`, for a call that gemm_is_small, respectively for others.
template <class T>
void gemm_small_region(const GemmCall<T>& call, int threads);
template <class T>
void gemm_large_region(GemmCall<T> call, const GemmFacts& facts, int threads);

} // namespace qrv
