// A matrix whose largest element is too small or too large for what is computed with it is scaled, and the result
// scaled back.
#pragma once

#include "lapack/calls/norms.hpp"

namespace qrv::lapack {

struct Scaling {
    float from = 1, to = 1;

    bool needed() const { return from != to; }
    template <class T>
    void forth(int m, int n, Matrix<T> a) const {
        if (needed())
            lascl({}, from, to, m, n, a);
    }
    template <class T>
    void back(int m, int n, Matrix<T> a) const {
        if (needed())
            lascl({}, to, from, m, n, a);
    }
};

// From the largest element to what lies within [least, 1 / least]. Zeros and NaN stay.
inline Scaling scaling_within(float least, float size) {
    const float most = 1 / least;
    return size > 0 && size < least ? Scaling{size, least} : size > most ? Scaling{size, most} : Scaling{};
}

} // namespace qrv::lapack
