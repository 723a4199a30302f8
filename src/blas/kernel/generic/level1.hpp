// BLAS level 1 of the generic build: element by element.
#pragma once

#include <cstring>

#include "blas/kernel/common/level1/level1_strided.hpp"
#include "blas/kernel/common/level1/nrm2_scaled.hpp"
#include "blas/kernel/common/level1/rotg.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

using strided::asum;
using strided::axpy;
using strided::copy;
using strided::dot;
using strided::iamax_of_slice;
using strided::rot;
using strided::rotm;
using strided::scal;
using strided::swap;

// Above this length calling the library's copy costs less than it gains.
constexpr int copiedByLoop = 24;

inline void copy(int n, const float* x, int incx, float* y, int incy) {
    if (n > copiedByLoop && incx == 1 && incy == 1)
        std::memcpy(y, x, static_cast<std::size_t>(n) * sizeof(float));
    else
        strided::copy(n, x, incx, y, incy);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
