// C := alpha*op(A)*op(B) + beta*C over wide vectors, without packing and without work memory: for problems too small to
// repay it. Which of the ways it goes:
//
//   tiles      see gemm_direct_tiles.hpp, which also tells what is read and in which order it is summed
//   few steps  of real elements, see gemm_shallow.hpp
//   few rows, or few columns, and many steps  of real elements, see gemm_dots.hpp
//   few rows   of real elements, see gemm_mirrored.hpp
//   rows that would begin another vector, of real elements, apart
#pragma once

#include "blas/assert.hpp"
#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/gemm_direct_tiles.hpp"
#include "blas/kernel/common/gemm/gemm_dots.hpp"
#include "blas/kernel/common/gemm/gemm_mirrored.hpp"
#include "blas/kernel/common/gemm/gemm_shallow.hpp"
#include "blas/kernel/gemm_kernels.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Whether few rows have a way of their own.
template <class Vector>
constexpr bool pays_apart(bool transposedA, bool transposedB, int m, int n, int k) {
    return transposedB ? n >= Vector::lanes && pays_mirrored<Vector>(transposedA, true, m, n, k)
                       : pays_by_dots<Vector>(transposedA, transposedB, m, n, k);
}

// All rows, those that would begin another vector apart.
template <class Vector>
[[gnu::noinline]] void direct_rows_apart(GemmCall<float> call) {
    const bool dots = !transposes(call.opB);
    const int rest = call.m % Vector::lanes;
    GemmCall<float> last = call;
    call.m -= rest;
    last.m = rest;
    last.a.data = call.view_of_a().at(call.m, 0);
    last.c = call.c.block(call.m, 0);
    direct_tiles<Vector>(call);
    dots ? gemm_by_dots<Vector>(last) : direct_mirrored<Vector, false>(last);
}
// A product of few elements is one tile, and to look for it takes longer than to compute it.
constexpr int fewSteps = 32;
template <class Vector, class T>
QRV_INLINE bool is_one_tile(int m, int n, int k) {
    return m * floatsIn<T> <= Vector::lanes && n <= columns_of_tile<Vector, T>(1) && k <= fewSteps;
}
template <class Vector, bool gathered, class T>
QRV_INLINE void direct_one_tile(const GemmCall<T>& call) {
    DirectProduct<T> p = direct_product(call);
    p.k = call.k;
    const int rows = call.m * floatsIn<T>;
    const auto* a = reinterpret_cast<const float*>(call.a.data);
    alignas(gathered ? 64 : 4) float buffer[gathered ? Vector::lanes * fewSteps : 1];
    if constexpr (gathered) {
        transpose_tile<Vector, T>(rows, 1, call.k, a, p.aStep, buffer);
        p.aStep = Vector::lanes;
        a = buffer;
    }
    direct_tile_of<Vector, T>(1, rows, call.n, call.k)(p, a, reinterpret_cast<const float*>(call.b.data),
                                                       reinterpret_cast<float*>(call.c.data), rows);
}

// The whole product; m, n and k are positive.
template <class Vector, class T>
QRV_INLINE void gemm_direct(const GemmCall<T>& call) {
    QRV_ASSERT(call.is_well_formed());
    const bool transposedA = transposes(call.opA), transposedB = transposes(call.opB);
    if constexpr (!isComplex<T>) {
        // Two short vectors are one line of a step of B: where they displace each other, few rows are read with each.
        const bool repeats = Vector::lanes < 16 && call.m > leastRepeated && call.b.ld % directConflict<T> == 0;
        const bool mirrored = !repeats && pays_mirrored<Vector>(transposedA, transposedB, call.m, call.n, call.k);
        if (!mirrored && pays_shallow<Vector>(call.m, call.n, call.k))
            return gemm_shallow<Vector>(call);
        if (pays_by_dots<Vector>(transposedA, transposedB, call.m, call.n, call.k))
            return gemm_by_dots<Vector>(call);
        if (mirrored)
            return transposedB ? direct_mirrored<Vector, false>(call) : direct_mirrored<Vector, true>(call);
        const int rest = rows_apart<Vector>(call.m, call.n, call.k);
        if (rest > 0 && pays_apart<Vector>(transposedA, transposedB, rest, call.n, call.k))
            return direct_rows_apart<Vector>(call);
    }
    direct_tiles<Vector>(call);
}

// The same, straight from an entry. Each way has a frame of its own, and the arguments as they come: what chooses
// between them is a few comparisons.
template <class Vector, bool gathered, class T>
QRV_AS_WRITTEN void direct_by_one_tile(QRV_GEMM_PARAMETERS(T)) {
    direct_one_tile<Vector, gathered>(gemm_call<T>(QRV_GEMM_ARGUMENTS));
}
template <class Vector, class T>
QRV_AS_WRITTEN void direct_by_tiles(QRV_GEMM_PARAMETERS(T)) {
    gemm_direct<Vector>(gemm_call<T>(QRV_GEMM_ARGUMENTS));
}
template <class Vector, class T>
QRV_INLINE void gemm_direct(QRV_GEMM_PARAMETERS(T)) {
    if (!is_one_tile<Vector, T>(*m, *n, *k))
        return direct_by_tiles<Vector, T>(QRV_GEMM_ARGUMENTS);
    transposes(*transa) ? direct_by_one_tile<Vector, true, T>(QRV_GEMM_ARGUMENTS)
                        : direct_by_one_tile<Vector, false, T>(QRV_GEMM_ARGUMENTS);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
