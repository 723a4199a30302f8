// Teams of a chosen size.
#pragma once

#include "qrv/service.h"

namespace qrv::test {

constexpr int teamSizes[] = {1, 2, 3, 4, 8}; // more threads than cores: it is the partition that is tested

// As long as it lives, routines ask for `threads`, whatever the machine has.
class ForcedTeam {
public:
    explicit ForcedTeam(int threads) : dynamic_(qrv_serv_get_dynamic()) {
        qrv_serv_set_dynamic(0);
        qrv_serv_set_num_threads(threads);
    }
    ~ForcedTeam() {
        qrv_serv_set_num_threads(0);
        qrv_serv_set_dynamic(dynamic_);
    }
    ForcedTeam(const ForcedTeam&) = delete;

private:
    int dynamic_;
};

} // namespace qrv::test
