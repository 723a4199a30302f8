// BLAS level 1 of the generic build.
#include "blas/kernel/common/level1.hpp"
