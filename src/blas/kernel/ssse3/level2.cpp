// BLAS level 2 of the ssse3 build.
#include "blas/kernel/ssse3/vec.hpp"

#include "blas/kernel/common/pack.hpp"

#include "blas/kernel/common/level2.hpp"
