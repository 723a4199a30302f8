// Vectors of the level 2 routines: any increment but 0, seen in blocks of neighbouring elements.
#pragma once

#include <cstddef>

#include "blas/complex.hpp"
#include "blas/kernel/common/level1/level1_strided.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Elements of the blocks in which a matrix is worked through. Those of two vectors fit into half of a first-level cache
// of 32 KB.
template <class T>
constexpr int blockElements = 8192 / sizeof(T);

// Element i of a vector of n elements at p; with a negative increment element 0 is at the far end.
template <class T>
struct StridedVector {
    T* first;
    std::ptrdiff_t inc;

    StridedVector(int n, T* p, int step) : first(strided::first_element(n, p, step)), inc(step) {}
    T& operator[](int i) const { return first[i * inc]; }
};

// Elements i to i + count - 1 next to each other: where they are, or brought together in the buffer.
template <class Element, class T>
Element* gathered(StridedVector<Element> x, int i, int count, T* buffer) {
    if (x.inc == 1)
        return &x[i];
    for (int k = 0; k < count; ++k)
        buffer[k] = x[i + k];
    return buffer;
}
// What was gathered goes back.
template <class T>
void scatter(StridedVector<T> x, int i, int count, const T* block) {
    if (x.inc != 1)
        for (int k = 0; k < count; ++k)
            x[i + k] = block[k];
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
