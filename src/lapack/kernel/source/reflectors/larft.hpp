// Triangular factors of blocks of reflectors in parts, for SLARFT and for the panels of QR, which have some from
// elsewhere.
#pragma once

#include "lapack/kernel/source/reflectors/stored_reflectors.hpp"

namespace qrv::lapack {

// x := -ta (Va^H Vb) tb, aCount x bCount, where a and b show the rows that Vb has: its triangle and `rest` others.
template <class T>
void larft_couple(const StoredReflectors<T>& a, int aCount, const StoredReflectors<T>& b, int bCount, int rest,
                  Matrix<const T> ta, Matrix<const T> tb, Matrix<T> x);

// T column by column from the product V^H V, of which the triangle that T has is read.
template <class T>
void larft_of_product(Direct direct, int k, Matrix<const T> product, const T* tau, Matrix<T> t) {
    // Forward, T(0:j, j) = -tau(j) T(0:j, 0:j) V(:, 0:j)^H v(j); backward it is the same from the other end.
    const auto at = [&](int i) { return direct == Direct::forward ? i : k - 1 - i; };
    for (int step = 0; step < k; ++step) {
        const int j = at(step);
        for (int i = 0; i < step; ++i)
            t(at(i), j) = scalar<T>(0);
        for (int l = 0; l < step; ++l) {
            const T x = -tau[j] * product(at(l), j);
            for (int i = 0; i <= l; ++i)
                t(at(i), j) += t(at(i), at(l)) * x;
        }
        t(j, j) = tau[j];
    }
}

} // namespace qrv::lapack
