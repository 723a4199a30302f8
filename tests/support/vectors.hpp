// Test vectors with increments: address, length and increment as a routine takes them, guarded by values around and
// between the elements that are recognised, or by a page that must not be touched.
#pragma once

#include <algorithm>
#include <complex>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <type_traits>

#include "blas/complex.hpp"
#include "support/matrices.hpp"

namespace qrv::test {

// ---- Elements of either kind, and as the oracles compute with them ------------------------------------------------

template <class T>
using Wide = std::conditional_t<std::is_same_v<T, float>, double, std::complex<double>>;

inline double widen(float x) {
    return x;
}
inline std::complex<double> widen(SingleComplex x) {
    return {x.re, x.im};
}
inline double conjugate(double x) {
    return x;
}
inline std::complex<double> conjugate(std::complex<double> x) {
    return std::conj(x);
}

// An element whose parts are value().
template <class T, class Value>
T element(const Value& value) {
    if constexpr (std::is_same_v<T, float>) {
        return value();
    } else {
        const float re = value();
        return {re, value()};
    }
}

// Multiples of 1/8 from -1 to 1: few of them multiply and add without rounding, so that any fault shows.
template <class T>
T eighths(std::mt19937& random) {
    return element<T>([&] { return (static_cast<float>(random() % 17) - 8) / 8; });
}
template <class T>
T any_size_one(std::mt19937& random) {
    std::uniform_real_distribution<float> uniform(-1, 1);
    return element<T>([&] { return uniform(random); });
}

// ---- The vectors --------------------------------------------------------------------------------------------------

enum class Guard { canaries, pageBehind, pageInFront };

// n elements, increment inc: data() is what a routine is given, v[i] is element i as the routine counts them, which for
// a negative increment means from the far end. Canaries fill whatever is no element: signaling NaN, each with a payload
// of its own, so that arithmetic changes them and copies do not fit. The elements begin `offset` floats past a 64-byte
// boundary; with a page they end, or begin, at its edge instead.
template <class T>
class GuardedVector {
public:
    explicit GuardedVector(int n, int inc = 1, int offset = 0, Guard guard = Guard::canaries)
        : n_(n), inc_(inc), length_(n < 1 ? 0 : parts * (1 + static_cast<std::size_t>(n - 1) * std::abs(inc))) {
        if (guard == Guard::canaries) {
            plain_.resize(length_ + 3 * band);
            const auto address = reinterpret_cast<std::uintptr_t>(plain_.data());
            first_ = plain_.data() + band + (64 - address % 64) % 64 / sizeof(float) + offset;
        } else {
            first_ = paged_.emplace(length_, guard == Guard::pageInFront).data();
        }
        for (float* p = begin(); p != end(); ++p) {
            const std::uint32_t bits = canary(p);
            std::memcpy(p, &bits, sizeof bits);
        }
    }
    GuardedVector(const GuardedVector&) = delete;
    GuardedVector& operator=(const GuardedVector&) = delete;

    int size() const { return n_; }
    int inc() const { return inc_; }
    T* data() { return reinterpret_cast<T*>(first_); }
    T& operator[](int i) { return data()[std::ptrdiff_t{inc_ < 0 ? i - n_ + 1 : i} * inc_]; }

    // Each element in memory becomes value(), in order.
    template <class Value>
    GuardedVector& fill(const Value& value) {
        for (int i = 0; i < (inc_ == 0 ? std::min(n_, 1) : n_); ++i)
            (*this)[i] = value();
        return *this;
    }

    // What oracles compute on; with increment 0 it has a single element, which element(i) of any i names.
    std::vector<Wide<T>> widened() {
        std::vector<Wide<T>> values;
        for (int i = 0; i < (inc_ == 0 ? std::min(n_, 1) : n_); ++i)
            values.push_back(widen((*this)[i]));
        return values;
    }

    // Whether these floats of its memory are the canaries that were put there.
    static bool intact(const float* from, const float* to) {
        bool same = true;
        for (const float* p = from; p < to; ++p) {
            const std::uint32_t bits = canary(p);
            same = same && std::memcmp(p, &bits, sizeof bits) == 0;
        }
        return same;
    }
    bool guards_intact() const {
        const std::size_t gap = parts * static_cast<std::size_t>(std::abs(inc_));
        bool all = intact(begin(), first_) && intact(first_ + length_, end());
        for (std::size_t p = 0; all && gap > parts && p + gap < length_; p += gap)
            all = intact(first_ + p + parts, first_ + p + gap);
        return all;
    }

private:
    static constexpr std::size_t parts = sizeof(T) / sizeof(float);
    static constexpr std::size_t band = 32;

    static std::uint32_t canary(const float* p) {
        return 0x7F80'0001U | (static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(p) >> 1) & 0x3F'FFFEU);
    }

    float* begin() { return plain_.empty() ? first_ : plain_.data(); }
    float* end() { return plain_.empty() ? first_ + length_ : plain_.data() + plain_.size(); }
    const float* begin() const { return const_cast<GuardedVector*>(this)->begin(); }
    const float* end() const { return const_cast<GuardedVector*>(this)->end(); }

    int n_, inc_;
    std::size_t length_; // floats from the first element in memory to the last
    std::vector<float> plain_;
    std::optional<GuardPageArray> paged_;
    float* first_;
};

// Whether the elements of v are `expected`, with an error of at most allowed(i) in element i, and nothing else has
// changed. `expected` is like widened().
template <class T, class Allowed>
bool holds(GuardedVector<T>& v, const std::vector<Wide<T>>& expected, const Allowed& allowed) {
    bool good = v.guards_intact();
    for (std::size_t i = 0; i < expected.size(); ++i)
        good = good && std::abs(widen(v[static_cast<int>(i)]) - expected[i]) <= allowed(i);
    return good;
}
template <class T>
bool holds_exactly(GuardedVector<T>& v, const std::vector<Wide<T>>& expected) {
    return holds(v, expected, [](std::size_t) { return 0.0; });
}

} // namespace qrv::test
