// What the level 2 kernels do with elements of a matrix, one at a time: the generic build. See common/pack.hpp.
#pragma once

#include <cstddef>

#include "blas/complex.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Elements `from` to `to` - 1 of a pack: the single one, or none.
struct PackRange {
    bool any;
};

// Stands for all elements of a pack where others give their number.
struct All {};
struct AllAligned {};

template <class T>
struct Pack {
    static constexpr int count = 1;
    T v;

    static Pack zero() { return {T{}}; }
    static Pack load(const T* p) { return {*p}; }
    static Pack load(const T* p, All) { return load(p); }
    static Pack load(const T* p, int) { return {*p}; }
    template <class Part>
    static Pack load_between_stores(const T* p, Part part) {
        return load(p, part);
    }
    static Pack load(const T* p, PackRange range) { return range.any ? load(p) : zero(); }
    void store(T* p) const { *p = v; }
    void store(T* p, All) const { store(p); }
    void store(T* p, int) const { *p = v; }
    void store(T* p, PackRange range) const {
        if (range.any)
            store(p);
    }
    static PackRange range(int from, int to) { return {from < to}; }
};

inline float multiply_add_element(float a, float b, float c) {
    return a * b + c;
}

template <class T>
struct Factor {
    T v;
    Factor() = default;
    explicit Factor(T x) : v(x) {}
};

template <class T>
Pack<T> loaded_once(Pack<T> x) {
    return x;
}

template <class T>
struct ScaledSum {
    T sum;
    ScaledSum() = default;
    explicit ScaledSum(Pack<T> y) : sum(y.v) {}
    ScaledSum(Pack<T> a, const Factor<T>& s) : sum(a.v * s.v) {}
    ScaledSum(Pack<T> y, Pack<T> a, const Factor<T>& s) : sum(y.v + a.v * s.v) {}
    void add(Pack<T> a, const Factor<T>& s) { sum += a.v * s.v; }
    void add(Pack<T> a, const Factor<T>& s, PackRange range) {
        if (range.any)
            add(a, s);
    }
    void join(const ScaledSum& other) { sum += other.sum; }
    Pack<T> result() const { return {sum}; }
};

template <class T>
using AddedFactor = Factor<T>;
template <class T>
struct AddedPack {
    T v;
    AddedPack() = default;
    explicit AddedPack(Pack<T> x) : v(x.v) {}
    Pack<T> add_to(const AddedFactor<T>& s, Pack<T> a) const { return {a.v + v * s.v}; }
};

template <class T>
struct DotOperand {
    T v;
    explicit DotOperand(Pack<T> x) : v(x.v) {}
};

template <bool conjugated, class T>
struct DotSum {
    T sum;
    static DotSum zero() { return {}; }
    void add(Pack<T> a, const DotOperand<T>& x) { sum += conj_if<conjugated>(a.v) * x.v; }
    void add(Pack<T> a, const DotOperand<T>& x, PackRange range) {
        if (range.any)
            add(a, x);
    }
};

template <class Sum, int count>
void clear(Sum (&sums)[count]) {
    for (Sum& sum : sums)
        sum = Sum::zero();
}

template <int count, bool conjugated, class T>
void store_dots(const DotSum<conjugated, T> (&sums)[count], T* out) {
    for (int i = 0; i < count; ++i)
        out[i] = sums[i].sum;
}

template <class T>
struct SmallSquare {
    static constexpr int side = 1;
    template <bool conjugated>
    static void transpose(const T* a, std::ptrdiff_t, T* out, std::ptrdiff_t) {
        *out = conj_if<conjugated>(*a);
    }
    T element;
    static SmallSquare load(const T* a, std::ptrdiff_t) { return {*a}; }
    void store(T* out, std::ptrdiff_t) const { *out = element; }
    template <bool conjugated>
    SmallSquare transposed() const {
        return {conj_if<conjugated>(element)};
    }
    template <bool hermitian, bool>
    static void expand(const T* a, std::ptrdiff_t, T* out, std::ptrdiff_t) {
        *out = *a;
        if constexpr (hermitian)
            make_real(*out);
    }
};

// Columns of a matrix that one pass takes.
template <class T>
constexpr int columnsAtOnce = 4;
template <class T>
constexpr int columnsOfBothHalves = 1;
template <class T, int terms>
constexpr int columnsOfUpdate = 2;

} // namespace qrv::kernel::QRV_KERNEL_BUILD
