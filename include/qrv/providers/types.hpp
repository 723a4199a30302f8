// What all provider classes share: complex numbers, options, arrays and the errors they raise.
//
// Example. A complex number, and a null array:
//
//     using namespace Corvex::Mathematics;
//     using LinearAlgebra::Providers::ProviderArray;
//     const ProviderArray<const float> none(static_cast<const float*>(nullptr), 0);
//     return SingleComplex(1, 2).Im() == 2;
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <type_traits>

#include "../export.h"

namespace Corvex::Mathematics {

// Two floats, real part first. An array of them is the interleaved layout of the native routines.
class SingleComplex {
public:
    static const SingleComplex Zero;

    constexpr SingleComplex() = default;
    constexpr SingleComplex(float re) : re_(re) {} // implicit on purpose: imaginary part 0
    constexpr SingleComplex(float re, float im) : re_(re), im_(im) {}

    constexpr float Re() const { return re_; }
    constexpr float Im() const { return im_; }
    explicit constexpr operator float() const { return re_; }

    friend constexpr bool operator==(SingleComplex, SingleComplex) = default;

private:
    float re_ = 0;
    float im_ = 0;
};
inline constexpr SingleComplex SingleComplex::Zero{};
static_assert(sizeof(SingleComplex) == 8 && std::is_standard_layout_v<SingleComplex>);

} // namespace Corvex::Mathematics

namespace Corvex::Mathematics::LinearAlgebra {

enum class TransposeOperation : std::int32_t { None = 0, Transpose = 1, ConjugateTranspose = 2, Conjugate = 3 };
enum class MatrixTriangleMode : std::int32_t { Upper = 0, Lower = 1 };
enum class MatrixDiagonalMode : std::int32_t { NonUnit = 0, Unit = 1 };
enum class MatrixOperationSide : std::int32_t { Left = 0, Right = 1 };
enum class MatrixNorm : std::int32_t { Frobenius = 0, One = 1, Infinity = 2, MaximumAbsolute = 3 };
enum class MatrixStructure : std::int32_t { General = 0 }; // carried by sparse signatures, never interpreted

} // namespace Corvex::Mathematics::LinearAlgebra

namespace Corvex::Mathematics::LinearAlgebra::Providers {

// An array argument was null.
class QRV_API NullReferenceError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

// An array argument had no element 0.
class QRV_API IndexOutOfRangeError : public std::out_of_range {
public:
    using std::out_of_range::out_of_range;
};

// A method's own work array would have had a negative size: a negative dimension gives one.
class QRV_API InvalidArraySizeError : public std::length_error {
public:
    using std::length_error::length_error;
};

// View of a host array: the address of element 0 and the number of elements, or null. Made from a pointer and
// a count, a span, or anything a span is made from (vector, std::array, built-in array). It owns nothing.
template <class T>
class ProviderArray {
public:
    constexpr ProviderArray() = default;
    constexpr ProviderArray(std::nullptr_t) {}
    constexpr ProviderArray(T* data, std::size_t count) : data_(data), count_(count), null_(data == nullptr) {}

    template <class Range>
    requires std::is_constructible_v<std::span<T>, Range&> &&
        (!std::is_same_v<std::remove_cv_t<Range>, ProviderArray>)constexpr ProviderArray(Range& range)
        : ProviderArray(std::span<T>(range)) {}
    constexpr ProviderArray(std::span<T> elements) : data_(elements.data()), count_(elements.size()), null_(false) {}

    // A view of writable elements serves where they are only read.
    template <class U>
    requires std::is_same_v<T, const U>
    constexpr ProviderArray(const ProviderArray<U>& other)
        : data_(other.data_), count_(other.count_), null_(other.null_) {}

    // Address of element 0. Fails on a null and on an empty array.
    constexpr T* Address() const {
        if (null_)
            raise_null();
        if (count_ == 0)
            raise_empty();
        return data_;
    }

private:
    template <class>
    friend class ProviderArray;

    // Out of line, so that a method saves no registers for them.
    [[noreturn, gnu::cold, gnu::noinline]] static void raise_null() {
        throw NullReferenceError("array argument is null");
    }
    [[noreturn, gnu::cold, gnu::noinline]] static void raise_empty() {
        throw IndexOutOfRangeError("array argument has no elements");
    }

    T* data_ = nullptr;
    std::size_t count_ = 0;
    bool null_ = true; // an empty array is not null, even if its address is
};

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
