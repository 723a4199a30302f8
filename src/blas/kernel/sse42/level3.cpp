// BLAS level 3 of the sse42 build.
#include "blas/kernel/sse42/vec.hpp"

#include "blas/kernel/common/pack.hpp"

#include "blas/kernel/common/level3.hpp"
