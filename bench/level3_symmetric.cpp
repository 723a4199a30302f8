// Rank-k and rank-2k updates of a triangle, and products with a symmetric or Hermitian matrix: squares, and thin ones
// as factorizations have them.
#include <cmath>
#include <fmt/format.h>
#include <limits>

#include "case.hpp"
#include "routine.hpp"

namespace bench {
namespace {

enum class Kind { rankK, rank2K, product };

// The options of updates are uplo and trans, those of products side and uplo; a word for each case.
struct SymmetricRow {
    const char *name, *options;
    Kind kind;

    bool isComplex() const { return name[0] == 'c'; }
    bool isHermitian() const { return name[1] == 'h'; }
};
constexpr SymmetricRow rows[] = {
    {"ssyrk", "UN LT", Kind::rankK},   {"csyrk", "UN LT", Kind::rankK},   {"cherk", "UN LC", Kind::rankK},
    {"ssyr2k", "UN LT", Kind::rank2K}, {"csyr2k", "UN LT", Kind::rank2K}, {"cher2k", "UN LC", Kind::rank2K},
    {"ssymm", "LU RL", Kind::product}, {"csymm", "LU RL", Kind::product}, {"chemm", "LU RL", Kind::product}};

template <class T>
class SymmetricWorkload : public Workload {
public:
    // `order` of the symmetric matrix; `count` steps of an update, or columns (side L) or rows of B.
    SymmetricWorkload(const SymmetricRow& row, const std::string& options, int order, int count, float beta)
        : row_(row), options_(options), order_(order), count_(count), m_(options[0] == 'R' ? count : order),
          n_(options[0] == 'L' ? count : order), beta_(beta), a_(a_rows(), a_columns(), 1),
          b_(isProduct() ? m_ : a_rows(), isProduct() ? n_ : a_columns(), 2), before_(c_rows(), c_columns(), 3),
          c_(c_rows(), c_columns(), 3), routine_(row.name, letters(row.kind),
                                                 {{'U', options_.data()},
                                                  {'T', options_.data() + 1},
                                                  {'o', &order_},
                                                  {'k', &count_},
                                                  {'m', &m_},
                                                  {'n', &n_},
                                                  {'p', &alpha_},
                                                  {'a', a_.data.get()},
                                                  {'x', &a_.rows},
                                                  {'b', b_.data.get()},
                                                  {'y', &b_.rows},
                                                  {'q', &beta_},
                                                  {'c', c_.data.get()},
                                                  {'z', &c_.rows}}) {}

    Verdict judge(const Library& library) override {
        if (!routine_.once(library, [this] { restore(); }))
            return Verdict::absent;
        std::minstd_rand generator(4);
        for (int sample = 0; sample < 200; ++sample) {
            int i = int(generator() % unsigned(c_rows())), j = int(generator() % unsigned(c_columns()));
            if (!isProduct() && (i > j) == (options_[0] == 'U'))
                std::swap(i, j);
            const bool isReal = !isProduct() && row_.isHermitian() && i == j;
            Wide sum = Wide(beta_) * (isReal ? Wide(before_(i, j)).real() : Wide(before_(i, j)));
            double magnitude = std::abs(sum);
            const auto add = [&](Wide x, Wide y) {
                sum += x * y;
                magnitude += std::abs(x * y);
            };
            const int depth = isProduct() ? order_ : count_;
            for (int l = 0; l < depth; ++l)
                if (row_.kind == Kind::rankK)
                    add(of_rows(a_, i, l), mirrored(of_rows(a_, j, l)));
                else if (row_.kind == Kind::rank2K) {
                    add(of_rows(a_, i, l), mirrored(of_rows(b_, j, l)));
                    add(of_rows(b_, i, l), mirrored(of_rows(a_, j, l)));
                } else if (options_[0] == 'L')
                    add(whole(i, l), Wide(b_(l, j)));
                else
                    add(Wide(b_(i, l)), whole(l, j));
            const double bound = (2 * depth + 2) * double(std::numeric_limits<float>::epsilon()) * magnitude;
            if (!(std::abs(Wide(c_(i, j)) - sum) <= bound))
                return Verdict::wrong;
        }
        return Verdict::correct;
    }

    void run(benchmark::State& state, const Library& library) override {
        restore();
        routine_.repeat<void>(state, library);
    }

private:
    static const char* letters(Kind kind) {
        return kind == Kind::rankK ? "UTokpaxqcz" : kind == Kind::rank2K ? "UTokpaxbyqcz" : "UTmnpaxbyqcz";
    }
    void restore() { std::copy_n(before_.data.get(), before_.count, c_.data.get()); }

    int a_rows() const { return !isProduct() && transposed() ? count_ : order_; }
    int a_columns() const { return isProduct() || transposed() ? order_ : count_; }
    int c_rows() const { return isProduct() ? m_ : order_; }
    int c_columns() const { return isProduct() ? n_ : order_; }

    bool isProduct() const { return row_.kind == Kind::product; }
    bool transposed() const { return options_[1] != 'N'; }
    Wide mirrored(Wide x) const { return row_.isHermitian() ? std::conj(x) : x; }
    // Element (i, l) of A or A' in an update.
    Wide of_rows(const Operand<T>& x, int i, int l) const {
        return transposed() ? mirrored(Wide(x(l, i))) : Wide(x(i, l));
    }
    // Element (i, j) of the symmetric A in a product.
    Wide whole(int i, int j) const {
        if (row_.isHermitian() && i == j)
            return Wide(a_(i, i)).real();
        return (options_[1] == 'U') == (i <= j) || i == j ? Wide(a_(i, j)) : mirrored(Wide(a_(j, i)));
    }

    const SymmetricRow& row_;
    std::string options_;
    int order_, count_, m_, n_;
    Complex alpha_{1}, beta_; // a real scalar is the real part
    Operand<T> a_, b_, before_, c_;
    Routine routine_;
};

Work work_of(const SymmetricRow& row, double order, double count) {
    const double elements = row.kind == Kind::product ? order * order : order * (order + 1) / 2;
    return multiply_adds(elements * count * (row.kind == Kind::rank2K ? 2 : 1), row.isComplex());
}

void add_cases(std::vector<Case>& cases, const SymmetricRow& row, const std::string& options,
               const CaseOptions& settings, int threads) {
    const std::string family = fmt::format("{}/{}", row.name, options);
    const auto add = [&](int order, int count) {
        const bool square = order == count;
        const std::string size = square ? fmt::format("{}", order) : fmt::format("{}x{}", order, count);
        cases.push_back({fmt::format("{}/{}/t{}", family, size, threads), threads, work_of(row, order, count),
                         square ? family : "", order,
                         [&row, options, order, count, beta = settings.beta]() -> std::unique_ptr<Workload> {
                             if (row.isComplex())
                                 return std::make_unique<SymmetricWorkload<Complex>>(row, options, order, count, beta);
                             return std::make_unique<SymmetricWorkload<float>>(row, options, order, count, beta);
                         }});
    };
    if (settings.quick) {
        if (threads == 1)
            add(96, 96);
        return;
    }
    for (int n : {16, 64, 128, 256, 512, 1024, 2048})
        add(n, n);
    for (int n : {64, 512, 2048})
        add(n, 16);
    add(16, 2048);
}

} // namespace

std::vector<Case> symmetric_cases(const CaseOptions& settings) {
    std::vector<Case> cases;
    for (int threads : settings.threads)
        for (const SymmetricRow& row : rows)
            for (const std::string& options : {std::string(row.options, 2), std::string(row.options + 3)})
                add_cases(cases, row, options, settings, threads);
    return cases;
}

} // namespace bench
