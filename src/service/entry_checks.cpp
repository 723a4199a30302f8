#include "service/entry_checks.hpp"

#include "qrv/native.h"

namespace qrv {

int report_bad_argument(std::string_view name, int position) {
    XERBLA(name.data(), &position, static_cast<int>(name.size()));
    return 1;
}

} // namespace qrv
