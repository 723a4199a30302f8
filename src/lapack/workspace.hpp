// Work arrays cut into parts, each by one function that tells their sizes too: on a null array it counts only.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "blas/complex.hpp"
#include "service/work_pool.hpp"

namespace qrv::lapack {

// The length of a work array of ints as a routine returns it: of one that is too long to be given, the largest int.
constexpr int told_ints(std::int64_t length) {
    constexpr int most = std::numeric_limits<int>::max();
    return length < most ? static_cast<int>(length) : most;
}

// The leading dimension of a copy with n rows: whole lines, and columns that do not share few sets of the caches.
constexpr int dimension_aside(int n, int elementSize) {
    const int line = 64 / elementSize, rounded = (n / line + 2) * line;
    return std::int64_t{rounded} * elementSize % 1024 == 0 ? rounded + line : rounded;
}

// Gives out one part behind the other.
template <class T>
struct WorkParts {
    T* next = nullptr;
    std::int64_t taken = 0;

    T* take(std::int64_t count) {
        T* const part = next;
        if (next)
            next += count;
        taken += count;
        return part;
    }
};

// The nearest float. By way of memory: the registers of 32-bit builds keep more digits than a float has.
inline float nearest_float(std::int64_t x) {
    const volatile float nearest = static_cast<float>(x);
    return nearest;
}

// A work size as a routine returns it, in an element: rounded up, so that whoever takes it for a length gets enough.
template <class T>
T work_size(std::int64_t size) {
    float value = nearest_float(size);
    if (static_cast<double>(value) < static_cast<double>(size))
        value = std::nextafter(value, std::numeric_limits<float>::max());
    return scalar<T>(value);
}

// The same by the steps of SSYEVR, SGESDD, CGESDD and SGEEV, which may go further than to the next float.
inline float roundup_work(std::int64_t size) {
    float told = nearest_float(size);
    const auto missing = [&](std::int64_t asked) { return asked - static_cast<std::int64_t>(told); };
    std::int64_t asked = size;
    for (std::int64_t step = missing(size); missing(size) > 0; step = 2 * missing(asked)) {
        asked += step;
        told = nearest_float(asked);
    }
    return told;
}

// The caller's work array if it has the length that is wanted, else as much memory of the routine's own. data() is null
// if there is none.
template <class T>
class WorkArea {
public:
    WorkArea(T* given, std::int64_t length, std::int64_t wanted) : own_(length < wanted), data_(given) {
        if (own_)
            data_ = static_cast<T*>(wanted <= mostElements
                                        ? qrv_serv_allocate(static_cast<std::size_t>(wanted) * sizeof(T), 128)
                                        : nullptr);
    }
    ~WorkArea() {
        if (own_)
            qrv_serv_deallocate(data_);
    }
    WorkArea(const WorkArea&) = delete;
    WorkArea& operator=(const WorkArea&) = delete;

    T* data() const { return data_; }

private:
    static constexpr auto mostElements =
        static_cast<std::int64_t>(std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T));
    bool own_;
    T* data_;
};

// The two work arrays of a condition estimate: WORK, and IWORK with real elements or RWORK with complex ones.
template <class T>
struct EstimateWork {
    using Second = std::conditional_t<isComplex<T>, float, int>;
    WorkParts<T> work;
    WorkParts<Second> second;

    EstimateWork(T* workArray, Second* secondArray) : work{workArray}, second{secondArray} {}

    T* vector(int n) { return work.take(n); }
    float* reals(int n) {
        if constexpr (isComplex<T>)
            return second.take(n);
        else
            return work.take(n);
    }
    // Only estimates with real elements keep signs.
    int* signs(int n) {
        if constexpr (isComplex<T>)
            return nullptr;
        else
            return second.take(n);
    }
};

// The parts for an estimate by solves with one triangle: two vectors, the sums over its columns.
template <class T>
struct TriangleWork {
    T *x, *v;
    float* sums;
    int* isgn;
};
template <class T>
TriangleWork<T> triangle_work(int n, EstimateWork<T>& from) {
    return {from.vector(n), from.vector(n), from.reals(n), from.signs(n)};
}

} // namespace qrv::lapack
