// Views of column-major matrices: the one place where an index becomes an address offset.
//
// Kernel builds are compiled for different processors, so nothing inline may be shared between them: in a kernel
// source these templates live in the build's own namespace.
#pragma once

#include <cstddef>

#include "blas/assert.hpp"

#ifdef QRV_KERNEL_BUILD
#define QRV_VIEW_NAMESPACE qrv::kernel::QRV_KERNEL_BUILD
#else
#define QRV_VIEW_NAMESPACE qrv
#endif

namespace QRV_VIEW_NAMESPACE {

// Of two sizes; kernel sources have no standard algorithms.
constexpr int smaller(int x, int y) {
    return x < y ? x : y;
}
constexpr int larger(int x, int y) {
    return x < y ? y : x;
}

// Rows or columns, unknowns or right-hand sides [first, first + count).
struct Range {
    int first, count;

    constexpr int end() const { return first + count; }
};
// What two ranges share; where that is nothing the count is not positive.
constexpr Range common(Range x, Range y) {
    const int first = larger(x.first, y.first);
    return {first, smaller(x.end(), y.end()) - first};
}

// A vector as BLAS takes it: elements `inc` apart. With a negative increment `data` is still the lowest address, and
// the vector runs down to it; elements are asked for by index only if inc >= 0.
template <class T>
struct Vector {
    T* data;
    int inc = 1;

    T& operator[](int i) const {
        QRV_ASSERT(i >= 0 && inc >= 0);
        return data[std::ptrdiff_t{i} * inc];
    }
    Vector from(int i) const { return {data + std::ptrdiff_t{i} * inc, inc}; }
    constexpr operator Vector<const T>() const { return {data, inc}; }
};
template <class T>
Vector(T*) -> Vector<T>;
template <class T>
Vector(T*, int) -> Vector<T>;

// Element (i, j), counted from 0, of a matrix with leading dimension ld. Views carry no sizes: they would travel
// through every call of kernels that get their sizes by themselves.
template <class T>
struct Matrix {
    T* data;
    std::ptrdiff_t ld;

    T& operator()(int i, int j) const {
        QRV_ASSERT(i >= 0 && j >= 0);
        return data[i + ld * j];
    }
    Matrix block(int i, int j) const {
        QRV_ASSERT(i >= 0 && j >= 0);
        return {data + i + ld * j, ld};
    }
    T* column(int j) const { return data + ld * j; }
    // From (i, j) on, to the right or downward.
    Vector<T> row(int i, int j) const { return {data + i + ld * j, static_cast<int>(ld)}; }
    Vector<T> column(int i, int j) const { return {data + i + ld * j, 1}; }
    constexpr operator Matrix<const T>() const { return {data, ld}; }
};

// Whether a GEMM option transposes: anything but 'N' and 'n' does.
constexpr bool transposes(char option) {
    return option != 'N' && option != 'n';
}

// Whether it takes the conjugate of complex elements too.
constexpr bool conjugates(char option) {
    return option == 'C' || option == 'c';
}

// op(X) of a stored matrix X: element (i, j) of the operand as it enters a product.
template <class T>
struct OpView {
    T* data;
    std::ptrdiff_t rowStride;
    std::ptrdiff_t columnStride;

    constexpr OpView(T* x, std::ptrdiff_t ld, bool transposed)
        : data(x), rowStride(transposed ? ld : 1), columnStride(transposed ? 1 : ld) {}

    T& operator()(int i, int j) const { return data[i * rowStride + j * columnStride]; }
    T* at(int i, int j) const { return data + i * rowStride + j * columnStride; }
    OpView block(int i, int j) const {
        OpView view = *this;
        view.data = at(i, j);
        return view;
    }
    bool columns_contiguous() const { return rowStride == 1; }
};

} // namespace QRV_VIEW_NAMESPACE
