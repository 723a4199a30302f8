// Matrices and vectors as routines take them, in memory that shows what is read or written beside their elements.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <optional>
#include <random>
#include <sys/mman.h>
#include <type_traits>
#include <unistd.h>
#include <vector>

#include "blas/complex.hpp"
#include "blas/matrix.hpp"
#include "qrv/service.h"
#include "service/vector_form.hpp"
#include "support/reserved.hpp"

namespace qrv::test {

// Whether results are the same bits wherever arrays lie: the kernels of 128-bit vectors begin with single elements up
// to a boundary of 16 bytes, and so sum in another order.
inline bool bits_are_free_of_alignment() {
    return qrv_serv_get_cpu_type() == 0 || vector_form_in_use() != VectorForm::sse;
}

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

constexpr bool is_transposed(char option) {
    return option != 'N' && option != 'n';
}
constexpr bool is_upper(char uplo) {
    return uplo == 'U' || uplo == 'u';
}

// ---- Elements of either kind, and as the oracles compute with them ------------------------------------------------

using Elements = testing::Types<float, SingleComplex>; // of the suites that serve both

// body of one kind after the other
template <class Body>
void for_both_elements(const Body& body) {
    body.template operator()<float>();
    body.template operator()<SingleComplex>();
}

// The head of a test of both kinds of elements, T.
#define TEST_OF_ELEMENTS(suite, name)                                                                                  \
    template <class T>                                                                                                 \
    void suite##_##name();                                                                                             \
    TEST(suite, name##OfReal) {                                                                                        \
        suite##_##name<float>();                                                                                       \
    }                                                                                                                  \
    TEST(suite, name##OfComplex) {                                                                                     \
        suite##_##name<SingleComplex>();                                                                               \
    }                                                                                                                  \
    template <class T>                                                                                                 \
    void suite##_##name()

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

// x without an imaginary part, or with one that must not be read.
inline void set_imaginary(float&, float) {}
inline void set_imaginary(SingleComplex& x, float value) {
    x.im = value;
}
// An element whose parts are value().
template <class T, class Value>
T element(const Value& value) {
    if constexpr (isComplex<T>) {
        const float re = value();
        return {re, value()};
    } else {
        return value();
    }
}
template <class T>
T all_parts(float x) {
    return element<T>([x] { return x; });
}
// The nearest element.
template <class T>
void round_to(const Wide<T>& x, T& element) {
    element = scalar<T>(static_cast<float>(std::real(x)));
    set_imaginary(element, static_cast<float>(std::imag(x)));
}
template <class T>
bool has_nan(const T& x) {
    return widen(x) != widen(x);
}
template <class T>
bool is_finite(const T& x) {
    return std::isfinite(std::abs(widen(x)));
}
// Of two routines the one for an element type.
template <class T, class Real, class Complex>
constexpr auto routine_for(Real* real, Complex* complex) {
    if constexpr (isComplex<T>)
        return complex;
    else
        return real;
}
template <class T>
bool same_bits(const T& x, const T& y) {
    return std::memcmp(&x, &y, sizeof x) == 0;
}

// A scalar of a test case as an element: 0 and 1 are themselves, other complex ones have an imaginary part, of which
// two look like 1 and 0 to who asks for the real part alone.
template <class T>
T scalar_of(float x) {
    if constexpr (isComplex<T>)
        if (x != 0 && x != 1)
            return {x == 0.5F ? 1 : std::max(x, 0.0F), 0.25F + 0.5F * x};
    return scalar<T>(x);
}

// Multiples of 1/8 from -1 to 1: few of them multiply and add without rounding, so that any fault shows.
template <class T, class Random>
T eighths(Random& random) {
    return element<T>([&] { return (static_cast<float>(random() % 17) - 8) / 8; });
}
template <class T, class Random>
T any_size_one(Random& random) {
    return element<T>(
        [&] { return static_cast<float>(static_cast<int>(random() % (1U << 25)) - (1 << 24)) * 0x1p-24F; });
}

// ---- Memory ---------------------------------------------------------------------------------------------------------

// Behind the heap's exact sizes the address sanitizer sees what is read within the last 16 bytes of a vector.
enum class Guard { canaries, pageBehind, pageInFront, heap };

// How an operand lies: leading dimension beyond the least, and floats past a 64-byte boundary (canaries only).
struct Layout {
    int extra = 0, offset = 0;
    Guard guard = Guard::canaries;
};

// `count` floats whose last byte is the last one before an inaccessible page; with `atFront`, whose first byte is
// the first one behind such a page. A read or write beyond stops the program.
class GuardPageArray {
public:
    explicit GuardPageArray(std::size_t count, bool atFront = false) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / sizeof(float);
        const std::size_t inside = (count + page - 1) / page * page;
        const Reserved& space = reserved_.emplace((inside + 2 * page) * sizeof(float), false);
        float* const first = space.floats() + page;
        if (!space.ok() || (count > 0 && mprotect(first, inside * sizeof(float), PROT_READ | PROT_WRITE) != 0))
            throw std::bad_alloc();
        data_ = atFront ? first : first + inside - count;
    }
    float* data() { return data_; }

private:
    std::optional<Reserved> reserved_;
    float* data_;
};

// What an operand is, and which of its elements are stored.
struct Form {
    enum Kind { general, vector, symmetric, hermitian, triangular };

    int rows = 0, columns = 0;
    Kind kind = general;
    char uplo = 'A', diag = 'N'; // one triangle, without its diagonal if that is all ones
    bool banded = false;         // in band storage,
    int below = 0, above = 0;    // with so many diagonals on either side of the main one
    int inc = 1;                 // of a vector, which is one column
    bool packed = false;         // a triangle, its columns one behind the other

    bool unit() const { return diag == 'U' || diag == 'u'; }
    // Rows of column j that are stored: [first, second).
    std::pair<int, int> stored_rows(int j) const {
        int first = 0, last = rows;
        if (banded)
            first = std::max(0, j - above), last = std::min(rows, j + below + 1);
        if (is_upper(uplo))
            last = std::min(last, unit() ? j : j + 1);
        else if (uplo != 'A')
            first = std::max(first, unit() ? j + 1 : j);
        return {first, std::max(first, last)};
    }
    bool stored(int i, int j) const {
        const auto [first, last] = stored_rows(j);
        return i >= first && i < last;
    }
};

// A column-major or banded matrix, or a vector, of which the routine is given data(). Whatever is no stored element is
// filled with canaries: signaling NaN, each with a payload of its own, so that reading them shows, arithmetic changes
// them and copies do not fit.
template <class T>
class Operand {
public:
    Operand(Form form, const Layout& layout) : form_(form), layout_(layout) {
        form.rows = form_.rows = std::max(form.rows, 0);
        form.columns = form_.columns = std::max(form.columns, 0);
        const int height = form.banded ? form.below + form.above + 1 : form.rows;
        ld_ = form.kind == Form::vector ? form.inc : std::max(1, height) + layout.extra;
        if (form.rows > 0 && form.columns > 0)
            length_ = form.kind == Form::vector
                          ? 1 + std::size_t(form.rows - 1) * std::size_t(std::abs(form.inc))
                          : std::size_t(ld_) * std::size_t(form.columns - 1) + std::size_t(height);
        if (form.packed)
            length_ = std::size_t(form.rows) * std::size_t(form.rows + 1) / 2;
        const std::size_t floats = parts * length_;
        if (layout.guard == Guard::canaries) {
            plain_.resize(floats + 3 * band);
            const auto address = reinterpret_cast<std::uintptr_t>(plain_.data());
            first_ = plain_.data() + band + (64 - address % 64) % 64 / sizeof(float) + layout.offset;
        } else if (layout.guard == Guard::heap) {
            plain_.resize(floats);
            first_ = plain_.data();
        } else {
            first_ = paged_.emplace(floats, layout.guard == Guard::pageInFront).data();
        }
        for (const float* p = begin(); p != end(); ++p) {
            const std::uint32_t bits = canary(p);
            std::memcpy(const_cast<float*>(p), &bits, sizeof bits);
        }
    }
    Operand(int rows, int columns, int ld, int offset = 0)
        : Operand(Form{rows, columns}, Layout{ld - std::max(1, rows), offset}) {}
    Operand(const Operand& other) : Operand(other.form_, other.layout_) { set(other); }
    Operand& operator=(const Operand&) = delete;
    ~Operand() { EXPECT_TRUE(guards_intact()) << "written beside the elements of a " << rows() << " x " << columns(); }

    const Form& form() const { return form_; }
    int rows() const { return form_.rows; }
    int columns() const { return form_.columns; }
    const int& ld() const { return ld_; } // the increment of a vector
    T* data() { return reinterpret_cast<T*>(first_); }
    const T* data() const { return reinterpret_cast<const T*>(first_); }
    Matrix<T> view() { return {data(), ld_}; }
    Matrix<const T> view() const { return {data(), ld_}; }
    T& operator()(int i, int j) { return data()[place(i, j)]; }
    const T& operator()(int i, int j) const { return data()[place(i, j)]; }

    // Element (i, j) of the matrix that is meant, in double.
    Wide<T> entry(int i, int j) const {
        if (form_.kind == Form::hermitian && i == j)
            return std::real(widen((*this)(i, i)));
        if (form_.stored(i, j))
            return widen((*this)(i, j));
        if (form_.kind == Form::triangular)
            return i == j && form_.unit() ? 1 : 0;
        if (form_.kind == Form::general || !form_.stored(j, i))
            return 0;
        const Wide<T> mirrored = widen((*this)(j, i));
        return form_.kind == Form::hermitian ? conjugate(mirrored) : mirrored;
    }

    template <class Body>
    void each_stored(const Body& body) const {
        for (int j = 0; j < form_.columns; ++j)
            for (auto [i, last] = form_.stored_rows(j); i < last; ++i)
                body(i, j);
    }
    // Stored elements become value(i, j): those of another operand of the same form, say.
    template <class Value>
    Operand& set(const Value& value) {
        each_stored([&](int i, int j) { (*this)(i, j) = value(i, j); });
        return *this;
    }
    Operand& fill(float value) {
        return set([value](int, int) { return all_parts<T>(value); });
    }
    // Triangles are small beside their diagonal: solves are well-conditioned then, whatever the size. The imaginary
    // part of a Hermitian diagonal, which must not be read, is NaN.
    template <class Random>
    Operand& fill_random(Random& random) {
        const int width = form_.banded ? std::max(form_.below, form_.above) : form_.rows;
        const float size = 2.0F / static_cast<float>(std::min(width, form_.rows) + 1);
        return set([&](int i, int j) {
            T x = any_size_one<T>(random);
            if (form_.kind == Form::triangular)
                x = i == j ? scalar<T>(1.5F) + scalar<T>(0.5F) * x : scalar<T>(size) * x;
            if (form_.kind == Form::hermitian && i == j)
                set_imaginary(x, nan);
            return x;
        });
    }

    // Stored elements for which good(i, j, element) does not hold.
    template <class Good>
    int count_bad(const Good& good) const {
        int bad = 0;
        each_stored([&](int i, int j) { bad += !good(i, j, (*this)(i, j)); });
        return bad;
    }
    bool same_bits(const Operand& other) const {
        return count_bad([&](int i, int j, const T& x) { return test::same_bits(x, other(i, j)); }) == 0;
    }
    // Whether nothing but stored elements has been written; an operand that goes looks itself.
    bool guards_intact() const {
        bool all = true;
        const float* next = begin(); // what lies in front has been looked at
        const auto pass = [&](const T* from, const T* to) {
            for (const auto* end = reinterpret_cast<const float*>(from); next < end; ++next) {
                const std::uint32_t bits = canary(next);
                all = all && std::memcmp(next, &bits, sizeof bits) == 0;
            }
            next = reinterpret_cast<const float*>(to);
        };
        if (form_.kind == Form::vector) {
            for (std::size_t p = 0; p < length_; p += std::max<std::size_t>(1, std::abs(form_.inc)))
                pass(data() + p, data() + p + 1);
        } else {
            for (int j = 0; j < form_.columns; ++j)
                if (const auto [first, last] = form_.stored_rows(j); first < last)
                    pass(data() + place(first, j), data() + place(first, j) + (last - first));
        }
        const auto* const behind = reinterpret_cast<const T*>(end());
        pass(behind, behind);
        return all;
    }

protected:
    std::ptrdiff_t place(int i, int j) const {
        if (form_.kind == Form::vector)
            return std::ptrdiff_t{form_.inc < 0 ? i - form_.rows + 1 : i} * form_.inc;
        if (form_.packed)
            return is_upper(form_.uplo) ? i + std::ptrdiff_t{j} * (j + 1) / 2
                                        : i - j + std::ptrdiff_t{j} * (2 * form_.rows - j + 1) / 2;
        return (form_.banded ? form_.above + i - j : i) + std::ptrdiff_t{ld_} * j;
    }

private:
    static constexpr std::size_t parts = sizeof(T) / sizeof(float);
    static constexpr std::size_t band = 32;

    static std::uint32_t canary(const float* p) {
        return 0x7F80'0001U | (static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(p) >> 1) & 0x3F'FFFEU);
    }
    const float* begin() const { return paged_ ? first_ : plain_.data(); }
    const float* end() const { return paged_ ? first_ + parts * length_ : plain_.data() + plain_.size(); }

    Form form_;
    Layout layout_;
    int ld_;
    std::size_t length_ = 0; // elements from the first in memory to the last
    std::vector<float> plain_;
    std::optional<GuardPageArray> paged_;
    float* first_;
};

// n elements, increment inc: v[i] is element i as routines count them, which for a negative increment means from the
// far end. With increment 0 there is one, which every i names.
template <class T>
class GuardedVector : public Operand<T> {
public:
    explicit GuardedVector(int n, int inc = 1, int offset = 0, Guard guard = Guard::canaries)
        : Operand<T>(Form{std::max(n, 0), 1, Form::vector, 'A', 'N', false, 0, 0, inc}, Layout{0, offset, guard}),
          n_(n) {}

    int size() const { return n_; }
    int inc() const { return this->form().inc; }
    T& operator[](int i) { return (*this)(i, 0); }
    const T& operator[](int i) const { return (*this)(i, 0); }

    // Each element becomes value(), in order.
    template <class Value>
    GuardedVector& fill(const Value& value) {
        for (int i = 0; i < elements(); ++i)
            (*this)[i] = value();
        return *this;
    }
    std::vector<Wide<T>> widened() const {
        std::vector<Wide<T>> values;
        for (int i = 0; i < elements(); ++i)
            values.push_back(widen((*this)[i]));
        return values;
    }

private:
    int elements() const { return inc() == 0 ? std::min(n_, 1) : n_; }
    int n_;
};

} // namespace qrv::test
