// Band matrices: LU with row interchanges, solutions from it, and Cholesky.
#include <fmt/format.h>

#include "case.hpp"
#include "routine.hpp"
#include "sized.hpp"

namespace bench {
namespace {

enum class Task { factor, solve, factorDefinite };

// Arguments: T an option, U the triangle, n the order, k the diagonals on a side, r the right-hand sides, A the band
// and l its leading dimension, p the interchanges, B the right-hand sides, i info.
struct Row {
    const char *name, *letters, *options;
    Task task;
};
constexpr Row rows[] = {{"sgbtrf", "nnkkAlpi", " ", Task::factor},
                        {"sgbtrs", "TnkkrAlpBni", "NT", Task::solve},
                        {"spbtrf", "UnkAli", "UL", Task::factorDefinite}};

Work work_of(const Row& row, int n, int k, int count) {
    return row.task == Task::factor  ? gbtrf_work(n, k, k)
           : row.task == Task::solve ? gbtrs_work(n, k, k, count)
                                     : pbtrf_work(n, k);
}

// The diagonal stands in row `diagonal` of the array.
class BandWorkload : public Workload {
public:
    BandWorkload(const Row& row, char option, int n, int k, int count)
        : row_(row), option_(option), n_(n), k_(k), count_(count),
          diagonal_(symmetric() ? (option == 'U' ? k : 0) : 2 * k), given_(symmetric() ? k + 1 : 3 * k + 1, n, 1),
          a_(given_.rows, n, 1), rightSides_(n, count, 2), b_(n, count, 2), pivots_(std::size_t(n)),
          routine_(row.name, row.letters,
                   {{'T', &option_},
                    {'U', &option_},
                    {'n', &n_},
                    {'k', &k_},
                    {'r', &count_},
                    {'A', a_.data.get()},
                    {'l', &a_.rows},
                    {'p', pivots_.data()},
                    {'B', b_.data.get()},
                    {'i', &info_}}) {
        if (symmetric())
            for (int j = 0; j < n; ++j)
                given_(diagonal_, j) = float(2 * k + 1);
        if (row.task == Task::solve)
            make_factors();
        a_.restore(given_);
    }

    // By products of vectors with the matrix and with its factors.
    Verdict judge(const Library& library) override {
        if (!routine_.once(library, [this] { restore(), info_ = -1; }))
            return Verdict::absent;
        const double roundings = 3 * k_ + 8;
        bool good = info_ == 0 && pivots_are_rows();
        if (row_.task == Task::solve) {
            for (int j = 0; good && j < count_; j += 9)
                good = agree(lu_times(given_, column(b_, j)), column(rightSides_, j), roundings);
        } else if (good) {
            const SizedVector x = column(rightSides_, 0);
            good = agree(matrix_times(given_, x), symmetric() ? cholesky_times(a_, x) : lu_times(a_, x), roundings);
        }
        return good ? Verdict::correct : Verdict::wrong;
    }

    void run(benchmark::State& state, const Library& library) override {
        routine_.repeat(state, library, [&] { restore(); });
    }

private:
    void restore() { row_.task == Task::solve ? b_.restore(rightSides_) : a_.restore(given_); }

    bool symmetric() const { return row_.task == Task::factorDefinite; }
    int last(int j, int diagonals) const { return std::min(j + diagonals, n_ - 1); }
    // Element (i, j) of the band.
    Wide element(const Operand<float>& a, int i, int j) const { return a(diagonal_ + i - j, j); }
    // Of U where i <= j, or of the transpose of L there.
    Wide symmetric_element(const Operand<float>& a, int i, int j) const {
        return option_ == 'U' ? element(a, i, j) : element(a, j, i);
    }

    // Interchanges, small multipliers, and a triangle with a large diagonal.
    void make_factors() {
        std::minstd_rand generator(4);
        for (int j = 0; j < n_; ++j) {
            for (int i = 0; i < given_.rows; ++i)
                given_(i, j) *= 1 / float(k_);
            given_(diagonal_, j) = 1;
            pivots_[std::size_t(j)] = 1 + j + int(generator() % unsigned(last(j, k_) - j + 1));
        }
    }
    bool pivots_are_rows() const {
        for (int j = 0; j < n_ && !symmetric(); ++j)
            if (pivots_[std::size_t(j)] <= j || pivots_[std::size_t(j)] > last(j, k_) + 1)
                return false;
        return true;
    }

    SizedVector matrix_times(const Operand<float>& a, const SizedVector& x) const {
        SizedVector y(x.size());
        for (int j = 0; j < n_; ++j)
            for (int i = symmetric() ? j : std::max(0, j - k_); i <= last(j, k_); ++i) {
                const Sized value = symmetric() ? symmetric_element(a, j, i) : element(a, i, j);
                y[std::size_t(i)] += value * x[std::size_t(j)];
                if (symmetric() && i != j)
                    y[std::size_t(j)] += value * x[std::size_t(i)];
            }
        return y;
    }
    SizedVector cholesky_times(const Operand<float>& factor, const SizedVector& x) const {
        SizedVector product(x.size()), y(x.size());
        for (int i = 0; i < n_; ++i)
            for (int j = i; j <= last(i, k_); ++j)
                product[std::size_t(i)] += Sized(symmetric_element(factor, i, j)) * x[std::size_t(j)];
        for (int i = 0; i < n_; ++i)
            for (int j = i; j <= last(i, k_); ++j)
                y[std::size_t(j)] += Sized(symmetric_element(factor, i, j)) * product[std::size_t(i)];
        return y;
    }
    // U x, and then the eliminations and interchanges undone; or the transpose of all this.
    SizedVector lu_times(const Operand<float>& factors, SizedVector x) const {
        const bool direct = row_.task == Task::factor || option_ == 'N';
        if (direct) {
            x = upper_times(factors, x, true);
            for (int j = n_ - 2; j >= 0; --j) {
                for (int i = j + 1; i <= last(j, k_); ++i)
                    x[std::size_t(i)] += Sized(element(factors, i, j)) * x[std::size_t(j)];
                std::swap(x[std::size_t(j)], x[std::size_t(pivots_[std::size_t(j)] - 1)]);
            }
            return x;
        }
        for (int j = 0; j < n_ - 1; ++j) {
            std::swap(x[std::size_t(j)], x[std::size_t(pivots_[std::size_t(j)] - 1)]);
            for (int i = j + 1; i <= last(j, k_); ++i)
                x[std::size_t(j)] += Sized(element(factors, i, j)) * x[std::size_t(i)];
        }
        return upper_times(factors, x, false);
    }
    SizedVector upper_times(const Operand<float>& factors, const SizedVector& x, bool direct) const {
        SizedVector y(x.size());
        for (int i = 0; i < n_; ++i)
            for (int j = i; j <= last(i, 2 * k_); ++j)
                y[std::size_t(direct ? i : j)] += Sized(element(factors, i, j)) * x[std::size_t(direct ? j : i)];
        return y;
    }

    const Row& row_;
    char option_;
    int n_, k_, count_, diagonal_, info_ = 0;
    Operand<float> given_, a_, rightSides_, b_;
    std::vector<int> pivots_;
    Routine routine_;
};

void add_case(std::vector<Case>& cases, const Row& row, char option, int n, int k, int count, int threads) {
    const std::string options = option == ' ' ? "" : fmt::format("/{}", option);
    const std::string size =
        row.task == Task::solve ? fmt::format("{}k{}x{}", n, k, count) : fmt::format("{}k{}", n, k);
    cases.push_back({fmt::format("{}{}/{}/t{}", row.name, options, size, threads), threads, work_of(row, n, k, count),
                     "", n, [=, &row] { return std::make_unique<BandWorkload>(row, option, n, k, count); }});
}

} // namespace

std::vector<Case> band_cases(const CaseOptions& options) {
    std::vector<Case> cases;
    for (const int threads : options.threads)
        for (const Row& row : rows)
            for (const char option : std::string(row.options)) {
                if (options.quick)
                    add_case(cases, row, option, 300, 20, 3, threads);
                else
                    for (const int k : {8, 32, 100, 200})
                        for (const int count : {1, 64})
                            if (row.task == Task::solve || count == 1)
                                add_case(cases, row, option, 20000, k, count, threads);
            }
    return cases;
}

} // namespace bench
