// BLAS level 1 of the sse2 build.
#include "blas/kernel/sse2/vec.hpp"

#include "blas/kernel/common/unit_stride.hpp"

#include "blas/kernel/common/level1_vector.hpp"

#include "blas/kernel/common/level1.hpp"
