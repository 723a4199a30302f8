// BLAS level 3 with AVX2 and FMA.
#include "blas/kernel/sse42/build_gemm.hpp"
#include "blas/kernel/sse42/vec_avx2.hpp"

#include "blas/kernel/common/pack.hpp"

#include "blas/kernel/common/level3.hpp"
