// BLAS level 2 of the generic build.
#include "blas/kernel/generic/pack.hpp"

#include "blas/kernel/common/level2.hpp"
