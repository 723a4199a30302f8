// BLAS level 3 of the generic build.
#include "blas/kernel/generic/pack.hpp"
#include "blas/kernel/generic/vec.hpp"

#include "blas/kernel/common/level3.hpp"
