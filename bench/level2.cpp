// BLAS level 2: one matrix and vectors, from calls of a microsecond to matrices beyond every cache.
#include <cmath>
#include <cstring>
#include <fmt/format.h>
#include <limits>

#include "case.hpp"
#include "routine.hpp"

namespace bench {
namespace {

enum class Kind { general, symmetric, hermitian, triangular };
enum class Operation { product, solve, update };

// Arguments: U T D the options, n a dimension, k a count of diagonals, a b alpha and beta, A the matrix, l its leading
// dimension, x y the vectors, i an increment (1).
struct Row {
    const char *name, *letters, *options; // options: what U T D stand for, one word for each case
    Kind kind;
    Operation operation;

    bool has(char letter) const { return std::strchr(letters, letter); }
    bool isComplex() const { return name[0] == 'c'; }
};
constexpr const char *triangularOptions = "UNN UTN LNN LTN", *complexTriangularOptions = "UNN UCN LNN LCN";
constexpr Row rows[] = {
    {"sgemv", "TnnaAlxibyi", "N T", Kind::general, Operation::product},
    {"cgemv", "TnnaAlxibyi", "N T C", Kind::general, Operation::product},
    {"ssymv", "UnaAlxibyi", "U L", Kind::symmetric, Operation::product},
    {"chemv", "UnaAlxibyi", "U L", Kind::hermitian, Operation::product},
    {"strmv", "UTDnAlxi", triangularOptions, Kind::triangular, Operation::product},
    {"ctrmv", "UTDnAlxi", complexTriangularOptions, Kind::triangular, Operation::product},
    {"strsv", "UTDnAlxi", triangularOptions, Kind::triangular, Operation::solve},
    {"ctrsv", "UTDnAlxi", complexTriangularOptions, Kind::triangular, Operation::solve},
    {"sger", "nnaxiyiAl", "", Kind::general, Operation::update},
    {"cgeru", "nnaxiyiAl", "", Kind::general, Operation::update},
    {"cgerc", "nnaxiyiAl", "", Kind::general, Operation::update},
    {"ssyr", "UnaxiAl", "U L", Kind::symmetric, Operation::update},
    {"cher", "UnaxiAl", "U L", Kind::hermitian, Operation::update},
    {"ssyr2", "UnaxiyiAl", "U L", Kind::symmetric, Operation::update},
    {"cher2", "UnaxiyiAl", "U L", Kind::hermitian, Operation::update},
    {"sgbmv", "TnnkkaAlxibyi", "N T", Kind::general, Operation::product},
    {"ssbmv", "UnkaAlxibyi", "U L", Kind::symmetric, Operation::product},
    {"stbmv", "UTDnkAlxi", triangularOptions, Kind::triangular, Operation::product},
    {"stbsv", "UTDnkAlxi", triangularOptions, Kind::triangular, Operation::solve},
};

// Diagonals beside the main one.
int bandwidth(const Row& row, int n) {
    return std::min(row.has('k') ? 32 : n, n - 1);
}

Work work_of(const Row& row, int n) {
    const int k = bandwidth(row, n);
    const bool half = row.kind == Kind::triangular || (row.kind != Kind::general && row.operation == Operation::update);
    const double elements = half ? half_band_elements(n, k) : band_elements(n, k);
    const bool twice = half && row.has('y'); // an update of rank 2
    return multiply_adds(twice ? 2 * elements : elements, row.isComplex());
}

template <class T>
class MatrixWorkload : public Workload {
public:
    MatrixWorkload(const Row& row, const std::string& options, int n, float beta)
        : row_(row), options_(options), n_(n), k_(bandwidth(row, n)), beta_(row.has('b') ? beta : 0),
          a_(!row.has('k')               ? n
             : row.kind == Kind::general ? 2 * k_ + 1
                                         : k_ + 1,
             n, 1),
          x_(n, 1, 2), y_(n, 1, 3), routine_(row.name, row.letters,
                                             {{'U', options_.data()},
                                              {'T', options_.data() + row.has('U')},
                                              {'D', options_.data() + 2 * row.has('D')},
                                              {'n', &n_},
                                              {'k', &k_},
                                              {'a', &alpha_},
                                              {'b', &beta_},
                                              {'A', a_.data.get()},
                                              {'l', &a_.rows},
                                              {'x', x_.data.get()},
                                              {'y', y_.data.get()},
                                              {'i', &increment_}}) {
        if (row.kind == Kind::triangular)
            make_involution();
    }

    Verdict judge(const Library& library) override {
        if (!routine_.entry(library))
            return Verdict::absent;
        const Operand<T> x(n_, 1, x_.seed), y(n_, 1, y_.seed);
        std::minstd_rand generator(4);
        struct Sample {
            int i, j;
            Wide before;
        };
        std::vector<Sample> samples(row_.operation == Operation::update ? 200 : 40);
        for (Sample& s : samples) {
            s.i = int(generator() % unsigned(n_)), s.j = int(generator() % unsigned(n_));
            if (row_.kind != Kind::general && !is_stored(s.i, s.j))
                std::swap(s.i, s.j);
            s.before = row_.operation == Operation::update ? element(s.i, s.j) : 0;
        }
        routine_.bind<void>(library, [](auto call) { call(); });

        bool good = true;
        for (const Sample& s : samples) {
            Wide sum = s.before, result;
            double magnitude = std::abs(sum);
            const auto add = [&](Wide product) { sum += product, magnitude += std::abs(product); };
            const auto conjugate = [&](Wide z) {
                return row_.kind == Kind::hermitian || row_.name == std::string("cgerc") ? std::conj(z) : z;
            };
            if (row_.operation == Operation::update) {
                const Operand<T>& other = row_.has('y') ? y : x;
                add(Wide(x(s.i, 0)) * conjugate(other(s.j, 0)));
                if (row_.kind != Kind::general && row_.has('y'))
                    add(Wide(y(s.i, 0)) * conjugate(x(s.j, 0)));
                result = a_(s.i, s.j);
            } else {
                // A solution is judged by its product with the matrix.
                const bool solve = row_.operation == Operation::solve;
                for (int j = 0; j < n_; ++j)
                    add(effective(s.i, j) * Wide(solve ? x_(j, 0) : x(j, 0)));
                if (row_.has('y'))
                    add(Wide(beta_) * Wide(y(s.i, 0)));
                result = solve ? x(s.i, 0) : row_.has('y') ? y_(s.i, 0) : x_(s.i, 0);
            }
            const double bound = (n_ + 2) * double(std::numeric_limits<float>::epsilon()) * magnitude;
            good = good && std::abs(result - sum) <= bound;
        }
        x_.fill();
        y_.fill();
        if (row_.operation == Operation::update)
            a_.fill();
        return good ? Verdict::correct : Verdict::wrong;
    }

    // What grows does so by the same amount in each call, far from overflow.
    void run(benchmark::State& state, const Library& library) override { routine_.repeat<void>(state, library); }

private:
    // x := A x and x := A^-1 x go on from call to call, so A is its own inverse, exactly: 1 and -1 in turn on the
    // diagonal, and beside it nothing but links from odd elements to even ones.
    void make_involution() {
        for (int j = 0; j < n_; ++j)
            for (int i = 0; i < n_; ++i)
                if (is_stored(i, j) && std::abs(i - j) <= k_ && (i == j || i % 2 == 1 || j % 2 == 0))
                    stored(i, j) = T(i != j ? 0.0F : i % 2 == 0 ? 1.0F : -1.0F);
    }

    bool is_upper() const { return row_.has('U') && options_.front() == 'U'; }
    bool is_stored(int i, int j) const { return !row_.has('U') || (is_upper() ? i <= j : i >= j); }

    T& stored(int i, int j) {
        if (!row_.has('k'))
            return a_(i, j);
        return a_((row_.kind == Kind::general || is_upper() ? k_ : 0) + i - j, j);
    }

    // Of the matrix that the stored part stands for.
    Wide element(int i, int j) {
        if (std::abs(i - j) > k_)
            return 0;
        if (!is_stored(i, j))
            return row_.kind == Kind::triangular  ? 0
                   : row_.kind == Kind::hermitian ? std::conj(Wide(stored(j, i)))
                                                  : Wide(stored(j, i));
        const Wide value = stored(i, j);
        return row_.kind == Kind::hermitian && i == j ? value.real() : value;
    }

    // Of op(A).
    Wide effective(int i, int j) {
        const char trans = row_.has('T') ? options_[row_.has('U')] : 'N';
        return trans == 'N' ? element(i, j) : trans == 'T' ? element(j, i) : std::conj(element(j, i));
    }

    const Row& row_;
    std::string options_;
    int n_, k_, increment_ = 1;
    Complex alpha_{1}, beta_; // a real routine reads the real part
    Operand<T> a_, x_, y_;
    Routine routine_;
};

} // namespace

std::vector<Case> matrix_vector_cases(const CaseOptions& settings) {
    std::vector<Case> cases;
    for (int threads : settings.threads)
        for (const Row& row : rows) {
            std::string all = row.options;
            do {
                const std::string options = all.substr(0, all.find(' '));
                all.erase(0, options.size() + 1);
                const std::string family = options.empty() ? row.name : fmt::format("{}/{}", row.name, options);
                for (int n : {16, 64, 256, 512, 1024, 4096})
                    if (!settings.quick || (n == 64 && threads == 1))
                        cases.push_back({fmt::format("{}/{}/t{}", family, n, threads), threads, work_of(row, n), family,
                                         n, [&row, options, n, beta = settings.beta]() -> std::unique_ptr<Workload> {
                                             if (row.isComplex())
                                                 return std::make_unique<MatrixWorkload<Complex>>(row, options, n,
                                                                                                  beta);
                                             return std::make_unique<MatrixWorkload<float>>(row, options, n, beta);
                                         }});
            } while (!all.empty() && !settings.quick);
        }
    return cases;
}

} // namespace bench
