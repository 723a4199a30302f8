// What the thread decisions ask of the machine they run on, and how they choose their numbers.
#pragma once

#include "blas/complex.hpp"
#include "qrv/service.h"
#include "service/vector_form.hpp"

namespace qrv {

struct ThisMachine {
    static int cpu_ma() { return qrv_serv_get_cpu_ma(); }
    static VectorForm form() { return vector_form_in_use(); }
    static int budget() { return qrv_serv_domain_get_max_threads(QRV_DOMAIN_BLAS); }
    static int dynamic() { return qrv_serv_get_dynamic(); }
    static int second_cache_bytes() { return qrv_serv_get_cache_size(2); }
};

// The row of numbers for an element type.
template <class T, class Row>
constexpr const Row& row_for(const Row& real, const Row& complex) {
    if constexpr (isComplex<T>)
        return complex;
    else
        return real;
}

} // namespace qrv
