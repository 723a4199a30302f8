// BLAS level 2 with AVX-512.
#include "blas/kernel/sse42/vec_avx512.hpp"

#include "blas/kernel/common/pack.hpp"

#include "blas/kernel/common/level2.hpp"
