// The nonsymmetric eigenproblem: reduction to Hessenberg form, QR iteration on Hessenberg matrices, and the whole.
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <vector>

#include "case.hpp"
#include "routine.hpp"

namespace bench {
namespace {

enum class Task { reduce, iterate, solve };

// Arguments: D U jobs for values, left vectors or Z, and right ones, n the order and leading dimensions, o one, A the
// matrix, R and I the values, L and Q the vectors, t factors of reflectors, W a work array and w its length, i info.
struct Row {
    const char *name, *letters;
    Task task;
    char jobs[3];

    bool left() const { return task == Task::solve && jobs[0] == 'V'; }
    bool right() const { return task == Task::solve && jobs[1] == 'V'; }
    bool schur() const { return task == Task::iterate && jobs[0] == 'S'; }
};
constexpr const char *iteration = "DUnonAnRIQnWwi", *driver = "DUnAnRILnQnWwi";
constexpr Row rows[] = {{"sgehrd", "nonAntWwi", Task::reduce, ""},  {"shseqr", iteration, Task::iterate, "EN"},
                        {"shseqr", iteration, Task::iterate, "SI"}, {"sgeev", driver, Task::solve, "NN"},
                        {"sgeev", driver, Task::solve, "NV"},       {"sgeev", driver, Task::solve, "VV"}};

Work work_of(const Row& row, int n) {
    return row.task == Task::reduce    ? gehrd_work(n)
           : row.task == Task::iterate ? hseqr_work(n, row.schur())
                                       : geev_work(n, row.left() || row.right());
}

// What similarity leaves alone: the traces of a matrix and of its square.
struct Traces {
    Wide sum = 0, ofSquare = 0;
};

class NonsymmetricWorkload : public Workload {
public:
    NonsymmetricWorkload(const Row& row, int n)
        : row_(row), n_(n), given_(n, n, 1), a_(n, n, 1), left_(n, n, 2), right_(n, n, 3), re_(std::size_t(n)),
          im_(re_), tau_(re_), work_(72 * re_.size()), length_(int(work_.size())), routine_(row.name, row.letters,
                                                                                            {{'D', &row.jobs[0]},
                                                                                             {'U', &row.jobs[1]},
                                                                                             {'n', &n_},
                                                                                             {'o', &one_},
                                                                                             {'A', a_.data.get()},
                                                                                             {'R', re_.data()},
                                                                                             {'I', im_.data()},
                                                                                             {'L', left_.data.get()},
                                                                                             {'Q', right_.data.get()},
                                                                                             {'t', tau_.data()},
                                                                                             {'W', work_.data()},
                                                                                             {'w', &length_},
                                                                                             {'i', &info_}}) {
        if (row.task == Task::iterate)
            make_hessenberg();
    }

    Verdict judge(const Library& library) override {
        if (!routine_.once(library, [this] { a_.restore(given_), info_ = -1; }))
            return Verdict::absent;
        return info_ == 0 && agrees_in_traces() && (!row_.right() || has_vectors(right_, false)) &&
                       (!row_.left() || has_vectors(left_, true)) && (!row_.schur() || has_schur_form())
                   ? Verdict::correct
                   : Verdict::wrong;
    }

    void run(benchmark::State& state, const Library& library) override {
        routine_.repeat(state, library, [&] { a_.restore(given_); });
    }

private:
    using WideVector = std::vector<Wide>;

    // As a random matrix looks after its reduction: the column j has given its length to the subdiagonal.
    void make_hessenberg() {
        for (int j = 0; j < n_; ++j)
            for (int i = j + 1; i < n_; ++i)
                given_(i, j) = i > j + 1 ? 0 : std::sqrt(float(n_ - i) / 12);
    }

    double tolerance() const { return (4 * n_ + 50) * double(std::numeric_limits<float>::epsilon()); }

    template <class Element>
    Traces traces_of(const Element& element) const {
        Traces traces;
        for (int j = 0; j < n_; ++j) {
            traces.sum += element(j, j);
            for (int i = 0; i < n_; ++i)
                traces.ofSquare += element(i, j) * element(j, i);
        }
        return traces;
    }
    bool agrees_in_traces() const {
        const Traces before = traces_of([&](int i, int j) { return Wide(given_(i, j)); });
        Traces after;
        if (row_.task == Task::reduce) // below are the reflectors
            after = traces_of([&](int i, int j) { return i > j + 1 ? Wide(0) : Wide(a_(i, j)); });
        else
            for (std::size_t k = 0; k < re_.size(); ++k) {
                const Wide value(re_[k], im_[k]);
                after.sum += value;
                after.ofSquare += value * value;
            }
        double squares = 0;
        for (std::size_t k = 0; k < given_.count; ++k)
            squares += double(given_.data[k]) * given_.data[k];
        return std::abs(after.sum - before.sum) <= tolerance() * std::sqrt(squares) &&
               std::abs(after.ofSquare - before.ofSquare) <= tolerance() * squares;
    }

    WideVector test_vector() const {
        WideVector x;
        std::minstd_rand generator(4);
        for (int j = 0; j < n_; ++j)
            x.push_back(generator() % 2 == 0 ? 1 : -1);
        return x;
    }
    template <class Element>
    WideVector product(const Element& element, const WideVector& x) const {
        WideVector y(x.size());
        for (int j = 0; j < n_; ++j)
            for (int i = 0; i < n_; ++i)
                y[std::size_t(i)] += Wide(element(i, j)) * x[std::size_t(j)];
        return y;
    }
    static double length(const WideVector& x) {
        double squares = 0;
        for (const Wide& element : x)
            squares += std::norm(element);
        return std::sqrt(squares);
    }
    // Of A x and y, as `image` of x, in the size of A.
    template <class Element>
    bool agree(const Element& a, const WideVector& x, WideVector image) const {
        double squares = 0;
        for (std::size_t k = 0; k < given_.count; ++k)
            squares += double(given_.data[k]) * given_.data[k];
        const WideVector y = product(a, x);
        for (std::size_t i = 0; i < y.size(); ++i)
            image[i] -= y[i];
        return length(image) <= tolerance() * std::sqrt(squares) * length(x);
    }

    // H Z = Z T, on a vector.
    bool has_schur_form() const {
        const auto z = [&](int i, int j) { return right_(i, j); };
        const WideVector x = test_vector();
        return agree([&](int i, int j) { return given_(i, j); }, product(z, x),
                     product(z, product([&](int i, int j) { return a_(i, j); }, x)));
    }
    // A V = V W, on a vector.
    bool has_vectors(const Operand<float>& stored, bool left) const {
        const auto v = [&](int i, int j) { // the conjugate shares its columns
            const float im = im_[std::size_t(j)];
            return im > 0   ? Wide(stored(i, j), stored(i, j + 1))
                   : im < 0 ? Wide(stored(i, j - 1), -stored(i, j))
                            : Wide(stored(i, j));
        };
        const WideVector x = test_vector();
        WideVector scaled = x;
        for (std::size_t k = 0; k < x.size(); ++k)
            scaled[k] *= Wide(re_[k], left ? -im_[k] : im_[k]);
        return agree([&](int i, int j) { return left ? given_(j, i) : given_(i, j); }, product(v, x),
                     product(v, scaled));
    }

    const Row& row_;
    int n_, one_ = 1, info_ = 0;
    Operand<float> given_, a_, left_, right_;
    std::vector<float> re_, im_, tau_, work_;
    int length_;
    Routine routine_;
};

void add_case(std::vector<Case>& cases, const Row& row, int n, int threads) {
    const std::string job = row.task == Task::reduce ? "" : fmt::format("/{}", row.jobs);
    cases.push_back({fmt::format("{}{}/{}/t{}", row.name, job, n, threads), threads, work_of(row, n), row.name + job, n,
                     [=, &row] { return std::make_unique<NonsymmetricWorkload>(row, n); }});
}

} // namespace

std::vector<Case> nonsymmetric_cases(const CaseOptions& options) {
    std::vector<Case> cases;
    for (const int threads : options.threads)
        for (const Row& row : rows)
            for (const int n : {4, 8, 16, 32, 64, 100, 200, 300, 500, 600, 1000})
                if (!options.quick || n == 32)
                    add_case(cases, row, n, threads);
    return cases;
}

} // namespace bench
