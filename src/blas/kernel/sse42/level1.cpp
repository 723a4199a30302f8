// BLAS level 1 of the sse42 build.
#include "blas/kernel/sse42/vec.hpp"

#include "blas/kernel/common/unit_stride.hpp"

#include "blas/kernel/common/level1_vector.hpp"

#include "blas/kernel/common/level1.hpp"
