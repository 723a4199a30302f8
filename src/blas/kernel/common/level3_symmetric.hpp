// Symmetric and Hermitian rank updates and products: each hands over to its family's template.
#pragma once

#include "blas/kernel/common/own_gemm.hpp"
