// The forms of this build's GEMM micro-kernel for processors with wider vectors. Layout of packed A and packed B,
// and what the micro-kernel does, are the plan's; only the sliver needs more room.
#pragma once

#include "blas/kernel/gemm_plan.hpp"

// Each form is compiled for its own instruction set, so it has a namespace like a build of its own.
#define QRV_DECLARE_WIDE_FORM(form, factor)                                                                            \
    namespace qrv::kernel::form {                                                                                      \
    constexpr int sliverFactor = factor; /* sliver floats per float of B, four columns counted */                      \
    GemmPlan<float>::Micro gemm_micro;                                                                                 \
    }

QRV_DECLARE_WIDE_FORM(sse42_avx2, 4)
QRV_DECLARE_WIDE_FORM(sse42_avx512, 8)

#undef QRV_DECLARE_WIDE_FORM
