// BLAS level 1 of the sse3 build.
#include "blas/kernel/sse3/vec.hpp"

#include "blas/kernel/common/unit_stride.hpp"

#include "blas/kernel/common/level1_vector.hpp"

#include "blas/kernel/common/level1.hpp"
