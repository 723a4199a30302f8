// In a library that is ours but for this file: makes one instance of it run a narrower vector form than the processor
// has, which the library as it is shipped offers to its own tests only.
#include "qrv/export.h"
#include "service/processor.hpp"

// `most` is 0 for SSE, 1 for AVX2, 2 for AVX-512. Result: the form that is in force then. Call before any routine.
extern "C" QRV_API int qrv_bench_restrict_vector_form(int most) {
    qrv::restrict_vector_form(static_cast<qrv::VectorForm>(most));
    return static_cast<int>(qrv::vector_form());
}
