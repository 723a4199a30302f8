// "Vectors" of the generic build: one float each, so that what is told over vectors runs as plain scalar code.
#pragma once

#define QRV_VECTOR_LANES 1

namespace qrv::kernel::QRV_KERNEL_BUILD {

struct Vec1f {
    static constexpr int lanes = 1;
    float v;

    static Vec1f zero() { return {0}; }
    static Vec1f splat(float x) { return {x}; }
    static Vec1f load(const float* p) { return {*p}; }
    static Vec1f load_aligned(const float* p) { return {*p}; }
    void store(float* p) const { *p = v; }
    void store_aligned(float* p) const { *p = v; }

    friend Vec1f operator+(Vec1f a, Vec1f b) { return {a.v + b.v}; }
    friend Vec1f operator*(Vec1f a, Vec1f b) { return {a.v * b.v}; }
};

inline Vec1f multiply_add(Vec1f a, Vec1f b, Vec1f c) {
    return {a.v * b.v + c.v};
}
inline Vec1f subtract_product(Vec1f a, Vec1f b, Vec1f c) {
    return {c.v - a.v * b.v};
}

inline void load_triples(const float* p, Vec1f& x, Vec1f& y, Vec1f& z) {
    x.v = p[0], y.v = p[1], z.v = p[2];
}
inline void store_triples(float* p, Vec1f x, Vec1f y, Vec1f z) {
    p[0] = x.v, p[1] = y.v, p[2] = z.v;
}

// A part of a vector has fewer lanes than all, so nobody asks for one here.
template <class V>
V load_part(const float*, int) {
    return V::zero();
}
inline void store_part(float*, Vec1f, int) {}

// The lane of a vector in double.
template <class V>
struct Doubles {
    double low;

    static Doubles zero() { return {0}; }
    static Doubles widen(V x) { return {x.v}; }
    double sum() const { return low; }
};

using Vec = Vec1f;

} // namespace qrv::kernel::QRV_KERNEL_BUILD
