// A number as a type, for loops that are told apart by it at compile time.
#pragma once

#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

template <int value>
struct Count {
    constexpr int operator()() const { return value; }
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
