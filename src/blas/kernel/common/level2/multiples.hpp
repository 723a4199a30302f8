// Multiples of vectors, as the level 2 routines need them: x := beta*x, out := alpha*x and y := y + alpha*x, where
// only x, respectively y, may have an increment.
#pragma once

#include "blas/kernel/common/level2/strided_vector.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/pack.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Calls step(i, count) for n elements, a pack at a time, the last one perhaps shorter.
template <class T, class Step>
QRV_INLINE void in_packs(int n, Step step) {
    int i = 0;
    for (; n - i >= Pack<T>::count; i += Pack<T>::count)
        step(i, Pack<T>::count);
    if (i < n)
        step(i, n - i);
}

// x := beta*x. With beta = 0 x is not read.
template <class T>
void scale(StridedVector<T> x, int n, T beta) {
    const T zero = scalar<T>(0);
    if (beta == scalar<T>(1))
        return;
    if (x.inc == 1 && beta == zero)
        return in_packs<T>(n, [=, p = &x[0]](int i, int count) { Pack<T>::zero().store(p + i, count); });
    if (x.inc == 1)
        return in_packs<T>(n, [=, p = &x[0], s = Factor<T>(beta)](int i, int count) {
            ScaledSum<T>(Pack<T>::load(p + i, count), s).result().store(p + i, count);
        });
    for (int i = 0; i < n; ++i)
        x[i] = beta == zero ? zero : beta * x[i];
}

// out[i] := alpha*x[from + i]
template <class T>
void scaled_copy(StridedVector<const T> x, int from, int n, T alpha, T* out) {
    if (x.inc == 1)
        return in_packs<T>(n, [=, p = &x[from], s = Factor<T>(alpha)](int i, int count) {
            ScaledSum<T>(Pack<T>::load(p + i, count), s).result().store(out + i, count);
        });
    for (int i = 0; i < n; ++i)
        out[i] = alpha * x[from + i];
}

// y[from + i] += alpha*x[i]
template <class T>
void add_scaled(StridedVector<T> y, int from, int n, T alpha, const T* x) {
    if (y.inc == 1)
        return in_packs<T>(n, [=, p = &y[from], s = Factor<T>(alpha)](int i, int count) {
            ScaledSum<T> sum(Pack<T>::load(p + i, count));
            sum.add(Pack<T>::load(x + i, count), s);
            sum.result().store(p + i, count);
        });
    for (int i = 0; i < n; ++i)
        y[from + i] += alpha * x[i];
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
