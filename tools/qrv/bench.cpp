// qrv bench: speeds of the main routines on this machine, in a few seconds.
#include <algorithm>
#include <functional>
#include <qrv/service.h>
#include <random>

#include "command.hpp"
#include "report.hpp"
#include "routines.hpp"
#include "support/flops.hpp"
#include "support/peak.hpp"
#include "support/timer.hpp"

namespace tools {

using namespace support;

namespace {

using Corvex::Mathematics::LinearAlgebra::MatrixDiagonalMode;
using Corvex::Mathematics::LinearAlgebra::MatrixOperationSide;
using Corvex::Mathematics::LinearAlgebra::MatrixTriangleMode;

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
    std::function<Work(int n)> work;
    std::function<double(int n, double duration)> seconds;
};

template <class T>
Routine routine(const char* name, Work (*count)(double n, bool isComplex), void (*work)(Operands<T>&)) {
    return {name, [count](int n) { return count(n, isComplex<T>); },
            [work](int n, double duration) {
                Operands<T> operands(n);
                work(operands); // the first call pays for one-time work
                operands.c = operands.b;
                return best_seconds(
                    duration, [&] { operands.c.values.assign(operands.b.values.begin(), operands.b.values.end()); },
                    [&] { work(operands); });
            }};
}

Work gemm_of_order(double n, bool isComplex) {
    return gemm_work(n, n, n, isComplex);
}
Work triangular_of_order(double n, bool isComplex) { // a rank update has as many
    return triangular_work(n, n, isComplex);
}

std::vector<Routine> routines() {
    return {routine<float>("Sgemm", gemm_of_order, gemm),
            routine<SingleComplex>("Cgemm", gemm_of_order, gemm),
            routine<float>("Ssyrk", triangular_of_order, syrk),
            routine<float>("Strsm", triangular_of_order, trsm),
            routine<SingleComplex>("Ctrsm", triangular_of_order, trsm),
            routine<float>("Sgetrf", getrf_work, getrf),
            routine<SingleComplex>("Cgetrf", getrf_work, getrf)};
}

// GFLOP/s of the widest instruction set that the processor has, on so many threads at once: the best so far.
class PeakMeter {
public:
    explicit PeakMeter(int threadCount) : peak(machine_peaks().back()), threads(threadCount) {}

    void measure(double duration) {
        const double seconds = best_seconds(
            duration, [] {}, [&] { peak.run(threads); });
        best = std::max(best, peak.flops * threads / seconds * 1e-9);
    }

    double rate() const { return best; }
    void print(Report& report) const {
        report.print("At most {:.0f} GFLOP/s: {} arithmetic in registers on {} thread{}, measured.\n",
                     figure("peak_gflops", best), figure("arithmetic", std::string(peak.name)),
                     figure("threads", threads), threads == 1 ? "" : "s");
    }

private:
    Peak peak;
    int threads;
    double best = 0;
};

void print_rates(Report& report, const Routine& routine, const std::vector<double>& rates, double peak) {
    report.print("\n  {:<7}", routine.name);
    for (const double rate : rates)
        report.print("{:>8.1f} {:>4.0f}%", rate, 100 * rate / peak);
    report.add(routine.name, rates);
}

struct Request {
    std::vector<int> sizes{64, 256, 1024};
    double duration = 0.2;
    bool wantsJson = false;
};

void run(const Request& request) {
    const auto& [sizes, duration, wantsJson] = request;
    // The peak is measured again before each routine: a machine that others use is not as fast at all times.
    PeakMeter peak(qrv_serv_domain_get_max_threads(QRV_DOMAIN_BLAS));
    const std::vector<Routine> measured = routines();
    std::vector<std::vector<double>> rates;
    for (const Routine& routine : measured) {
        peak.measure(duration);
        rates.emplace_back();
        for (const int n : sizes)
            rates.back().push_back(routine.work(n).amount / routine.seconds(n, duration) * 1e-9);
    }

    Report report(wantsJson, {});
    peak.print(report);
    report.print("\nGFLOP/s and share of that, matrices of order n\n{:>9}", "n");
    for (const int n : sizes)
        report.print("{:>14}", n);
    report.add("n", sizes);
    for (std::size_t r = 0; r < measured.size(); ++r)
        print_rates(report, measured[r], rates[r], peak.rate());
    report.print("\n");
    report.close();
}

} // namespace

void add_bench(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("bench", "Speeds of the main routines on this machine, in a few seconds");
    const auto request = std::make_shared<Request>();
    command->add_option("--sizes", request->sizes, "orders of the matrices")
        ->capture_default_str()
        ->check(CLI::Range(1, 16384));
    command->add_option("--seconds", request->duration, "time for each figure")
        ->capture_default_str()
        ->check(CLI::Range(0.001, 60.0));
    add_json(*command, request->wantsJson);
    command->callback([request] { run(*request); });
}

} // namespace tools
