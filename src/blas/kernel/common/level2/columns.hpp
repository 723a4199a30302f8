// Passes over the columns of a matrix, several at once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "blas/kernel/common/count.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/pack.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

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

// Whether packs are more than a quad of floats, which any line holds whole.
template <class T>
inline constexpr bool isBeyondQuads = Pack<T>::count* floatsIn<T> > 4;

// Of columns of m rows the first ones, up to where packs begin vectors of memory: a wide vector across two lines costs
// as much as two. 0 if they do, if at most every second column would come to, or if the columns are short.
template <class T>
QRV_INLINE int rows_to_vector(int m, const T* a, std::ptrdiff_t lda) {
    constexpr int count = Pack<T>::count;
    if constexpr (!isBeyondQuads<T>) {
        return 0;
    } else {
        const auto address = reinterpret_cast<std::uintptr_t>(a);
        if (m < 8 * count || lda % (count / 2) != 0 || address % sizeof(T) != 0)
            return 0;
        return static_cast<int>(-(address / sizeof(T)) % count);
    }
}

// Where some columns of a matrix meet its diagonal: not at all, in their first or in their last rows.
enum class Corner { none, first, last };

} // namespace qrv::kernel::QRV_KERNEL_BUILD
