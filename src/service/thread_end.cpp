// Stands alone in its object file, so that libqrv_blas can have another.
#include "service/work_pool.hpp"

void qrv::keep_buffers_of_thread() {}
