// Singular values in order, with their vectors.
#pragma once

#include <functional>
#include <utility>

#include "blas/calls.hpp"
#include "lapack/calls/svd.hpp"

namespace qrv::lapack {

// By selection, so that each vector moves once at most: `comesLater` with less_equal gives descending values, with
// greater_equal ascending ones. NaN stays where it is.
template <class ComesLater>
void order_values(int n, float* d, const BidiagonalVectors& vectors) {
    for (int end = n - 1; end > 0; --end) {
        int last = 0;
        float value = d[0];
        for (int i = 1; i <= end; ++i)
            if (ComesLater()(d[i], value))
                last = i, value = d[i];
        if (last != end) {
            std::swap(d[last], d[end]);
            if (vectors.ncvt > 0)
                kernel::swap(vectors.ncvt, vectors.vt.row(last, 0), vectors.vt.row(end, 0));
            if (vectors.nru > 0)
                kernel::swap(vectors.nru, vectors.u.column(0, last), vectors.u.column(0, end));
            if (vectors.ncc > 0)
                kernel::swap(vectors.ncc, vectors.c.row(last, 0), vectors.c.row(end, 0));
        }
    }
}

} // namespace qrv::lapack
