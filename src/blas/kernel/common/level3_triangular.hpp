// Solves and products with triangular matrices: each hands over to its family's template.
#pragma once

#include "blas/kernel/common/own_gemm.hpp"
