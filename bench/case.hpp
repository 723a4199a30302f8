// What a family of routines gives to the benchmark: its cases, and for each the work on its operands.
#pragma once

#include <benchmark/benchmark.h>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "library.hpp"
#include "support/flops.hpp"

namespace bench {

using namespace support; // the work of routines

enum class Verdict { correct, wrong, absent };

class Workload {
public:
    virtual ~Workload() = default;

    // One call, judged against the definition in double. A library that lacks the routine or computes something else
    // takes no part in the case.
    virtual Verdict judge(const Library& library) = 0;

    // Calls the routine once for each iteration of the state, with the threads that the library is set to.
    virtual void run(benchmark::State& state, const Library& library) = 0;

    // The same work by a loop in place of the call; empty if the family has none.
    virtual std::function<void(benchmark::State&)> plain_loop() { return {}; }
};

struct Case {
    std::string name; // what the filter sees: "sgemm/NN/1024/t1"
    int threads;
    Work work;
    std::string plot; // title of the plot that the case is a point of, "sgemm"; empty if none
    int plotSize;     // position on the plot's axis
    std::function<std::unique_ptr<Workload>()> prepare;
};

struct CaseOptions {
    std::vector<int> threads;
    float beta;
    bool quick; // a few small cases
};

std::vector<Case> vector_cases(const CaseOptions& options);        // level 1
std::vector<Case> matrix_vector_cases(const CaseOptions& options); // level 2
std::vector<Case> gemm_cases(const CaseOptions& options);
std::vector<Case> matrix_cases(const CaseOptions& options);    // the rest of level 3: triangular,
std::vector<Case> symmetric_cases(const CaseOptions& options); // symmetric and Hermitian
std::vector<Case> getrf_cases(const CaseOptions& options);
std::vector<Case> cholesky_cases(const CaseOptions& options);
std::vector<Case> band_cases(const CaseOptions& options); // LU and Cholesky of bands
std::vector<Case> qr_cases(const CaseOptions& options);
std::vector<Case> singular_cases(const CaseOptions& options);     // singular values
std::vector<Case> nonsymmetric_cases(const CaseOptions& options); // eigenvalues of general matrices
std::vector<Case> syevr_cases(const CaseOptions& options);        // symmetric eigenproblem

} // namespace bench
