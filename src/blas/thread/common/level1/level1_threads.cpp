#include "blas/thread/common/level1/level1_threads.hpp"

#include "qrv/service.h"

namespace qrv {
namespace {

struct ThisMachine {
    static int cpu_ma() { return qrv_serv_get_cpu_ma(); }
    static int budget() { return qrv_serv_domain_get_max_threads(QRV_DOMAIN_BLAS); }
    static int dynamic() { return qrv_serv_get_dynamic(); }
    static int second_cache_bytes() { return qrv_serv_get_cache_size(2); }
};

} // namespace

int vector_threads_here(const VectorRow& row, int n, int incx, int incy) {
    return vector_threads(row, n, incx, incy, ThisMachine{});
}

} // namespace qrv
