// Runs the tests of one program, after a check that a forced processor class took effect.
#include <cfenv>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <malloc.h>

#include "qrv/service.h"
#include "service/processor.hpp"
#include "service/thread_budget.hpp"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    mallopt(M_MMAP_THRESHOLD, 1 << 30); // large operands come and go: their pages stay
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    if (const char* forced = std::getenv("QRV_DEBUG_CPU_TYPE")) {
        const int type = std::atoi(forced);
        if (type > qrv::cpu_type_of(qrv::cpuid(1))) {
            std::printf("skipped: this processor cannot run class %d\n", type);
            return 77;
        }
        if (qrv_serv_get_cpu_type() != type) {
            std::printf("QRV_DEBUG_CPU_TYPE=%s did not take effect\n", forced);
            return 1;
        }
    }
    if (std::getenv("OMP_THREAD_LIMIT"))
        qrv::assume_thread_limit(qrv::largestTeam); // regions are to ask for more threads than they get
    if (std::getenv("QRV_TRAPS")) // as a host may; threads of a team begin with those of the one that starts them
        feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
    return RUN_ALL_TESTS();
}
