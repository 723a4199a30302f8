// A wide form as a whole: the routines that it puts into a plan.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/gemm/gemm_pack_wide.hpp"
#include "blas/kernel/common/gemm/gemm_wide.hpp"
#include "blas/kernel/gemm_plan.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Packing of A, and the micro-kernel by the given shapes, widest first. Layouts of packed A and packed B stay the
// plan's; the sliver may need more room.
template <class T, class Vector, class... Shapes>
void use_wide_form(GemmPlan<T>* plan) {
    const int columnFloats = plan->nUnit * floatsIn<T>;
    plan->copyAN = copy_an<Vector, T>;
    plan->copyAT = copy_at<Vector, T, false>;
    plan->copyAC = copy_at<Vector, T, isComplex<T>>;
    plan->micro = wide_micro<T, Shapes...>;
    ((plan->smallFactor = larger(plan->smallFactor, (Shapes::sliverStep + columnFloats - 1) / columnFloats)), ...);
    plan->microScalesC = true;
    ((plan->sliverColumns = larger(plan->sliverColumns, Shapes::columns)), ...);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
