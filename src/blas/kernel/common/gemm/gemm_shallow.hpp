// C := alpha*op(A)*op(B) + beta*C of real elements and few steps over wide vectors: such a product spends its time on
// the way to and from C, and a tile of it hardly repays its start.
//
//   strip      some vectors of rows of alpha*op(A), all steps of them, stay in registers while the columns of C go by
//   op(A) = A^T  the steps of a strip are brought together in a buffer on the stack first
//   alignment  none assumed
//   reads      nothing past the operands; C only if beta is not 0
//
// Each element of C sums its products, of alpha*op(A), in ascending k in one chain, to which beta*C is added.
#pragma once

#include <cstddef>

#include "blas/assert.hpp"
#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "blas/kernel/common/gemm/gemm_gather.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// How many vectors high a strip of so many steps may be: beside it the registers hold a column of C, its sums, an
// element of B and beta. 0: there is no such strip.
template <class Vector>
constexpr int shallow_vectors(int steps) {
    constexpr int registers = sizeof(void*) == 4 ? 8 : Vector::lanes == 16 ? 32 : 16;
    return smaller(3, (registers - 2) / (steps + 2));
}
template <class Vector>
constexpr int most_shallow_steps() {
    int steps = 0;
    while (steps < shallowSteps && shallow_vectors<Vector>(steps + 1) > (sizeof(void*) == 4 ? 0 : 1))
        ++steps;
    return steps;
}

struct ShallowProduct {
    std::ptrdiff_t aStep, bStep, bColumn, ldc;
    int n;
    float alpha, beta;
};

// The columns of one strip, whose last vector has `lastRows` rows.
template <class Vector, int steps, int vectors>
void shallow_strip(const ShallowProduct& p, const float* a, const float* b, float* c, int lastRows) {
    const typename Vector::Mask mask = Vector::Mask::first(lastRows);
    const auto load = [mask](const float* x, Vector(&to)[vectors]) __attribute__((always_inline)) {
        QRV_UNROLL
        for (int v = 0; v < vectors - 1; ++v)
            to[v] = Vector::load(x + v * Vector::lanes);
        to[vectors - 1] = load_kept(x + (vectors - 1) * Vector::lanes, mask);
    };
    const std::ptrdiff_t bStep = p.bStep, bColumn = p.bColumn, ldc = p.ldc;
    const Vector alpha = Vector::splat(p.alpha), beta = Vector::splat(p.beta);
    // A masked store reaches, without a lane to store, into columns to come. What is loaded there before it does not
    // wait for it.
    const bool masked = Vector::masksStores && 2 * ldc >= vectors * Vector::lanes;
    Vector strip[steps][vectors];
    QRV_UNROLL
    for (int l = 0; l < steps; ++l) {
        load(a + l * p.aStep, strip[l]);
        QRV_UNROLL
        for (int v = 0; v < vectors; ++v)
            strip[l][v] = alpha * strip[l][v];
    }
    const auto go_by = [=](auto reads, auto whole) __attribute__((always_inline)) {
        const float* from = b;
        float* to = c;
        Vector old[vectors];
        if constexpr (reads())
            load(to, old);
        for (int left = p.n; left > 0; --left, from += bColumn, to += ldc) {
            Vector sums[vectors];
            QRV_UNROLL
            for (int l = 0; l < steps; ++l) {
                const Vector x = Vector::splat(from[l * bStep]);
                QRV_UNROLL
                for (int v = 0; v < vectors; ++v)
                    sums[v] = l == 0 ? strip[l][v] * x : multiply_add(strip[l][v], x, sums[v]);
            }
            if constexpr (reads()) {
                QRV_UNROLL
                for (int v = 0; v < vectors; ++v)
                    sums[v] = multiply_add(beta, old[v], sums[v]);
                if (left > 1)
                    load(to + ldc, old);
            }
            QRV_UNROLL
            for (int v = 0; v < vectors - 1; ++v)
                sums[v].store(to + v * Vector::lanes);
            float* const last = to + (vectors - 1) * Vector::lanes;
            if constexpr (whole())
                sums[vectors - 1].store(last);
            else if (masked)
                store_kept(last, sums[vectors - 1], mask);
            else
                store_in_pieces(last, sums[vectors - 1], lastRows);
        }
    };
    if (lastRows == Vector::lanes)
        p.beta != 0 ? go_by(Lanes<true>(), Lanes<true>()) : go_by(Lanes<false>(), Lanes<true>());
    else
        p.beta != 0 ? go_by(Lanes<true>(), Lanes<false>()) : go_by(Lanes<false>(), Lanes<false>());
}

using ShallowStrip = void(const ShallowProduct& p, const float* a, const float* b, float* c, int lastRows);
template <class Vector>
struct ShallowStrips {
    ShallowStrip* strip[shallowSteps][3];

    template <int steps = 1, int vectors = 1>
    constexpr void fill() {
        strip[steps - 1][vectors - 1] = shallow_strip<Vector, steps, vectors>;
        if constexpr (vectors < shallow_vectors<Vector>(steps))
            fill<steps, vectors + 1>();
        else if constexpr (steps < most_shallow_steps<Vector>())
            fill<steps + 1, 1>();
    }
    constexpr ShallowStrips() : strip{} { fill(); }
};
template <class Vector>
constexpr ShallowStrips<Vector> shallowStrips;

// Rows that a vector of them repays. Columns that repay the way of a strip into the registers are more than its steps.
constexpr int leastShallowRows = 9;
// Elements of C that leave the outer cache, and a leading dimension in multiples of which its columns displace each
// other in the innermost one: all rows of a few columns at a time then. Short vectors leave a C both large and wide to
// other ways.
constexpr double shallowFar = 0x1p20;
constexpr int shallowConflict = 1024;
constexpr int fewShallowColumns = 16;
template <class Vector>
constexpr bool pays_shallow(int m, int n, int k) {
    return k <= most_shallow_steps<Vector>() && m >= leastShallowRows && n > k &&
           (Vector::lanes == 16 || n <= 64 || static_cast<double>(m) * n <= shallowFar / 2);
}
template <class Vector>
[[gnu::noinline]] void gemm_shallow(GemmCall<float> call) {
    alignas(64) float buffer[shallowSteps * 3 * Vector::lanes];
    const bool transposedA = transposes(call.opA);
    const OpView<const float> a = call.view_of_a(), b = call.view_of_b();
    ShallowProduct p{call.a.ld, b.rowStride, b.columnStride, call.c.ld, call.n, call.alpha, call.beta};
    const int most = shallow_vectors<Vector>(call.k);
    QRV_ASSERT(most > 0);
    const bool walksGently = call.c.ld % shallowConflict == 0 || static_cast<double>(call.m) * call.n > shallowFar;
    const int columnsAtOnce = walksGently ? fewShallowColumns : call.n;
    for (int j = 0; j < call.n; j += p.n) {
        p.n = smaller(columnsAtOnce, call.n - j);
        for (int i = 0, rows; i < call.m; i += rows) {
            const int vectors = even_share((call.m - i + Vector::lanes - 1) / Vector::lanes, most);
            rows = smaller(call.m - i, vectors * Vector::lanes);
            const float* strip = a.at(i, 0);
            if (transposedA) {
                p.aStep = vectors * Vector::lanes;
                transpose_tile<Vector, float>(rows, vectors, call.k, strip, call.a.ld, buffer);
                strip = buffer;
            }
            shallowStrips<Vector>.strip[call.k - 1][vectors - 1](p, strip, b.at(0, j), &call.c(i, j),
                                                                 rows - (vectors - 1) * Vector::lanes);
        }
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
