// SGETRF, CGETRF: LU factorization with partial pivoting of square matrices.
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <vector>

#include "case.hpp"
#include "routine.hpp"

namespace bench {
namespace {

template <class T>
class GetrfWorkload : public Workload {
public:
    GetrfWorkload(const char* name, int n)
        : n_(n), before_(n, n, 1), a_(n, n, 1), pivots_(std::size_t(n)),
          routine_(name, "mnaxpi",
                   {{'m', &n_}, {'n', &n_}, {'a', a_.data.get()}, {'x', &n_}, {'p', pivots_.data()}, {'i', &info_}}) {}

    // By P L U, at some elements of the matrix.
    Verdict judge(const Library& library) override {
        if (!routine_.once(library, [this] { a_.restore(before_), info_ = -1; }))
            return Verdict::absent;
        if (info_ != 0)
            return Verdict::wrong;
        std::vector<int> row(pivots_.size()); // of A, that is row i of P^T A
        for (int i = 0; i < n_; ++i)
            row[std::size_t(i)] = i;
        for (std::size_t i = 0; i < row.size(); ++i)
            if (pivots_[i] < 1 || pivots_[i] > n_)
                return Verdict::wrong;
            else
                std::swap(row[i], row[std::size_t(pivots_[i] - 1)]);
        std::minstd_rand generator(4);
        for (int sample = 0; sample < 200; ++sample) {
            const int i = int(generator() % unsigned(n_)), j = int(generator() % unsigned(n_));
            Wide sum = 0;
            double magnitude = 0;
            for (int l = 0; l <= std::min(i, j); ++l) {
                const Wide product = (l == i ? Wide(1) : Wide(a_(i, l))) * Wide(a_(l, j));
                sum += product;
                magnitude += std::abs(product);
            }
            // Holds for every order of elimination, fused or not.
            const double bound = (n_ + 2) * double(std::numeric_limits<float>::epsilon()) * magnitude;
            if (!(std::abs(sum - Wide(before_(row[std::size_t(i)], j))) <= bound))
                return Verdict::wrong;
        }
        return Verdict::correct;
    }

    void run(benchmark::State& state, const Library& library) override {
        routine_.repeat(state, library, [&] { a_.restore(before_); });
    }

private:
    int n_, info_ = 0;
    Operand<T> before_, a_;
    std::vector<int> pivots_;
    Routine routine_;
};

template <class T>
void add_cases(std::vector<Case>& cases, const char* name, const CaseOptions& options) {
    for (int threads : options.threads)
        for (int n : {64, 96, 128, 256, 512, 1024, 2048})
            if (!options.quick || n == 96)
                cases.push_back({fmt::format("{}/{}/t{}", name, n, threads), threads, getrf_work(n, isComplex<T>), name,
                                 n, [=] { return std::make_unique<GetrfWorkload<T>>(name, n); }});
}

} // namespace

std::vector<Case> getrf_cases(const CaseOptions& options) {
    std::vector<Case> cases;
    add_cases<float>(cases, "sgetrf", options);
    add_cases<Complex>(cases, "cgetrf", options);
    return cases;
}

} // namespace bench
