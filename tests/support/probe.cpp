// Prints, as "name=value" lines, what a fresh process finds: each argument is one step, done in the order given.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <omp.h>
#include <sched.h>
#include <string>
#include <string_view>
#include <thread>

#include "qrv/service.h"
#include "service/thread_budget.hpp"
#include "service/work_pool.hpp"

namespace {

void print(const char* name, long value) {
    std::printf("%s=%ld\n", name, value);
}

// All that can be asked for, and whether the first question leaves the calling thread's processors as they were.
void ask() {
    cpu_set_t before, after;
    sched_getaffinity(0, sizeof before, &before);
    print("all", qrv_serv_get_max_threads());
    sched_getaffinity(0, sizeof after, &after);
    print("affinity_kept", CPU_EQUAL(&before, &after));
    print("blas", qrv_serv_domain_get_max_threads(QRV_DOMAIN_BLAS));
    print("fft", qrv_serv_domain_get_max_threads(QRV_DOMAIN_FFT));
    print("dynamic", qrv_serv_get_dynamic());
    print("omp", omp_get_max_threads());
    print("cores", qrv::counted_cores().physicalCores);
    print("uncounted", qrv::counted_cores().outcome != qrv::CountOutcome::counted);
#pragma omp parallel num_threads(2)
#pragma omp master
    {
        print("all_inside", qrv_serv_get_max_threads());
        print("in_parallel", qrv_serv_in_parallel());
    }
    print("cpu_type", qrv_serv_get_cpu_type());
    print("cpu_ma", qrv_serv_get_cpu_ma());
    void* const block = qrv_serv_allocate(1000, 128);
    int buffers = 0;
    print("bytes", static_cast<long>(qrv_serv_memory_stat(&buffers)));
    print("buffers", buffers);
    qrv_serv_deallocate(block);
}

void pin_to_first_processor() {
    cpu_set_t own;
    sched_getaffinity(0, sizeof own, &own);
    int first = 0;
    while (!CPU_ISSET(first, &own))
        ++first;
    CPU_ZERO(&own);
    CPU_SET(first, &own);
    sched_setaffinity(0, sizeof own, &own);
}

const std::pair<std::string_view, void (*)()> steps[] = {
    {"ask", ask},
    {"ask_in_pinned_thread",
     [] {
         std::thread([] {
             pin_to_first_processor();
             ask();
         }).join();
     }},
    {"pin", pin_to_first_processor},
    {"configuration",
     [] {
         std::string text(static_cast<std::size_t>(qrv_serv_get_configuration(nullptr, 0)) + 1, '\0');
         qrv_serv_get_configuration(text.data(), static_cast<int>(text.size()));
         std::fputs(text.c_str(), stdout);
     }},
    {"request=3", [] { qrv_serv_set_num_threads(3); }},
    {"request=0", [] { print("result", qrv_serv_set_num_threads(0)); }},
    {"blas=2", [] { print("stored", qrv_serv_domain_set_num_threads(2, QRV_DOMAIN_BLAS)); }},
    {"blas=0", [] { print("stored", qrv_serv_domain_set_num_threads(0, QRV_DOMAIN_BLAS)); }},
    {"domain4=2", [] { print("stored", qrv_serv_domain_set_num_threads(2, 4)); }},
    {"dynamic=0", [] { qrv_serv_set_dynamic(0); }},
    {"mpi_threaded=0", [] { qrv_serv_set_mpi_threaded(0); }},
};

} // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = argv[i];
        const auto* const step =
            std::find_if(std::begin(steps), std::end(steps), [&](const auto& s) { return s.first == name; });
        if (step != std::end(steps)) {
            step->second();
        } else if (name.starts_with("set_")) { // "set_NAME=VALUE" changes the environment of the running process
            const auto equals = name.find('=');
            setenv(std::string(name.substr(4, equals - 4)).c_str(), std::string(name.substr(equals + 1)).c_str(), 1);
        } else {
            std::fprintf(stderr, "probe: unknown step %s\n", argv[i]);
            return 2;
        }
    }
}
