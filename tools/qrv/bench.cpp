// qrv bench: speeds of the main routines on this machine, in a few seconds.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <fmt/core.h>
#include <functional>
#include <limits>
#include <qrv/service.h>
#include <random>

#include "bench/peak.hpp"
#include "command.hpp"
#include "routines.hpp"

namespace tools {
namespace {

using Corvex::Mathematics::LinearAlgebra::MatrixDiagonalMode;
using Corvex::Mathematics::LinearAlgebra::MatrixOperationSide;
using Corvex::Mathematics::LinearAlgebra::MatrixTriangleMode;

double seconds_of(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Of many short runs the fastest counts: what else the machine does only makes a run slower.
double best_seconds(double duration, const std::function<void()>& prepare, const std::function<void()>& work) {
    double best = std::numeric_limits<double>::infinity();
    for (double total = 0; total < duration;) {
        total += seconds_of(prepare);
        const double run = seconds_of(work);
        best = std::min(best, run);
        total += run;
    }
    return best;
}

// Random elements in [-1, 1) / n, and 1 on the diagonal: of any order well conditioned.
template <class T>
Matrix<T> random_matrix(int n) {
    Matrix<T> a(n, n);
    std::minstd_rand generator(1);
    std::uniform_real_distribution<float> element(-1.0F / static_cast<float>(n), 1.0F / static_cast<float>(n));
    for (T& value : a.values)
        if constexpr (isComplex<T>)
            value = {element(generator), element(generator)};
        else
            value = element(generator);
    for (int i = 0; i < n; ++i)
        a(i, i) = 1;
    return a;
}

// Operands of one routine; every run begins with C as a copy of B.
template <class T>
struct Operands {
    explicit Operands(int order) : n(order), a(random_matrix<T>(n)), b(a), c(a), pivots(static_cast<std::size_t>(n)) {}

    int n;
    Matrix<T> a, b, c;
    std::vector<int> pivots;
};

void gemm(Operands<float>& o) {
    provider().BlasLevel3()->Sgemm(TransposeOperation::None, TransposeOperation::None, o.n, o.n, o.n, 1, o.a.values, 0,
                                   o.n, o.b.values, 0, o.n, 0, o.c.values, 0, o.n);
}
void gemm(Operands<SingleComplex>& o) {
    provider().ComplexBlasLevel3()->Cgemm(TransposeOperation::None, TransposeOperation::None, o.n, o.n, o.n, 1,
                                          o.a.values, 0, o.n, o.b.values, 0, o.n, 0, o.c.values, 0, o.n);
}
void trsm(Operands<float>& o) {
    provider().BlasLevel3()->Strsm(MatrixOperationSide::Left, MatrixTriangleMode::Lower, TransposeOperation::None,
                                   MatrixDiagonalMode::NonUnit, o.n, o.n, 1, o.a.values, 0, o.n, o.c.values, 0, o.n);
}
void trsm(Operands<SingleComplex>& o) {
    provider().ComplexBlasLevel3()->Ctrsm(MatrixOperationSide::Left, MatrixTriangleMode::Lower,
                                          TransposeOperation::None, MatrixDiagonalMode::NonUnit, o.n, o.n, 1,
                                          o.a.values, 0, o.n, o.c.values, 0, o.n);
}
void syrk(Operands<float>& o) {
    provider().BlasLevel3()->Ssyrk(MatrixTriangleMode::Lower, TransposeOperation::None, o.n, o.n, 1, o.a.values, 0, o.n,
                                   0, o.c.values, 0, o.n);
}

template <class T>
void getrf(Operands<T>& o) {
    factor(o.c, o.pivots);
}

struct Routine {
    const char* name;
    double flops; // over n^3, by the standard counts
    std::function<double(int n, double duration)> seconds;
};

template <class T>
Routine routine(const char* name, double flops, void (*work)(Operands<T>&)) {
    return {name, flops, [work](int n, double duration) {
                Operands<T> operands(n);
                work(operands); // the first call pays for one-time work
                operands.c = operands.b;
                return best_seconds(
                    duration, [&] { operands.c.values.assign(operands.b.values.begin(), operands.b.values.end()); },
                    [&] { work(operands); });
            }};
}

std::vector<Routine> routines() {
    return {routine<float>("Sgemm", 2, gemm),
            routine<SingleComplex>("Cgemm", 8, gemm),
            routine<float>("Ssyrk", 1, syrk),
            routine<float>("Strsm", 1, trsm),
            routine<SingleComplex>("Ctrsm", 4, trsm),
            routine<float>("Sgetrf", 2.0 / 3, getrf),
            routine<SingleComplex>("Cgetrf", 8.0 / 3, getrf)};
}

// GFLOP/s of the widest instruction set that the processor has, on so many threads at once: the best so far.
class PeakMeter {
public:
    explicit PeakMeter(int threadCount) : peak(bench::machine_peaks().back()), threads(threadCount) {}

    void measure(double duration) {
        const double seconds = best_seconds(
            duration, [] {}, [&] { peak.run(threads); });
        best = std::max(best, peak.flops * threads / seconds * 1e-9);
    }

    double rate() const { return best; }
    void print() const {
        fmt::print("At most {:.0f} GFLOP/s: {} arithmetic in registers on {} thread{}, measured.\n", best, peak.name,
                   threads, threads == 1 ? "" : "s");
    }

private:
    bench::Peak peak;
    int threads;
    double best = 0;
};

void print_rates(const Routine& routine, const std::vector<double>& rates, double peak) {
    fmt::print("\n  {:<7}", routine.name);
    for (const double rate : rates)
        fmt::print("{:>8.1f} {:>4.0f}%", rate, 100 * rate / peak);
}

void run(const std::vector<int>& sizes, double duration) {
    // The peak is measured again before each routine: a machine that others use is not as fast at all times.
    PeakMeter peak(qrv_serv_domain_get_max_threads(QRV_DOMAIN_BLAS));
    const std::vector<Routine> measured = routines();
    std::vector<std::vector<double>> rates;
    for (const Routine& routine : measured) {
        peak.measure(duration);
        rates.emplace_back();
        for (const int n : sizes)
            rates.back().push_back(routine.flops * std::pow(n, 3) / routine.seconds(n, duration) * 1e-9);
    }

    peak.print();
    fmt::print("\nGFLOP/s and share of that, matrices of order n\n{:>9}", "n");
    for (const int n : sizes)
        fmt::print("{:>14}", n);
    for (std::size_t r = 0; r < measured.size(); ++r)
        print_rates(measured[r], rates[r], peak.rate());
    fmt::print("\n");
}

} // namespace

void add_bench(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("bench", "Speeds of the main routines on this machine, in a few seconds");
    const auto sizes = std::make_shared<std::vector<int>>(std::vector<int>{64, 256, 1024});
    const auto duration = std::make_shared<double>(0.2);
    command->add_option("--sizes", *sizes, "orders of the matrices")
        ->capture_default_str()
        ->check(CLI::Range(1, 16384));
    command->add_option("--seconds", *duration, "time for each figure")
        ->capture_default_str()
        ->check(CLI::Range(0.001, 60.0));
    command->callback([sizes, duration] { run(*sizes, *duration); });
}

} // namespace tools
