// BLAS level 3 with AVX-512.
#include "blas/kernel/sse42/build_gemm.hpp"
#include "blas/kernel/sse42/vec_avx512.hpp"

#include "blas/kernel/common/pack.hpp"

#include "blas/kernel/common/level3.hpp"
