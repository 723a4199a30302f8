// QR factorization, with and without column pivoting; Q applied and generated.
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <vector>

#include "case.hpp"
#include "routine.hpp"

namespace bench {
namespace {

enum class Task { factor, pivot, apply, generate };

// Arguments: U the side, T the option, m n the sizes, k the reflectors, A B the matrices, l L their leading dimensions,
// p the interchanges, t the factors tau, w x the work and its length, r more work, i info.
struct Row {
    const char *name, *letters;
    Task task;

    bool isComplex() const { return name[0] == 'c'; }
};
constexpr Row rows[] = {{"sgeqrf", "mnAltwxi", Task::factor},     {"cgeqrf", "mnAltwxi", Task::factor},
                        {"sgeqp3", "mnAlptwxi", Task::pivot},     {"cgeqp3", "mnAlptwxri", Task::pivot},
                        {"sormqr", "UTmnkAltBLwxi", Task::apply}, {"cunmqr", "UTmnkAltBLwxi", Task::apply},
                        {"sorgqr", "mnkAltwxi", Task::generate},  {"cungqr", "mnkAltwxi", Task::generate}};

// What is factored, applied to, or generated is m x n; an application is from the left.
struct Shape {
    int m, n, k;
};

Work work_of(const Row& row, const Shape& s) {
    return row.task == Task::apply      ? ormqr_work(s.m, s.n, s.k, row.isComplex())
           : row.task == Task::generate ? orgqr_work(s.m, s.n, s.k, row.isComplex())
                                        : geqrf_work(s.m, s.n, row.isComplex());
}

using WideVector = std::vector<Wide>;

double norm(const WideVector& x) {
    double sum = 0;
    for (const Wide& element : x)
        sum += std::norm(element);
    return std::sqrt(sum);
}

template <class T>
class QrWorkload : public Workload {
public:
    QrWorkload(const Row& row, char option, Shape shape)
        : row_(row), option_(option), shape_(shape), given_(shape.m, applies() ? shape.k : shape.n, 1),
          a_(shape.m, applies() ? 0 : shape.n, 1), c_(shape.m, applies() ? shape.n : 0, 2),
          result_(shape.m, applies() ? shape.n : 0, 2), tau_(std::size_t(shape.k)), pivots_(std::size_t(shape.n)),
          norms_(2 * pivots_.size()) {
        if (applies() || row.task == Task::generate)
            make_reflectors();
    }

    // By a vector that Q, R and the matrix are multiplied with.
    Verdict judge(const Library& library) override {
        const Routine routine = prepared(library);
        if (!routine.entry(library))
            return Verdict::absent;
        restore();
        info_ = -1;
        routine.template bind<void>(library, [](auto call) { call(); });
        return info_ == 0 && right() ? Verdict::correct : Verdict::wrong;
    }

    void run(benchmark::State& state, const Library& library) override {
        prepared(library).repeat(state, library, [&] { restore(); });
    }

private:
    bool applies() const { return row_.task == Task::apply; }

    // With as much work as the library asks for.
    Routine prepared(const Library& library) {
        work_.assign(1, T());
        length_ = -1;
        if (bound().entry(library))
            bound().template bind<void>(library, [](auto call) { call(); });
        length_ = std::max(1, static_cast<int>(std::real(work_[0])));
        work_.assign(std::size_t(length_), T());
        return bound();
    }
    Routine bound() {
        return Routine(row_.name, row_.letters,
                       {{'U', "L"},
                        {'T', &option_},
                        {'m', &shape_.m},
                        {'n', &shape_.n},
                        {'k', &shape_.k},
                        {'A', (applies() ? given_ : a_).data.get()},
                        {'l', &shape_.m},
                        {'B', result_.data.get()},
                        {'L', &shape_.m},
                        {'p', pivots_.data()},
                        {'t', tau_.data()},
                        {'w', work_.data()},
                        {'x', &length_},
                        {'r', norms_.data()},
                        {'i', &info_}});
    }
    void restore() {
        if (applies())
            return result_.restore(c_);
        a_.restore(given_);
        std::fill(pivots_.begin(), pivots_.end(), 0);
    }

    // Vectors v as random as any other columns, each with the factor that makes I - tau v v^H a reflection.
    void make_reflectors() {
        for (int j = 0; j < shape_.k; ++j) {
            double sum = 1;
            for (int i = j + 1; i < shape_.m; ++i)
                sum += std::norm(Wide(given_(i, j)));
            tau_[std::size_t(j)] = T(float(2 / sum));
        }
    }

    bool right() const {
        if (applies())
            return agree(q_times(given_, wide_column(c_, 0), option_ != 'N'), wide_column(result_, 0));
        const WideVector x = wide_column(given_, 0, shape_.n);
        if (row_.task == Task::generate) {
            WideVector padded = x;
            padded.resize(std::size_t(shape_.m));
            return agree(q_times(given_, padded, false), matrix_times(a_, x, false));
        }
        WideVector given = x;
        for (std::size_t j = 0; j < x.size() && row_.task == Task::pivot; ++j) {
            if (pivots_[j] < 1 || pivots_[j] > shape_.n)
                return false;
            given[std::size_t(pivots_[j] - 1)] = x[j];
        }
        return agree(q_times(a_, matrix_times(a_, x, true), false), matrix_times(given_, given, false));
    }
    bool agree(const WideVector& x, WideVector y) const {
        const double size = norm(x);
        for (std::size_t i = 0; i < y.size(); ++i)
            y[i] -= x[i];
        return norm(y) <= (shape_.k + 8) * double(std::numeric_limits<float>::epsilon()) * size;
    }

    // Its first elements, as often as needed.
    WideVector wide_column(const Operand<T>& a, int j, int count = 0) const {
        WideVector x(std::size_t(count > 0 ? count : a.rows));
        for (std::size_t i = 0; i < x.size(); ++i)
            x[i] = Wide(a(int(i) % a.rows, j));
        return x;
    }
    // The matrix, or what is on and above its diagonal.
    WideVector matrix_times(const Operand<T>& a, const WideVector& x, bool triangle) const {
        WideVector y(std::size_t(shape_.m));
        for (int j = 0; j < shape_.n; ++j)
            for (int i = 0; i < (triangle ? std::min(j + 1, shape_.m) : shape_.m); ++i)
                y[std::size_t(i)] += Wide(a(i, j)) * x[std::size_t(j)];
        return y;
    }
    // Q or its adjoint, with the reflectors below the diagonal of `v`.
    WideVector q_times(const Operand<T>& v, WideVector x, bool adjoint) const {
        for (int step = 0; step < shape_.k; ++step) {
            const int j = adjoint ? step : shape_.k - 1 - step;
            const Wide tau = Wide(tau_[std::size_t(j)]);
            Wide product = x[std::size_t(j)];
            for (int i = j + 1; i < shape_.m; ++i)
                product += std::conj(Wide(v(i, j))) * x[std::size_t(i)];
            product *= adjoint ? std::conj(tau) : tau;
            x[std::size_t(j)] -= product;
            for (int i = j + 1; i < shape_.m; ++i)
                x[std::size_t(i)] -= product * Wide(v(i, j));
        }
        return x;
    }

    const Row& row_;
    char option_;
    Shape shape_;
    int info_ = 0, length_ = 0;
    Operand<T> given_, a_, c_, result_;
    std::vector<T> tau_, work_;
    std::vector<int> pivots_;
    std::vector<float> norms_;
};

std::string text_of(const Shape& s, Task task) {
    return task == Task::apply ? fmt::format("{}x{}k{}", s.m, s.n, s.k)
           : s.m == s.n        ? fmt::format("{}", s.n)
                               : fmt::format("{}x{}", s.m, s.n);
}

void add_case(std::vector<Case>& cases, const Row& row, char option, const Shape& shape, int threads) {
    const std::string title = option == ' ' ? row.name : fmt::format("{}/{}", row.name, option);
    const bool square = shape.m == shape.n && shape.n == shape.k;
    cases.push_back({fmt::format("{}/{}/t{}", title, text_of(shape, row.task), threads), threads, work_of(row, shape),
                     square ? title : "", shape.n, [=, &row]() -> std::unique_ptr<Workload> {
                         if (row.isComplex())
                             return std::make_unique<QrWorkload<Complex>>(row, option, shape);
                         return std::make_unique<QrWorkload<float>>(row, option, shape);
                     }});
}

} // namespace

std::vector<Case> qr_cases(const CaseOptions& options) {
    std::vector<Case> cases;
    for (const int threads : options.threads)
        for (const Row& row : rows)
            for (const char option : {'N', row.isComplex() ? 'C' : 'T'}) {
                if (row.task != Task::apply && option != 'N')
                    continue;
                const auto add = [&](const Shape& shape) {
                    add_case(cases, row, row.task == Task::apply ? option : ' ', shape, threads);
                };
                if (options.quick) {
                    add({150, 70, 70});
                    continue;
                }
                for (const int n : {16, 32, 64, 128, 256, 512, 1024, 2048})
                    if (row.task != Task::pivot || n < 2048)
                        add({n, n, n});
                if (row.task == Task::apply) {
                    add({2048, 2048, 256});
                    continue;
                }
                for (const Shape& tall : {Shape{100'000, 16, 16}, {20'000, 64, 64}, {4096, 256, 256}})
                    add(tall);
            }
    return cases;
}

} // namespace bench
