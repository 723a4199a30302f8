// How a provider method calls its native routine: `call` with the host's arguments, in the native order. An argument's
// type says what becomes of it:
//
//   MatrixNorm and its like     an option: the address of its letter
//   const char*                 an option that the method has encoded itself: rule_r, rule_c, triangle_or_both
//   int, float, SingleComplex   its address: a method has its own copy
//   char                        likewise: an option that the host gives as a character
//   At(array, offset)           the address of an element
//   array                       the address of element 0
//   T*                          a variable that the native routine writes itself
//   Info, Result                a variable of the host's that is written after the routine has returned
//   Work, SizedWork, Queried    work arrays, which the host's signatures lack
//   NormWork                    the work array of a norm
//
// A method does this in a fixed order: addresses of the arrays with an offset, of those without, work arrays, the
// call, results. An array is null or empty before anything is done; no length is compared with anything.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>

#include "provider/options.hpp"
#include "qrv/native/common.h"

namespace qrv::provider {

using Corvex::Mathematics::SingleComplex;
using host::Providers::ProviderArray;

// The host's complex numbers as the native routines know them: the same two floats.
inline qrv_complex* native_elements(SingleComplex* x) {
    static_assert(sizeof(SingleComplex) == sizeof(qrv_complex) && alignof(SingleComplex) == alignof(qrv_complex));
    return reinterpret_cast<qrv_complex*>(x);
}
inline const qrv_complex* native_elements(const SingleComplex* x) {
    return reinterpret_cast<const qrv_complex*>(x);
}
template <class T> // float, int, char
constexpr T* native_elements(T* x) {
    return x;
}

// ---- Kinds of arguments ---------------------------------------------------------------------------------------------

// An array and the element in it where the operand begins.
template <class T>
class At {
public:
    At(const ProviderArray<T>& array, int offset) : array_(array), offset_(offset) {}
    auto* address() const { return native_elements(array_.Address() + static_cast<std::ptrdiff_t>(offset_)); }

private:
    ProviderArray<T> array_;
    int offset_;
};

// The caller's `info`, and another result. Both are local to the call until it has returned; `info` is stored first.
struct Info {
    explicit Info(int& variable) : stored(variable) {}
    int& stored;
    int value = 0;
};
template <class T>
struct Result {
    explicit Result(T& variable) : stored(variable) {}
    T& stored;
    T value{};
};

// A work array of the method's own. Fails like any other array where it would be empty, as for a matrix of order 0.
template <class T>
class WorkArray {
public:
    void allocate(std::int64_t count) {
        if (count < 0 || count > std::numeric_limits<int>::max())
            throw host::Providers::InvalidArraySizeError("work array of an invalid size");
        if (count == 0)
            throw host::Providers::IndexOutOfRangeError("work array has no elements");
        elements_ = std::make_unique_for_overwrite<T[]>(static_cast<std::size_t>(count));
    }
    T* data() const { return elements_.get(); }

private:
    std::unique_ptr<T[]> elements_;
};

// A work array of factor*n elements.
template <class T>
struct Work {
    explicit Work(std::int64_t elements) : count(elements) {}
    Work(int factor, int n) : count(std::int64_t{factor} * n) {}
    std::int64_t count;
    WorkArray<T> array{};
};

// The same for two arguments: the array and its length.
template <class T>
struct SizedWork : Work<T> {
    using Work<T>::Work;
    int length = 0;
};

// A size as a workspace query answers it, in the first element of the work array. What no int can hold is negative.
inline int answered_size(float size) {
    const double wide = size;
    return wide > -0x1p31 && wide < 0x1p31 ? static_cast<int>(wide) : std::numeric_limits<int>::min();
}
inline int answered_size(qrv_complex size) {
    return answered_size(size.re);
}

// Two arguments likewise, for a routine that is asked first how much it wants: it is called with length -1, its answer
// is allocated, and it is called again. What the first call leaves in `info` counts for nothing.
template <class T>
struct Queried {
    T answer{};
    int length = -1;
    WorkArray<T> array{};
};

// The work array of a native norm routine: m row sums for the infinity norm; for the others, which use none, the
// address of the matrix stands in.
template <class T>
struct NormWork {
    NormWork(host::MatrixNorm norm, int m, const At<T>& a) : kind(norm), rows(m), matrix(a) {}
    host::MatrixNorm kind;
    int rows;
    At<T> matrix;
    WorkArray<float> sums{};
};

// ---- What is done with each kind before, in and after the call; nothing with most -----------------------------------

template <class T>
void ask_at_offset(const T&) {}
template <class T>
void ask_at_offset(const At<T>& array) {
    array.address();
}

template <class T>
void ask_at_start(const T&) {}
template <class T>
void ask_at_start(const ProviderArray<T>& array) {
    array.Address();
}

template <class T>
void allocate(T&) {}
template <class T>
void allocate(Work<T>& work) {
    work.array.allocate(work.count);
}
template <class T>
void allocate(SizedWork<T>& work) {
    work.array.allocate(work.count);
    work.length = static_cast<int>(work.count);
}
template <class T>
void allocate(NormWork<T>& work) {
    if (work.kind == host::MatrixNorm::Infinity)
        work.sums.allocate(work.rows);
}

template <class T>
void allocate_answer(T&) {}
template <class T>
void allocate_answer(Queried<T>& work) {
    work.length = answered_size(work.answer);
    work.array.allocate(work.length);
}

template <class T>
void store_info(const T&) {}
inline void store_info(const Info& info) {
    info.stored = info.value;
}

template <class T>
void store_result(const T&) {}
template <class T>
void store_result(const Result<T>& result) {
    result.stored = result.value;
}

// The native arguments, most often one.
template <class T>
auto native(const T& value) {
    if constexpr (std::is_enum_v<T>)
        return std::tuple(option(value));
    else
        return std::tuple(native_elements(&value));
}
template <class T>
auto native(T* variable) {
    return std::tuple(native_elements(variable));
}
template <class T>
auto native(const At<T>& array) {
    return std::tuple(array.address());
}
template <class T>
auto native(const ProviderArray<T>& array) {
    return std::tuple(native_elements(array.Address()));
}
inline auto native(Info& info) {
    return std::tuple(&info.value);
}
template <class T>
auto native(Result<T>& result) {
    return std::tuple(&result.value);
}
template <class T>
auto native(Work<T>& work) {
    return std::tuple(work.array.data());
}
template <class T>
auto native(SizedWork<T>& work) {
    return std::tuple(work.array.data(), &work.length);
}
template <class T>
auto native(Queried<T>& work) {
    return std::tuple(work.array.data() ? work.array.data() : &work.answer, &work.length);
}
template <class T>
auto native(NormWork<T>& work) {
    if (work.sums.data())
        return std::tuple(work.sums.data());
    return std::tuple(reinterpret_cast<float*>(const_cast<std::remove_const_t<T>*>(work.matrix.address())));
}

template <class T>
inline constexpr bool isQueried = false;
template <class T>
inline constexpr bool isQueried<Queried<T>> = true;

// ---- The call -------------------------------------------------------------------------------------------------------

template <class... A>
void ask_for_arrays(const A&... arguments) {
    (ask_at_offset(arguments), ...);
    (ask_at_start(arguments), ...);
}

// Result: that of the routine; a method that has none drops what a BLAS entry says of its arguments.
template <class R, class... N, class... A>
R call(R (*routine)(N...), A&&... arguments) {
    ask_for_arrays(arguments...);
    (allocate(arguments), ...);
    const auto once = [&] { return std::apply(routine, std::tuple_cat(native(arguments)...)); };
    if constexpr (std::is_void_v<R>) {
        if constexpr ((isQueried<std::remove_cvref_t<A>> || ...)) {
            once();
            (allocate_answer(arguments), ...);
        }
        once();
        (store_info(arguments), ...);
        (store_result(arguments), ...);
    } else {
        return once();
    }
}

} // namespace qrv::provider
