// The DispatchSlots and dispatchers of all kernels.
#include "blas/kernel/kernels.hpp"

#include "service/dispatch.hpp"

namespace qrv::kernel {
namespace {

#define QRV_DEFINE_SLOT(Result, name, parameters, arguments)                                                           \
    constinit DispatchSlot<Result parameters> name##_slot{                                                             \
        {generic::name, sse2::name, sse3::name, ssse3::name, sse42::name}};
QRV_KERNELS(QRV_DEFINE_SLOT)
#undef QRV_DEFINE_SLOT

} // namespace
} // namespace qrv::kernel

#define QRV_DEFINE_DISPATCHER(Result, name, parameters, arguments)                                                     \
    Result qrv_##name parameters {                                                                                     \
        return qrv::kernel::name##_slot arguments;                                                                     \
    }
QRV_KERNELS(QRV_DEFINE_DISPATCHER)
#undef QRV_DEFINE_DISPATCHER
