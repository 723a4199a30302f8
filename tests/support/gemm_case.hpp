#pragma once
#include <gtest/gtest.h>

#include "support/matrices.hpp"
#include "support/oracle.hpp"

namespace qrv::test {

using Elements = testing::Types<float, SingleComplex>; // of the suites that serve both

template <class T>
Wide<T> wide(T x) {
    return widen(x);
}
template <class T>
T product(T x, T y) {
    return times(x, y);
}

} // namespace qrv::test
