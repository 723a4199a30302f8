// The DispatchSlots and dispatchers of all kernels.
#include "blas/kernel/slots.hpp"

namespace qrv::kernel {

#define QRV_DEFINE_SLOT(Result, name, parameters, arguments)                                                           \
    constinit DispatchSlot<Result parameters> name##_slot{                                                             \
        {generic::name, sse2::name, sse3::name, ssse3::name, sse42::name}};
QRV_GEMM_KERNELS(QRV_DEFINE_SLOT)

#ifdef QRV_WIDE_KERNELS
#define QRV_DEFINE_WIDE_SLOT(Result, name, parameters, arguments)                                                      \
    constinit DispatchSlot<Result parameters> name##_slot{                                                             \
        {generic::name, sse2::name, sse3::name, ssse3::name, sse42::name, sse42_avx2::name, sse42_avx512::name}};
QRV_VECTOR_KERNELS(QRV_DEFINE_WIDE_SLOT)
#undef QRV_DEFINE_WIDE_SLOT
#else
QRV_VECTOR_KERNELS(QRV_DEFINE_SLOT)
#endif
#undef QRV_DEFINE_SLOT

} // namespace qrv::kernel

#define QRV_DEFINE_DISPATCHER(Result, name, parameters, arguments)                                                     \
    Result qrv_##name parameters {                                                                                     \
        return qrv::kernel::name##_slot arguments;                                                                     \
    }
QRV_KERNELS(QRV_DEFINE_DISPATCHER)
#undef QRV_DEFINE_DISPATCHER
