// BLAS level 1 with AVX2 and FMA.
#include "blas/kernel/sse42/vec_avx2.hpp"

#include "blas/kernel/common/unit_stride_wide.hpp"

#include "blas/kernel/common/level1_vector.hpp"

#include "blas/kernel/common/level1.hpp"
