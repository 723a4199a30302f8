// Passes over the columns of a matrix, several at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "blas/complex.hpp"
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

// ---- Matrices that come from memory ---------------------------------------------------------------------------------

// A pass over short pieces of few columns waits for memory, as a processor fetches lines ahead only where it has
// followed a column for a while. So each line asks for its neighbour among the columns of the next pass. That costs up
// to half of the time where the matrix stays in the caches.

// Passes that have many bytes under way gain nothing: products with AVX-512, and with AVX2 those of one half of a real
// matrix.
enum class Passes { oneHalf, bothHalves, update };
template <class T, Passes passes>
constexpr bool asksAhead = passes == Passes::update ||
                           Pack<T>::count* floatsIn<T> < (passes == Passes::bothHalves || isComplex<T> ? 16 : 8);

// Whether passes over an m x n matrix ask ahead: not even a large third-level cache holds it.
template <class T, Passes passes>
bool is_far(int m, int n) {
    return asksAhead<T, passes> && std::int64_t{m} * n * static_cast<int>(sizeof(T)) > 20 << 20;
}

// Calls product(IsFar<far>{}): near matrices have loops of their own.
template <bool far>
struct IsFar {
    constexpr bool operator()() const { return far; }
};
template <class T, Passes passes, class Product>
QRV_INLINE void near_or_far(bool far, const Product& product) {
    if constexpr (asksAhead<T, passes>)
        if (far)
            return product(IsFar<true>{});
    product(IsFar<false>{});
}

// Rows from i on by whole lines, as rows(i) computes those of a pack. Result: the first row that is left.
template <int columns, class T, class Rows>
QRV_INLINE int rows_asking_ahead(int i, int end, const ColumnStarts<columns, T>& column, std::ptrdiff_t lda,
                                 const Rows& rows) {
    constexpr int count = Pack<std::remove_const_t<T>>::count, line = larger(count, static_cast<int>(64 / sizeof(T)));
    for (; end - i >= line; i += line) {
        QRV_UNROLL
        for (int k = 0; k < columns; ++k)
            __builtin_prefetch(column.at[k] + i + columns * lda, !std::is_const_v<T>);
        QRV_UNROLL
        for (int r = 0; r < line; r += count)
            rows(i + r);
    }
    return i;
}

// Where some columns of a matrix meet its diagonal: not at all, in their first or in their last rows.
enum class Corner { none, first, last };

} // namespace qrv::kernel::QRV_KERNEL_BUILD
