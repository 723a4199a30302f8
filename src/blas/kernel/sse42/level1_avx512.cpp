// BLAS level 1 with AVX-512.
#include "blas/kernel/sse42/vec_avx512.hpp"

#include "blas/kernel/common/unit_stride_wide.hpp"

#include "blas/kernel/common/level1_vector.hpp"

#include "blas/kernel/common/level1.hpp"
