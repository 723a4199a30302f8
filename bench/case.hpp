// What a family of routines gives to the benchmark: its cases, and for each the work on its operands.
#pragma once

#include <benchmark/benchmark.h>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "library.hpp"

namespace bench {

class Workload {
public:
    virtual ~Workload() = default;

    // One call, judged against the definition in double. A library that lacks the routine or computes something else
    // takes no part.
    virtual bool correct(const Library& library) = 0;

    // Calls the routine once for each iteration of the state, with the threads that the library is set to.
    virtual void run(benchmark::State& state, const Library& library) = 0;
};

struct Case {
    std::string name; // what the filter sees: "sgemm/NN/1024/t1"
    int threads;
    double flops;
    int plotSize; // position on the plot's axis, 0 if not plotted
    std::function<std::unique_ptr<Workload>()> prepare;
};

struct CaseOptions {
    std::vector<int> threads;
    float beta;
    bool quick; // a few small cases
};

std::vector<Case> gemm_cases(const CaseOptions& options);

} // namespace bench
