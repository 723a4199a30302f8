// Passes over the columns of a matrix, several at once.
#pragma once

#include <cstddef>

#include "blas/kernel/common/vec/unrolling.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// A number as a type.
template <int value>
struct Count {
    constexpr int operator()() const { return value; }
};

// Calls pass(Count<columns>, j) for the columns from j to n: `most` of them at a time, then half as many, and so on.
template <int most, class Pass>
void in_passes(int j, int n, Pass pass) {
    for (; n - j >= most; j += most)
        pass(Count<most>{}, j);
    if constexpr (most > 1)
        in_passes<most / 2>(j, n, pass);
}

// The first elements of some columns.
template <int columns, class T>
struct ColumnStarts {
    T* at[columns];
    ColumnStarts(T* a, std::ptrdiff_t ld) {
        QRV_UNROLL
        for (int k = 0; k < columns; ++k)
            at[k] = a + k * ld;
    }
};

// Where some columns of a matrix meet its diagonal: not at all, in their first or in their last rows.
enum class Corner { none, first, last };

} // namespace qrv::kernel::QRV_KERNEL_BUILD
