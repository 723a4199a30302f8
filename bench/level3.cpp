// BLAS level 3 but GEMM: squares, and the few right-hand sides that factorizations and their solves have.
#include <cmath>
#include <fmt/format.h>
#include <limits>

#include "case.hpp"
#include "routine.hpp"

namespace bench {
namespace {

// A triangular solve or product in place of B, of m x n. The options are side, uplo, trans and diag, a word for each
// case.
struct TriangularRow {
    const char *name, *options;
    bool solve;

    bool isComplex() const { return name[0] == 'c'; }
};
constexpr const char *realOptions = "LLNN LUTN RUNN RLTN", *complexOptions = "LLNN LUCN RUNN RLCN";
constexpr TriangularRow rows[] = {{"strsm", realOptions, true},
                                  {"ctrsm", complexOptions, true},
                                  {"strmm", realOptions, false},
                                  {"ctrmm", complexOptions, false}};

template <class T>
class TriangularWorkload : public Workload {
public:
    // `order` of A, with `count` right-hand sides: columns of B if A stands on the left, else rows.
    TriangularWorkload(const TriangularRow& row, const std::string& options, int order, int count)
        : row_(row), options_(options), order_(order), m_(left() ? order : count), n_(left() ? count : order),
          a_(order, order, 1), b_(m_, n_, 2), routine_(row.name, "VUTDmnaAlBk",
                                                       {{'V', options_.data()},
                                                        {'U', options_.data() + 1},
                                                        {'T', options_.data() + 2},
                                                        {'D', options_.data() + 3},
                                                        {'m', &m_},
                                                        {'n', &n_},
                                                        {'a', &alpha_},
                                                        {'A', a_.data.get()},
                                                        {'l', &a_.rows},
                                                        {'B', b_.data.get()},
                                                        {'k', &b_.rows}}) {
        make_involution();
    }

    Verdict judge(const Library& library) override {
        if (!routine_.entry(library))
            return Verdict::absent;
        b_.fill();
        const Operand<T> before(m_, n_, b_.seed);
        routine_.bind<void>(library, [](auto call) { call(); });
        // A solution is judged by its product with the matrix.
        const Operand<T>&factor = row_.solve ? b_ : before, &product = row_.solve ? before : b_;
        std::minstd_rand generator(4);
        bool good = true;
        for (int sample = 0; sample < 100; ++sample) {
            const int i = int(generator() % unsigned(m_)), j = int(generator() % unsigned(n_));
            Wide sum = 0;
            double magnitude = 0;
            for (int l = 0; l < order_; ++l) {
                const Wide term = left() ? effective(i, l) * Wide(factor(l, j)) : Wide(factor(i, l)) * effective(l, j);
                sum += term;
                magnitude += std::abs(term);
            }
            const double bound = (order_ + 2) * double(std::numeric_limits<float>::epsilon()) * magnitude;
            good = good && std::abs(Wide(product(i, j)) - sum) <= bound;
        }
        return good ? Verdict::correct : Verdict::wrong;
    }

    void run(benchmark::State& state, const Library& library) override {
        b_.fill();
        routine_.repeat<void>(state, library);
    }

private:
    // B goes on from call to call, so A is its own inverse: 1 and -1 in turn on the diagonal, and beside it nothing but
    // links from odd elements to even ones.
    void make_involution() {
        for (int j = 0; j < order_; ++j)
            for (int i = 0; i < order_; ++i)
                if (is_stored(i, j) && (i == j || i % 2 == 1 || j % 2 == 0))
                    a_(i, j) = T(i != j ? 0.0F : i % 2 == 0 ? 1.0F : -1.0F);
    }

    bool left() const { return options_[0] == 'L'; }
    bool is_stored(int i, int j) const { return options_[1] == 'U' ? i <= j : i >= j; }
    Wide element(int i, int j) const { return is_stored(i, j) ? Wide(a_(i, j)) : 0; }
    // Of op(A).
    Wide effective(int i, int j) const {
        const char trans = options_[2];
        return trans == 'N' ? element(i, j) : trans == 'T' ? element(j, i) : std::conj(element(j, i));
    }

    const TriangularRow& row_;
    std::string options_;
    int order_, m_, n_;
    Complex alpha_{1}; // a real routine reads the real part
    Operand<T> a_, b_;
    Routine routine_;
};

void add_triangular_cases(std::vector<Case>& cases, const TriangularRow& row, const std::string& options,
                          const CaseOptions& settings, int threads) {
    const std::string family = fmt::format("{}/{}", row.name, options);
    const auto add = [&](int order, int count) {
        const bool square = order == count;
        const std::string size = square ? fmt::format("{}", order) : fmt::format("{}x{}", order, count);
        cases.push_back({fmt::format("{}/{}/t{}", family, size, threads), threads,
                         triangular_work(order, count, row.isComplex()), square ? family : "", order,
                         [&row, options, order, count]() -> std::unique_ptr<Workload> {
                             if (row.isComplex())
                                 return std::make_unique<TriangularWorkload<Complex>>(row, options, order, count);
                             return std::make_unique<TriangularWorkload<float>>(row, options, order, count);
                         }});
    };
    if (settings.quick) {
        if (threads == 1)
            add(96, 96);
        return;
    }
    for (int n : {64, 128, 256, 512, 1024, 2048})
        add(n, n);
    for (int n : {64, 512, 2048})
        add(n, 16);
}

} // namespace

std::vector<Case> matrix_cases(const CaseOptions& settings) {
    std::vector<Case> cases;
    for (int threads : settings.threads)
        for (const TriangularRow& row : rows) {
            std::string all = row.options;
            do {
                const std::string options = all.substr(0, all.find(' '));
                all.erase(0, options.size() + 1);
                add_triangular_cases(cases, row, options, settings, threads);
            } while (!all.empty() && !settings.quick);
        }
    return cases;
}

} // namespace bench
