// BLAS level 3 of the sse2 build.
#include "blas/kernel/sse2/vec.hpp"

#include "blas/kernel/common/pack.hpp"

#include "blas/kernel/common/level3.hpp"
