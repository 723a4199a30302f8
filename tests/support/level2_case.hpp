#pragma once
#include <gtest/gtest.h>

#include "support/builds.hpp"
#include "support/oracle.hpp"

namespace qrv::test {

// The kernel for an element type: real or complex.
template <class T, class Real, class Complex>
auto kernel_for(Real* real, Complex* complex) {
    if constexpr (isComplex<T>)
        return complex;
    else
        return real;
}

} // namespace qrv::test
