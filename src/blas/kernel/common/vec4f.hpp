// Four floats in one 128-bit register, with what every vector build has. A build's own vec.hpp includes this and
// adds what that build does better.
#pragma once

#include <emmintrin.h>

namespace qrv::kernel::QRV_KERNEL_BUILD {

struct Vec4f {
    static constexpr int lanes = 4;
    __m128 v;

    static Vec4f zero() { return {_mm_setzero_ps()}; }
    static Vec4f splat(float x) { return {_mm_set1_ps(x)}; }
    static Vec4f load(const float* p) { return {_mm_loadu_ps(p)}; }
    static Vec4f load_aligned(const float* p) { return {_mm_load_ps(p)}; }
    void store(float* p) const { _mm_storeu_ps(p, v); }
    void store_aligned(float* p) const { _mm_store_ps(p, v); }

    friend Vec4f operator+(Vec4f a, Vec4f b) { return {_mm_add_ps(a.v, b.v)}; }
    friend Vec4f operator-(Vec4f a, Vec4f b) { return {_mm_sub_ps(a.v, b.v)}; }
    friend Vec4f operator*(Vec4f a, Vec4f b) { return {_mm_mul_ps(a.v, b.v)}; }
};

// x2 x3 x0 x1
inline Vec4f swap_halves(Vec4f x) {
    return {_mm_shuffle_ps(x.v, x.v, _MM_SHUFFLE(1, 0, 3, 2))};
}
// a0 a1 b0 b1
inline Vec4f low_halves(Vec4f a, Vec4f b) {
    return {_mm_movelh_ps(a.v, b.v)};
}
// a2 a3 b2 b3
inline Vec4f high_halves(Vec4f a, Vec4f b) {
    return {_mm_movehl_ps(b.v, a.v)};
}
inline void transpose(Vec4f& a, Vec4f& b, Vec4f& c, Vec4f& d) {
    _MM_TRANSPOSE4_PS(a.v, b.v, c.v, d.v);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
