// A machine for decisions that notes what it was asked: c(lass), b(udget), d(ynamic), s(econd cache).
#pragma once

#include <ostream>

#include "service/vector_form.hpp"
#include <string>

namespace qrv::test {

struct RecordedMachine {
    int cpuMa, threads;
    bool dynamicThreads = true;
    int cache = -1; // bytes of the second level
    VectorForm vectors = VectorForm::sse;
    mutable std::string asked = "";

    int cpu_ma() const { return asked += 'c', cpuMa; }
    VectorForm form() const { return asked += 'f', vectors; }
    int budget() const { return asked += 'b', threads; }
    int dynamic() const { return asked += 'd', dynamicThreads; }
    int second_cache_bytes() const { return asked += 's', cache; }
};

inline std::ostream& operator<<(std::ostream& out, const RecordedMachine& machine) {
    return out << "CpuMa " << machine.cpuMa << " budget " << machine.threads << " dynamic " << machine.dynamicThreads
               << " cache " << machine.cache;
}

} // namespace qrv::test
