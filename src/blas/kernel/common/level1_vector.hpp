// BLAS level 1 of the builds with vectors: unit stride in the build's walk (UnitStride, whose header comes first),
// anything else element by element.
#pragma once

#include "blas/kernel/common/asum.hpp"
#include "blas/kernel/common/axpy.hpp"
#include "blas/kernel/common/copy.hpp"
#include "blas/kernel/common/dot.hpp"
#include "blas/kernel/common/iamax.hpp"
#include "blas/kernel/common/nrm2.hpp"
#include "blas/kernel/common/rot.hpp"
#include "blas/kernel/common/rotm.hpp"
#include "blas/kernel/common/scal.hpp"
