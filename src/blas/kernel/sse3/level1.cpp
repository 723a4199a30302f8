// BLAS level 1 of the sse3 build.
#include "blas/kernel/sse3/vec.hpp"

#include "blas/kernel/common/level1.hpp"
