// The kernels of BLAS level 2 of one build, in its namespace. The build's vec.hpp comes first and says what Vec is.
#pragma once

#include "blas/kernel/common/level2_full.hpp"
#include "blas/kernel/common/level2_triangular.hpp"
