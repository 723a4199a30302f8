// What the thread decisions of levels 1 and 2 ask of the machine they run on.
#pragma once

#include "qrv/service.h"

namespace qrv {

struct ThisMachine {
    static int cpu_ma() { return qrv_serv_get_cpu_ma(); }
    static int budget() { return qrv_serv_domain_get_max_threads(QRV_DOMAIN_BLAS); }
    static int dynamic() { return qrv_serv_get_dynamic(); }
    static int second_cache_bytes() { return qrv_serv_get_cache_size(2); }
};

} // namespace qrv
