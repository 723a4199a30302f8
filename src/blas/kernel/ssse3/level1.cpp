// BLAS level 1 of the ssse3 build.
#include "blas/kernel/ssse3/vec.hpp"

#include "blas/kernel/common/unit_stride.hpp"

#include "blas/kernel/common/level1_vector.hpp"

#include "blas/kernel/common/level1.hpp"
