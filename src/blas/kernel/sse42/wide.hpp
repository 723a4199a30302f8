// The forms of this build's GEMM for processors with wider vectors: routines to put into the plan. Layouts of packed A
// and packed B are the plan's; the sliver needs more room, and the micro-kernel applies beta.
#pragma once

#include "blas/kernel/gemm_plan.hpp"
#include "blas/kernel/kernels.hpp"

// Each form is compiled for its own instruction set, so it has a namespace like a build of its own.
#define QRV_DECLARE_WIDE_FORM(form)                                                                                    \
    namespace qrv::kernel::form {                                                                                      \
    /* Puts the form's routines into a plan of the sse42 row. */                                                       \
    void use_form(GemmPlan<float>* plan);                                                                              \
    void use_form(GemmPlan<SingleComplex>* plan);                                                                      \
    /* The whole operation without packing and without work memory; m, n, k and alpha are not 0. */                    \
    void direct(QRV_GEMM_PARAMETERS(float));                                                                           \
    void direct(QRV_GEMM_PARAMETERS(SingleComplex));                                                                   \
    }

QRV_DECLARE_WIDE_FORM(sse42_avx2)
QRV_DECLARE_WIDE_FORM(sse42_avx512)

namespace qrv::kernel::sse42_avx512 {
// The same from copies in work memory. False if that is refused: nothing has been done then.
bool panels(QRV_GEMM_PARAMETERS(float));
bool panels(QRV_GEMM_PARAMETERS(SingleComplex));
} // namespace qrv::kernel::sse42_avx512

#undef QRV_DECLARE_WIDE_FORM
