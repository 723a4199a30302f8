// BLAS level 1: vectors from a few elements, where the call is most of the work, to beyond every cache.
#include <cmath>
#include <fmt/format.h>
#include <limits>

#include "case.hpp"
#include "routine.hpp"

namespace bench {
namespace {

// ---- The routines as one writes them in place, real and complex, in single and in double -----------------

// One product as Fortran takes it: std::complex would ask for NaN each time.
template <class R>
R times(R x, R y) {
    return x * y;
}
template <class R>
std::complex<R> times(std::complex<R> x, std::complex<R> y) {
    return {x.real() * y.real() - x.imag() * y.imag(), x.real() * y.imag() + x.imag() * y.real()};
}
template <class R>
R abs1(std::complex<R> x) {
    return std::abs(x.real()) + std::abs(x.imag());
}
template <class R>
R abs1(R x) {
    return std::abs(x);
}

template <class R>
R square(std::complex<R> x) {
    return x.real() * x.real() + x.imag() * x.imag();
}
template <class R>
R square(R x) {
    return x * x;
}

// |alpha| = 1 and c^2 + s^2 = 1: what is scaled or rotated in place a million times stays as large as it was. No part
// is 0 or 1, which some libraries treat apart.
constexpr float cosine = 0.6F, sine = 0.8F;

constexpr auto dot = [](int n, auto, auto* x, auto* y) {
    std::decay_t<decltype(*x)> sum{};
    for (int i = 0; i < n; ++i)
        sum += times(x[i], y[i]);
    return sum;
};
constexpr auto dotc = [](int n, auto, auto* x, auto* y) {
    std::decay_t<decltype(*x)> sum{};
    for (int i = 0; i < n; ++i)
        sum += times(std::conj(x[i]), y[i]);
    return sum;
};
constexpr auto nrm2 = [](int n, auto, auto* x, auto*) {
    decltype(std::abs(*x)) sum{};
    for (int i = 0; i < n; ++i)
        sum += square(x[i]);
    return std::sqrt(sum);
};
constexpr auto asum = [](int n, auto, auto* x, auto*) {
    decltype(std::abs(*x)) sum{};
    for (int i = 0; i < n; ++i)
        sum += abs1(x[i]);
    return sum;
};
constexpr auto iamax = [](int n, auto, auto* x, auto*) {
    int best = 0;
    for (int i = 1; i < n; ++i)
        if (abs1(x[i]) > abs1(x[best]))
            best = i;
    return best + 1;
};
constexpr auto axpy = [](int n, auto alpha, auto* x, auto* y) {
    for (int i = 0; i < n; ++i)
        y[i] += times(alpha, x[i]);
};
constexpr auto scal = [](int n, auto alpha, auto* x, auto*) {
    for (int i = 0; i < n; ++i)
        x[i] = times(alpha, x[i]);
};
constexpr auto copy = [](int n, auto, auto* x, auto* y) {
    for (int i = 0; i < n; ++i)
        y[i] = x[i];
};
constexpr auto swap = [](int n, auto, auto* x, auto* y) {
    for (int i = 0; i < n; ++i)
        std::swap(x[i], y[i]);
};
constexpr auto rot = [](int n, auto, auto* x, auto* y) {
    for (int i = 0; i < n; ++i) {
        const auto turned = cosine * x[i] + sine * y[i];
        y[i] = cosine * y[i] - sine * x[i];
        x[i] = turned;
    }
};

// ---- A case ----------------------------------------------------------------------------------------------

template <class T, class Definition>
class VectorWorkload : public Workload {
    using Double = std::conditional_t<isComplex<T>, Wide, double>;
    using Result = std::invoke_result_t<Definition, int, T, T*, T*>;

public:
    VectorWorkload(const char* name, const char* letters, int n)
        : n_(n), x_(n, 1, 1), y_(n, 1, 2), routine_(name, letters,
                                                    {{'n', &n_},
                                                     {'i', &increment_},
                                                     {'a', &alpha_},
                                                     {'x', x_.data.get()},
                                                     {'y', y_.data.get()},
                                                     {'c', &cosine},
                                                     {'s', &sine}}) {}

    Verdict judge(const Library& library) override {
        if (!routine_.entry(library))
            return Verdict::absent;
        x_.fill();
        y_.fill();
        std::vector<Double> x(x_.data.get(), x_.data.get() + n_), y(y_.data.get(), y_.data.get() + n_);
        double deviation = 0, tolerance = 0;
        routine_.bind<Result>(library, [&](auto call) {
            if constexpr (std::is_void_v<Result>) {
                call();
                Definition{}(n_, Double(alpha_), x.data(), y.data());
            } else {
                const auto expected = Definition{}(n_, Double(alpha_), x.data(), y.data());
                deviation = std::abs(Double(call()) - Double(expected));
                // Holds for every order of summation; the other factor is no larger than 1. A position is exact.
                if (!std::is_same_v<Result, int>)
                    tolerance = (n_ + 2.0) * epsilon * asum(n_, Double{}, x.data(), y.data());
            }
        });
        bool good = deviation <= tolerance;
        for (std::size_t i = 0; i < x.size(); ++i) // no value exceeds 2
            good = good && std::abs(Double(x_.data[i]) - x[i]) <= 4 * epsilon &&
                   std::abs(Double(y_.data[i]) - y[i]) <= 4 * epsilon;
        x_.fill();
        y_.fill();
        return good ? Verdict::correct : Verdict::wrong;
    }

    void run(benchmark::State& state, const Library& library) override {
        restore();
        routine_.repeat<Result>(state, library);
    }

    std::function<void(benchmark::State&)> plain_loop() override {
        return [this](benchmark::State& state) {
            restore();
            for (auto _ : state) {
                if constexpr (std::is_void_v<Result>)
                    Definition{}(n_, T(alpha_), x_.data.get(), y_.data.get());
                else
                    benchmark::DoNotOptimize(Definition{}(n_, T(alpha_), x_.data.get(), y_.data.get()));
                benchmark::ClobberMemory();
            }
        };
    }

private:
    // A magnitude of 1 is rounded too: it tells after a hundred million calls. Long vectors see few.
    void restore() {
        if (n_ <= 1000) {
            x_.fill();
            y_.fill();
        }
    }

    static constexpr double epsilon = std::numeric_limits<float>::epsilon();

    int n_, increment_ = 1;
    T alpha_ = [] {
        if constexpr (isComplex<T>)
            return T(cosine, sine);
        else
            return T(-1);
    }();
    Operand<T> x_, y_;
    Routine routine_;
};

using Prepare = std::unique_ptr<Workload>(const char* name, const char* letters, int n);

template <class T, class Definition>
std::unique_ptr<Workload> prepare(const char* name, const char* letters, int n) {
    return std::make_unique<VectorWorkload<T, Definition>>(name, letters, n);
}

// Arguments: n; a alpha, x and y the vectors, i an increment (1), c and s the rotation.
struct Row {
    const char *name, *letters;
    Work (*work)(double n, bool isComplex);
    bool isComplex;
    Prepare* prepare;
};
template <class T, class Definition>
constexpr Row row(const char* name, const char* letters, Work work(double n, bool isComplex), Definition) {
    return {name, letters, work, isComplex<T>, prepare<T, Definition>};
}
constexpr Row rows[] = {
    row<float>("sdot", "nxiyi", multiply_adds, dot),      row<Complex>("cdotc", "nxiyi", multiply_adds, dotc),
    row<Complex>("cdotu", "nxiyi", multiply_adds, dot),   row<float>("saxpy", "naxiyi", multiply_adds, axpy),
    row<Complex>("caxpy", "naxiyi", multiply_adds, axpy), row<float>("snrm2", "nxi", nrm2_work, nrm2),
    row<Complex>("scnrm2", "nxi", nrm2_work, nrm2),       row<float>("isamax", "nxi", iamax_work, iamax),
    row<Complex>("icamax", "nxi", iamax_work, iamax),     row<float>("sscal", "naxi", scal_work, scal),
    row<Complex>("cscal", "naxi", scal_work, scal),       row<float>("scopy", "nxiyi", copy_work, copy),
    row<Complex>("ccopy", "nxiyi", copy_work, copy),      row<float>("sasum", "nxi", asum_work, asum),
    row<Complex>("scasum", "nxi", asum_work, asum),       row<float>("srot", "nxiyics", rot_work, rot),
    row<float>("sswap", "nxiyi", swap_work, swap),        row<Complex>("cswap", "nxiyi", swap_work, swap),
};

} // namespace

std::vector<Case> vector_cases(const CaseOptions& options) {
    std::vector<Case> cases;
    for (int threads : options.threads)
        for (const Row& row : rows)
            for (int n : {4, 16, 64, 100, 1000, 100'000, 10'000'000}) {
                if (options.quick ? n != 100 || threads > 1 : threads > 1 && n < 1000) // nobody divides short ones
                    continue;
                cases.push_back({fmt::format("{}/{}/t{}", row.name, n, threads), threads, row.work(n, row.isComplex),
                                 row.name, n, [&row, n] { return row.prepare(row.name, row.letters, n); }});
            }
    return cases;
}

} // namespace bench
