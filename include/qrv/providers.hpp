// Provider classes: the object through which a host library does its dense linear algebra.
//
//     using namespace Corvex::Mathematics::LinearAlgebra;
//     Providers::ParallelX86SingleLinearAlgebraProvider provider;
//     provider.BlasLevel3()->Sgemm(TransposeOperation::None, TransposeOperation::None, m, n, k,
//                                  1.0f, a, 0, m, b, 0, k, 0.0f, c, 0, m);
//
// Matrices are column-major with a leading dimension. Offsets, increments and leading dimensions count
// elements. No length is checked against a dimension or an offset. Methods keep nothing between calls and may
// be called from any number of threads at once.
//
// Every array argument must hold at least one element, also where the routine would not touch it: a null array
// raises NullReferenceError, an empty one IndexOutOfRangeError, before any work is done. A bad dimension or
// option is reported on standard output (see qrv/native.h) and leaves the outputs unchanged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "export.h"

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
            throw NullReferenceError("array argument is null");
        if (count_ == 0)
            throw IndexOutOfRangeError("array argument has no elements");
        return data_;
    }

private:
    template <class>
    friend class ProviderArray;

    T* data_ = nullptr;
    std::size_t count_ = 0;
    bool null_ = true; // an empty array is not null, even if its address is
};

// ---- The host's abstract classes --------------------------------------------------------------------------

class QRV_API SingleBlasLevel1 {
public:
    virtual ~SingleBlasLevel1() = default;
};

class QRV_API SingleBlasLevel2 {
public:
    virtual ~SingleBlasLevel2() = default;
};

class QRV_API SingleBlasLevel3 {
public:
    virtual ~SingleBlasLevel3() = default;

    // General matrix product C := alpha*op(A)*op(B) + beta*C.
    //
    // transA, transB  None, Conjugate: op(X) = X; Transpose, ConjugateTranspose: op(X) = the transpose of X
    // m, n, k         op(A) is m x k, op(B) is k x n, C is m x n; each at least 0
    // alpha, beta     scalars; with beta = 0 C is not read, with alpha = 0 A and B are not read
    // a, aOffset, lda A begins at element aOffset of a; m x k, lda >= max(1, m), or transposed k x m,
    //                 lda >= max(1, k)
    // b, bOffset, ldb B likewise; k x n, ldb >= max(1, k), or transposed n x k, ldb >= max(1, n)
    // c, cOffset, ldc C likewise, overwritten; ldc >= max(1, m); must not overlap A or B
    //
    // Bad arguments are reported as SGEMM's positions 3 (m), 4 (n), 5 (k), 8 (lda), 10 (ldb), 13 (ldc).
    // Source: J. Dongarra, J. Du Croz, S. Hammarling, I. Duff, ACM TOMS 16 (1990).
    virtual void Sgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k, float alpha,
                       ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> b, int bOffset,
                       int ldb, float beta, ProviderArray<float> c, int cOffset, int ldc) = 0;
};

class QRV_API SingleLapack {
public:
    virtual ~SingleLapack() = default;
};

class QRV_API SingleSparseBlas {
public:
    virtual ~SingleSparseBlas() = default;
};

class QRV_API SingleComplexBlasLevel1 {
public:
    virtual ~SingleComplexBlasLevel1() = default;
};

class QRV_API SingleComplexBlasLevel2 {
public:
    virtual ~SingleComplexBlasLevel2() = default;
};

class QRV_API SingleComplexBlasLevel3 {
public:
    virtual ~SingleComplexBlasLevel3() = default;
};

class QRV_API SingleComplexLapack {
public:
    virtual ~SingleComplexLapack() = default;
};

class QRV_API SingleComplexSparseBlas {
public:
    virtual ~SingleComplexSparseBlas() = default;
};

class QRV_API SingleLinearAlgebraProvider {
public:
    virtual ~SingleLinearAlgebraProvider() = default;

    virtual SingleBlasLevel1* BlasLevel1() const = 0;
    virtual SingleBlasLevel2* BlasLevel2() const = 0;
    virtual SingleBlasLevel3* BlasLevel3() const = 0;
    virtual SingleLapack* Lapack() const = 0;
    virtual SingleSparseBlas* SparseBlas() const = 0;
    virtual SingleComplexBlasLevel1* ComplexBlasLevel1() const = 0;
    virtual SingleComplexBlasLevel2* ComplexBlasLevel2() const = 0;
    virtual SingleComplexBlasLevel3* ComplexBlasLevel3() const = 0;
    virtual SingleComplexLapack* ComplexLapack() const = 0;
    virtual SingleComplexSparseBlas* ComplexSparseBlas() const = 0;
};

// ---- This library's providers -----------------------------------------------------------------------------

class QRV_API ParallelX86SingleBlasLevel1 : public SingleBlasLevel1 {
public:
    ParallelX86SingleBlasLevel1();
};

class QRV_API ParallelX86SingleBlasLevel2 : public SingleBlasLevel2 {
public:
    ParallelX86SingleBlasLevel2();
};

class QRV_API ParallelX86SingleBlasLevel3 : public SingleBlasLevel3 {
public:
    ParallelX86SingleBlasLevel3();

    void Sgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k, float alpha,
               ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> b, int bOffset, int ldb,
               float beta, ProviderArray<float> c, int cOffset, int ldc) final;
};

class QRV_API ParallelX86SingleLapack : public SingleLapack {
public:
    ParallelX86SingleLapack();
};

class QRV_API ParallelX86SingleSparseBlas : public SingleSparseBlas {
public:
    ParallelX86SingleSparseBlas();
};

class QRV_API NativeComplexBlasLevel1 : public SingleComplexBlasLevel1 {
public:
    NativeComplexBlasLevel1();
};

class QRV_API NativeComplexBlasLevel2 : public SingleComplexBlasLevel2 {
public:
    NativeComplexBlasLevel2();
};

class QRV_API NativeComplexBlasLevel3 : public SingleComplexBlasLevel3 {
public:
    NativeComplexBlasLevel3();
};

class QRV_API NativeComplexLapack : public SingleComplexLapack {
public:
    NativeComplexLapack();
};

// The provider object of a host. The getters give the same objects for the provider's whole life;
// SparseBlas and ComplexSparseBlas give null.
class QRV_API ParallelX86SingleLinearAlgebraProvider : public SingleLinearAlgebraProvider {
public:
    ParallelX86SingleLinearAlgebraProvider();
    ~ParallelX86SingleLinearAlgebraProvider() override;

    SingleBlasLevel1* BlasLevel1() const override;
    SingleBlasLevel2* BlasLevel2() const override;
    SingleBlasLevel3* BlasLevel3() const override;
    SingleLapack* Lapack() const override;
    SingleSparseBlas* SparseBlas() const override;
    SingleComplexBlasLevel1* ComplexBlasLevel1() const override;
    SingleComplexBlasLevel2* ComplexBlasLevel2() const override;
    SingleComplexBlasLevel3* ComplexBlasLevel3() const override;
    SingleComplexLapack* ComplexLapack() const override;
    SingleComplexSparseBlas* ComplexSparseBlas() const override;

private:
    std::unique_ptr<SingleBlasLevel1> blasLevel1;
    std::unique_ptr<SingleBlasLevel2> blasLevel2;
    std::unique_ptr<SingleBlasLevel3> blasLevel3;
    std::unique_ptr<SingleLapack> lapack;
    std::unique_ptr<SingleSparseBlas> sparseBlas; // null
    std::unique_ptr<SingleComplexBlasLevel1> complexBlasLevel1;
    std::unique_ptr<SingleComplexBlasLevel2> complexBlasLevel2;
    std::unique_ptr<SingleComplexBlasLevel3> complexBlasLevel3;
    std::unique_ptr<SingleComplexLapack> complexLapack;
    std::unique_ptr<SingleComplexSparseBlas> complexSparseBlas; // null
};

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
