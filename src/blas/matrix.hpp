// Views of column-major matrices: the one place where an index becomes an address offset.
//
// Kernel builds are compiled for different processors, so nothing inline may be shared between them: in a kernel
// source these templates live in the build's own namespace.
#pragma once

#include <cstddef>

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

// Element (i, j), counted from 0, of a matrix with leading dimension ld.
template <class T>
struct Matrix {
    T* data;
    std::ptrdiff_t ld;

    T& operator()(int i, int j) const { return data[i + ld * j]; }
    Matrix block(int i, int j) const { return {data + i + ld * j, ld}; }
    T* column(int j) const { return data + ld * j; }
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

    OpView(T* x, std::ptrdiff_t ld, bool transposed)
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
