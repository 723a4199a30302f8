// Pack and what goes with it: neighbouring elements of a matrix, as many as a vector of the build holds.
#pragma once

#include "blas/kernel/vec.hpp"

#if QRV_VECTOR_LANES == 1
#include "blas/kernel/generic/pack.hpp"
#else
#include "blas/kernel/common/vec/pack.hpp"
#endif
