// Contract of the level 1 kernels, on every build.
#include <gtest/gtest.h>

#include "support/builds.hpp"

namespace qrv::test {
namespace {

TEST(Level1, dot_of_two_elements) {
    const float x[] = {1, 2}, y[] = {3, 4};
    const int n = 2, inc = 1;
    for (const VectorBuild& build : vector_builds())
        EXPECT_EQ(build.blas_sdot_kernel(&n, x, &inc, y, &inc), 11) << build;
}

} // namespace
} // namespace qrv::test
