// Serial GEMM of the sse3 build.
#include "blas/kernel/sse3/vec.hpp"

#include "blas/kernel/common/gemm_panel_pieces.hpp"
