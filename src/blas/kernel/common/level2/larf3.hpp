// Reflectors of order 3 side by side, of the QR iteration: the b-th one, I - tau u u' with u = (1, v2, v3), is for the
// lines 3 b to 3 b + 2 of A, which are rows from the left and columns from the right.
//
//   count    reflectors
//   v        (tau, v2, v3) of the b-th one in column b
//   left     columns [3 b, n): those of a Hessenberg matrix whose first row and column A begins with
//   right    rows [begin + b * beginStep, end + b * endStep)
//
// From the left, as many reflectors as a vector has lanes go over a column at a time, each on three neighbouring
// elements; those over which the staircase of first columns leads take shorter vectors.
#pragma once

#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/vec.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// So many reflectors as V has lanes, or one in all of them.
template <class V>
struct Reflectors3 {
    V v2, v3, t1, t2, t3;

    Reflectors3(V tau, V second, V third) : v2(second), v3(third), t1(tau), t2(tau * second), t3(tau * third) {}
    static Reflectors3 one(const float* v) { return {V::splat(v[0]), V::splat(v[1]), V::splat(v[2])}; }
    static Reflectors3 several(Matrix<const float> v) {
        float parts[3][V::lanes];
        for (int lane = 0; lane < V::lanes; ++lane)
            for (int part = 0; part < 3; ++part)
                parts[part][lane] = v(part, lane);
        return {V::load(parts[0]), V::load(parts[1]), V::load(parts[2])};
    }

    QRV_INLINE void apply(V& x, V& y, V& z) const {
        const V sum = multiply_add(v3, z, multiply_add(v2, y, x));
        x = subtract_product(sum, t1, x);
        y = subtract_product(sum, t2, y);
        z = subtract_product(sum, t3, z);
    }
};

// ---- From the left --------------------------------------------------------------------------------------------------

// In columns [first, last) of the three rows at a, one by one.
inline void reflect_rows(const float* v, int first, int last, Matrix<float> a) {
    const float v2 = v[1], v3 = v[2], t1 = v[0], t2 = t1 * v2, t3 = t1 * v3;
    for (int j = first; j < last; ++j) {
        float* const x = a.column(j);
        const float sum = x[0] + v2 * x[1] + v3 * x[2];
        x[0] -= sum * t1, x[1] -= sum * t2, x[2] -= sum * t3;
    }
}

struct Single {
    static constexpr int lanes = 1;
};
#if QRV_VECTOR_LANES > 4
#define QRV_VECTORS_OF_ROWS Vec, Vec4f, Single
#else
#define QRV_VECTORS_OF_ROWS Vec, Single
#endif

// Columns up to `last` under `count` reflectors, the first of which begins with column `first`; in vectors of the first
// kind as far as they go, then in shorter ones.
template <class V, class... Shorter>
void reflect_staircase(int count, int first, int last, Matrix<const float> v, Matrix<float> a) {
    int b = 0;
    if constexpr (V::lanes > 1) {
        for (; b + V::lanes <= count; b += V::lanes) {
            const int begin = first + 3 * b, whole = smaller(last, begin + 3 * (V::lanes - 1));
            const auto reflectors = Reflectors3<V>::several(v.block(0, b));
            for (int j = whole; j < last; ++j) {
                V x, y, z;
                float* const p = a.column(j) + 3 * b;
                load_triples(p, x, y, z);
                reflectors.apply(x, y, z);
                store_triples(p, x, y, z);
            }
            // Where only some of them have begun.
            reflect_staircase<Shorter...>(V::lanes, begin, whole, v.block(0, b), a.block(3 * b, 0));
        }
        reflect_staircase<Shorter...>(count - b, first + 3 * b, last, v.block(0, b), a.block(3 * b, 0));
    } else {
        for (; b < count; ++b)
            reflect_rows(v.column(b), first + 3 * b, last, a.block(3 * b, 0));
    }
}

inline void larf3_left(int count, int n, Matrix<const float> v, Matrix<float> a) {
    reflect_staircase<QRV_VECTORS_OF_ROWS>(count, 0, n, v, a);
}
#undef QRV_VECTORS_OF_ROWS

// ---- From the right -------------------------------------------------------------------------------------------------

template <int vectors>
QRV_INLINE void reflect_strip(const Reflectors3<Vec>& reflector, float* x, float* y, float* z) {
    QRV_UNROLL
    for (int k = 0; k < vectors; ++k) {
        const int i = k * Vec::lanes;
        Vec a = Vec::load(x + i), b = Vec::load(y + i), c = Vec::load(z + i);
        reflector.apply(a, b, c);
        a.store(x + i), b.store(y + i), c.store(z + i);
    }
}

inline void reflect_columns(const float* v, int begin, int end, Matrix<float> a) {
    constexpr int unrolled = 2;
    const auto reflector = Reflectors3<Vec>::one(v);
    float *const x = a.column(0), *const y = a.column(1), *const z = a.column(2);
    int i = begin;
    for (; i + unrolled * Vec::lanes <= end; i += unrolled * Vec::lanes)
        reflect_strip<unrolled>(reflector, x + i, y + i, z + i);
    for (; i + Vec::lanes <= end; i += Vec::lanes)
        reflect_strip<1>(reflector, x + i, y + i, z + i);
    if (const int rest = end - i; rest > 0) {
        Vec first = load_part<Vec>(x + i, rest), second = load_part<Vec>(y + i, rest),
            third = load_part<Vec>(z + i, rest);
        reflector.apply(first, second, third);
        store_part(x + i, first, rest), store_part(y + i, second, rest), store_part(z + i, third, rest);
    }
}

struct StaircaseRows {
    int begin, end, beginStep, endStep;
};
inline void larf3_right(int count, const StaircaseRows& rows, Matrix<const float> v, Matrix<float> a) {
    for (int b = 0; b < count; ++b)
        if (v(0, b) != 0)
            reflect_columns(v.column(b), rows.begin + b * rows.beginStep, rows.end + b * rows.endStep,
                            a.block(0, 3 * b));
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
