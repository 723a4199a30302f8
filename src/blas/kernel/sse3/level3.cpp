// BLAS level 3 of the sse3 build.
#include "blas/kernel/sse3/vec.hpp"

#include "blas/kernel/common/pack.hpp"

#include "blas/kernel/common/level3.hpp"
