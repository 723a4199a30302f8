// Singular values: reduction to bidiagonal form, QR iteration on bidiagonal matrices, and the whole decomposition.
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <random>
#include <vector>

#include "case.hpp"
#include "routine.hpp"

namespace bench {
namespace {

// Arguments: D a job, U a triangle, m and n the sizes and r the smaller one, A the matrix, S the values and E the
// elements beside them, B and C the vectors of either side, P and Q factors of reflectors, W, R and I work arrays, w
// the length of the first, z zero, o one, i info.
struct Row {
    const char *name, *letters;
    char job; // of the decomposition; '-' of the others

    bool isComplex() const { return name[0] == 'c'; }
    bool iterates() const { return name[1] == 'b'; }
    bool hasVectors() const { return iterates() || job == 'S' || job == 'A'; }
};
constexpr Row rows[] = {
    {"sgebrd", "mnAmSEPQWwi", '-'},     {"cgebrd", "mnAmSEPQWwi", '-'},    {"sbdsqr", "UnnnzSECrBmAoWi", '-'},
    {"sgesdd", "DmnAmSBmCvWwIi", 'N'},  {"sgesdd", "DmnAmSBmCvWwIi", 'S'}, {"sgesdd", "DmnAmSBmCvWwIi", 'A'},
    {"cgesdd", "DmnAmSBmCvWwRIi", 'S'},
};

template <class T>
class SingularWorkload : public Workload {
public:
    SingularWorkload(const Row& row, int m, int n)
        : row_(row), m_(m), n_(n), smaller_(std::min(m, n)), rowsOfV_(row.job == 'A' ? n : smaller_), given_(m, n, 1),
          a_(m, n, 1), u_(m, row.job == 'A' ? m : smaller_, 2), vt_(rowsOfV_, n, 3), values_(std::size_t(smaller_)),
          beside_(values_), p_(values_.size()), q_(values_.size()),
          work_(4 * std::size_t(smaller_) * std::size_t(smaller_) + 128 * std::size_t(m + n)),
          reals_(row.isComplex() ? work_.size() * 2 : 0), ints_(8 * values_.size()), length_(int(work_.size())),
          routine_(row.name, row.letters,
                   {{'D', &row.job},
                    {'U', "U"},
                    {'m', &m_},
                    {'n', &n_},
                    {'r', &smaller_},
                    {'v', &rowsOfV_},
                    {'z', &zero_},
                    {'o', &one_},
                    {'A', a_.data.get()},
                    {'B', u_.data.get()},
                    {'C', vt_.data.get()},
                    {'S', values_.data()},
                    {'E', beside_.data()},
                    {'P', p_.data()},
                    {'Q', q_.data()},
                    {'W', work_.data()},
                    {'R', reals_.data()},
                    {'I', ints_.data()},
                    {'w', &length_},
                    {'i', &info_}}) {}

    // By elements of U S V' where there are vectors, else by the sum of squares, which no step changes.
    Verdict judge(const Library& library) override {
        if (!routine_.once(library, [this] { restore(), info_ = -1; }))
            return Verdict::absent;
        return info_ == 0 && (row_.hasVectors() ? agrees_at_samples() : agrees_in_size()) ? Verdict::correct
                                                                                          : Verdict::wrong;
    }
    void run(benchmark::State& state, const Library& library) override {
        routine_.repeat(state, library, [&] { restore(); });
    }

private:
    void restore() {
        if (!row_.iterates())
            return a_.restore(given_);
        for (int i = 0; i < n_; ++i) {
            values_[std::size_t(i)] = diagonal(i);
            beside_[std::size_t(i)] = beside(i);
            for (int j = 0; j < n_; ++j)
                u_(i, j) = vt_(i, j) = i == j ? 1 : 0;
        }
    }
    // The bidiagonal matrix: two rows of the one given.
    float diagonal(int i) const { return float(std::real(Wide(given_(0, i)))); }
    float beside(int i) const { return float(std::real(Wide(given_(1, i)))); }

    Wide element(int i, int j) const {
        if (!row_.iterates())
            return given_(i, j);
        return i == j ? diagonal(i) : i + 1 == j ? beside(i) : 0;
    }
    bool agrees_at_samples() const {
        const double bound = 4 * (m_ + n_) * double(std::numeric_limits<float>::epsilon()) * values_[0];
        std::minstd_rand generator(4);
        for (int sample = 0; sample < 200; ++sample) {
            const int i = int(generator() % unsigned(m_)), j = int(generator() % unsigned(n_));
            Wide sum = -element(i, j);
            for (int k = 0; k < smaller_; ++k)
                sum += Wide(u_(i, k)) * double(values_[std::size_t(k)]) * Wide(vt_(k, j));
            if (!(std::abs(sum) <= bound))
                return false;
        }
        return true;
    }
    bool agrees_in_size() const {
        double size = 0, found = 0;
        for (std::size_t k = 0; k < given_.count; ++k)
            size += std::norm(Wide(given_.data[k]));
        for (std::size_t k = 0; k < values_.size(); ++k) {
            found += double(values_[k]) * values_[k];
            if (row_.job == '-' && k + 1 < values_.size())
                found += double(beside_[k]) * beside_[k];
        }
        return std::abs(found - size) <= 1e-4 * size;
    }

    const Row& row_;
    int m_, n_, smaller_, rowsOfV_, zero_ = 0, one_ = 1, info_ = 0;
    Operand<T> given_, a_, u_, vt_;
    std::vector<float> values_, beside_;
    std::vector<T> p_, q_, work_;
    std::vector<float> reals_;
    std::vector<int> ints_;
    int length_;
    Routine routine_;
};

void add_case(std::vector<Case>& cases, const Row& row, int m, int n, int threads) {
    const std::string job = row.job == '-' ? "" : fmt::format("/{}", row.job),
                      size = m == n ? fmt::format("{}", n) : fmt::format("{}x{}", m, n);
    const Work work = row.iterates() ? bdsqr_work(n) : gesdd_work(m, n, row.hasVectors(), row.isComplex());
    cases.push_back({fmt::format("{}{}/{}/t{}", row.name, job, size, threads), threads, work,
                     m == n ? row.name + job : "", n, [=, &row]() -> std::unique_ptr<Workload> {
                         if (row.isComplex())
                             return std::make_unique<SingularWorkload<Complex>>(row, m, n);
                         return std::make_unique<SingularWorkload<float>>(row, m, n);
                     }});
}

} // namespace

std::vector<Case> singular_cases(const CaseOptions& options) {
    std::vector<Case> cases;
    for (const int threads : options.threads)
        for (const Row& row : rows) {
            for (const int n : {4, 8, 16, 32, 100, 200, 500, 1000})
                if (!options.quick || n == 32)
                    add_case(cases, row, n, n, threads);
            if (row.job == 'S' && !options.quick)
                for (const auto& [m, n] : {std::pair{4000, 200}, {200, 4000}})
                    add_case(cases, row, m, n, threads);
        }
    return cases;
}

} // namespace bench
