// Every tuning value by its number, and ILAENV, which gives them in the native calling form.
#include <algorithm>
#include <limits>

#include "qrv/native.h"
#include "qrv/service.h"
#include "service/tuning/tables.hpp"

namespace qrv::tuning {
namespace {

// The least order for which the multishift iteration is used, or for QRF the block size of a panel by n2.
int iteration_minimum(const Name& name, std::string_view opts, const Sizes& n) {
    if (name.operation() == "TRF")
        return 16;
    if (name.operation() != "QRF")
        return qr_iteration(12, n.n2, n.n3);
    if (opts.empty() || opts[0] != 'P')
        return 16;
    return by_size(n.n2, {{400, 24}, {550, 32}, {800, 48}, {1350, 64}, {1900, 96}}, 128);
}

// Rows for which a tall matrix is better reduced to a triangle first.
int singular_value_crossover(const Sizes& n) {
    const float rows = 1.6F * static_cast<float>(std::min(n.n1, n.n2));
    return rows < 0x1p31F ? static_cast<int>(rows) : std::numeric_limits<int>::max();
}

} // namespace

int block_size(Row row, int n1, int n2, int n3, int n4) {
    return block_size_of(row.key, " ", {n1, n2, n3, n4});
}
int minimum_block_size(std::string_view name) {
    return value(2, name, " ", {});
}
int crossover(Row row, int n1, int n2, int n3, int n4) {
    return crossover_of(row.key, {n1, n2, n3, n4});
}

int value(int ispec, std::string_view name, std::string_view opts, const Sizes& sizes) {
    const Name routine(name);
    if (ispec >= 1 && ispec <= 3 && routine.row() == 0)
        return 1;
    switch (ispec) {
    case 1:
        return block_size_of(routine.row(), opts, sizes);
    case 2:
        return 2;
    case 3:
        return crossover_of(routine.row(), sizes);
    case 4: // shifts of the classic QR iteration
        return 6;
    case 5: // least column dimension for blocking
        return 2;
    case 6:
        return singular_value_crossover(sizes);
    case 7: // processors; the QZ iteration has a value of its own
        if (routine.without_precision() != "HGEQZ")
            return 1;
        return qrv_serv_get_cpu_type() == 5 ? 32 : 2;
    case 8: // crossover to multishift QR
        return 50;
    case 9: // size of the smallest subproblems of divide and conquer
        return 25;
    case 10: // NaN and infinity can be trusted
    case 11:
        return 1;
    case 12:
        return iteration_minimum(routine, opts, sizes);
    case 13:
    case 14:
    case 15:
    case 16:
        return qr_iteration(ispec, sizes.n2, sizes.n3);
    case 17:
        return lu_span(name, sizes.n2, sizes.n3);
    case 18:
        return lu_tail(name, sizes.n2, sizes.n3);
    case 19:
        return qrv_serv_get_cpu_type();
    }
    return -1;
}

} // namespace qrv::tuning

using namespace qrv;

namespace {

std::string_view text(const char* characters, int length) {
    return {characters, static_cast<std::size_t>(std::max(length, 0))};
}

} // namespace

int ILAENV(const int* ispec, const char* name, const char* opts, const int* n1, const int* n2, const int* n3,
           const int* n4, int name_length, int opts_length) {
    return tuning::value(*ispec, text(name, name_length), text(opts, opts_length), {*n1, *n2, *n3, *n4});
}
