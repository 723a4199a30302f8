// Cholesky of positive definite matrices, and solutions and inverses from the factor.
#include <fmt/format.h>

#include "case.hpp"
#include "routine.hpp"
#include "sized.hpp"

namespace bench {
namespace {

enum class Task { factor, solve, invert };

// Arguments: U the triangle, n the order and leading dimensions, r the right-hand sides, A and B the matrices, i info.
struct Row {
    const char *name, *letters;
    Task task;

    bool isComplex() const { return name[0] == 'c'; }
};
constexpr Row rows[] = {{"spotrf", "UnAni", Task::factor},   {"cpotrf", "UnAni", Task::factor},
                        {"spotrs", "UnrAnBni", Task::solve}, {"cpotrs", "UnrAnBni", Task::solve},
                        {"spotri", "UnAni", Task::invert},   {"cpotri", "UnAni", Task::invert}};

Work work_of(const Row& row, int n, int count) {
    return row.task == Task::factor  ? potrf_work(n, row.isComplex())
           : row.task == Task::solve ? potrs_work(n, count, row.isComplex())
                                     : potri_work(n, row.isComplex());
}

template <class T>
class CholeskyWorkload : public Workload {
public:
    CholeskyWorkload(const Row& row, char uplo, int n, int count)
        : row_(row), uplo_(uplo), n_(n), count_(count), given_(n, n, 1), a_(n, n, 1), rightSides_(n, count, 2),
          b_(n, count, 2),
          routine_(
              row.name, row.letters,
              {{'U', &uplo_}, {'n', &n_}, {'r', &count_}, {'A', a_.data.get()}, {'B', b_.data.get()}, {'i', &info_}}) {
        // Definite, or the factor of a matrix that is near the unit matrix.
        for (int j = 0; j < n; ++j) {
            if (row.task != Task::factor)
                for (int i = 0; i < n; ++i)
                    given_(i, j) *= 1 / float(n);
            given_(j, j) = row.task == Task::factor ? float(n) : 1;
        }
        a_.restore(given_);
    }

    // By products of vectors with the matrix and with its factor.
    Verdict judge(const Library& library) override {
        if (!routine_.once(library, [this] { restore(), info_ = -1; }))
            return Verdict::absent;
        bool good = info_ == 0;
        const double roundings = n_ + 8;
        if (row_.task == Task::solve) {
            for (int j = 0; j < count_; j += 9)
                good = good && agree(factored_times(given_, column(b_, j)), column(rightSides_, j), roundings);
        } else {
            const SizedVector x = column(rightSides_, 0);
            good =
                good && (row_.task == Task::factor ? agree(matrix_times(given_, x), factored_times(a_, x), roundings)
                                                   : agree(factored_times(given_, matrix_times(a_, x)), x, roundings));
        }
        return good ? Verdict::correct : Verdict::wrong;
    }

    void run(benchmark::State& state, const Library& library) override {
        routine_.repeat(state, library, [&] { restore(); });
    }

private:
    void restore() { row_.task == Task::solve ? b_.restore(rightSides_) : a_.restore(given_); }

    bool upper() const { return uplo_ == 'U'; }
    // Of U where i <= j, or of the adjoint of L there.
    Wide element(const Operand<T>& a, int i, int j) const { return upper() ? Wide(a(i, j)) : std::conj(Wide(a(j, i))); }

    SizedVector matrix_times(const Operand<T>& a, const SizedVector& x) const {
        SizedVector y(x.size());
        for (int j = 0; j < n_; ++j)
            for (int i = 0; i <= j; ++i) {
                const Sized above = element(a, i, j), below = std::conj(above.value);
                y[std::size_t(i)] += above * x[std::size_t(j)];
                if (i != j)
                    y[std::size_t(j)] += below * x[std::size_t(i)];
            }
        return y;
    }
    SizedVector factored_times(const Operand<T>& factor, const SizedVector& x) const {
        SizedVector product(x.size()), y(x.size());
        for (int j = 0; j < n_; ++j)
            for (int i = 0; i <= j; ++i)
                product[std::size_t(i)] += Sized(element(factor, i, j)) * x[std::size_t(j)];
        for (int j = 0; j < n_; ++j)
            for (int i = 0; i <= j; ++i)
                y[std::size_t(j)] += Sized(std::conj(element(factor, i, j))) * product[std::size_t(i)];
        return y;
    }

    const Row& row_;
    char uplo_;
    int n_, count_, info_ = 0;
    Operand<T> given_, a_, rightSides_, b_;
    Routine routine_;
};

void add_case(std::vector<Case>& cases, const Row& row, char uplo, int n, int count, int threads) {
    const std::string size = row.task == Task::solve ? fmt::format("{}x{}", n, count) : fmt::format("{}", n);
    cases.push_back({fmt::format("{}/{}/{}/t{}", row.name, uplo, size, threads), threads, work_of(row, n, count),
                     row.task == Task::factor ? fmt::format("{}/{}", row.name, uplo) : "", n,
                     [=, &row]() -> std::unique_ptr<Workload> {
                         if (row.isComplex())
                             return std::make_unique<CholeskyWorkload<Complex>>(row, uplo, n, count);
                         return std::make_unique<CholeskyWorkload<float>>(row, uplo, n, count);
                     }});
}

} // namespace

std::vector<Case> cholesky_cases(const CaseOptions& options) {
    std::vector<Case> cases;
    for (const int threads : options.threads)
        for (const Row& row : rows)
            for (const char uplo : {'U', 'L'}) {
                if (options.quick)
                    add_case(cases, row, uplo, 150, 3, threads);
                else if (row.task == Task::factor)
                    for (const int n : {16, 32, 64, 128, 256, 512, 1024, 2048})
                        add_case(cases, row, uplo, n, 1, threads);
                else
                    for (const int n : {64, 256, 1024})
                        for (const int count : {1, 64})
                            if (row.task == Task::solve || count == 1)
                                add_case(cases, row, uplo, n, count, threads);
            }
    return cases;
}

} // namespace bench
