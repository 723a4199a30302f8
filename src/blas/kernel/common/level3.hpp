// The kernels of BLAS level 3 but GEMM of one build, in its namespace. The build's vec.hpp comes first and says what
// Vec is.
#pragma once

#include "blas/kernel/common/level3_symmetric.hpp"
#include "blas/kernel/common/level3_triangular.hpp"
