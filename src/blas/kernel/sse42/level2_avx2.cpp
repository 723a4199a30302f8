// BLAS level 2 with AVX2 and FMA.
#include "blas/kernel/sse42/vec_avx2.hpp"

#include "blas/kernel/common/pack.hpp"

#include "blas/kernel/common/level2.hpp"
