// BLAS level 3 of the ssse3 build.
#include "blas/kernel/ssse3/vec.hpp"

#include "blas/kernel/common/pack.hpp"

#include "blas/kernel/common/level3.hpp"
