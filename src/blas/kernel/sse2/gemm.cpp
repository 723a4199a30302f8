// Serial GEMM of the sse2 build.
#include "blas/kernel/sse2/vec.hpp"

#include "blas/kernel/common/gemm_panel_pieces.hpp"
