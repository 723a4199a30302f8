// SGEMM and CGEMM: squares from tiny calls to large, thin panels as factorizations have them, the option pairs.
#include <cmath>
#include <fmt/format.h>
#include <limits>

#include "case.hpp"
#include "routine.hpp"

namespace bench {
namespace {

struct Shape {
    char transa, transb;
    int m, n, k;
};

template <class T>
class GemmWorkload : public Workload {
public:
    GemmWorkload(const char* name, const Shape& shape, float beta)
        : shape_(shape), beta_(beta),
          a_(shape.transa == 'N' ? shape.m : shape.k, shape.transa == 'N' ? shape.k : shape.m, 1),
          b_(shape.transb == 'N' ? shape.k : shape.n, shape.transb == 'N' ? shape.n : shape.k, 2),
          before_(shape.m, shape.n, 3), c_(shape.m, shape.n, 3), routine_(name, "TUmnkpaxbyqcz",
                                                                          {{'T', &shape_.transa},
                                                                           {'U', &shape_.transb},
                                                                           {'m', &shape_.m},
                                                                           {'n', &shape_.n},
                                                                           {'k', &shape_.k},
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
            const int i = int(generator() % unsigned(shape_.m)), j = int(generator() % unsigned(shape_.n));
            Wide expected = Wide(beta_) * Wide(before_(i, j));
            double magnitude = std::abs(expected);
            for (int l = 0; l < shape_.k; ++l) {
                const Wide product = element(a_, i, l, shape_.transa) * element(b_, l, j, shape_.transb);
                expected += product;
                magnitude += std::abs(product);
            }
            // Holds for every order of summation, fused or not.
            const double bound = (shape_.k + 2) * double(std::numeric_limits<float>::epsilon()) * magnitude;
            if (!(std::abs(Wide(c_(i, j)) - expected) <= bound))
                return Verdict::wrong;
        }
        return Verdict::correct;
    }

    void run(benchmark::State& state, const Library& library) override {
        restore();
        routine_.repeat<void>(state, library);
    }

private:
    // With beta = 1 C grows by the same product in each call, far from overflow over one repetition.
    void restore() { std::copy_n(before_.data.get(), before_.count, c_.data.get()); }

    static Wide element(const Operand<T>& x, int i, int j, char trans) {
        return trans == 'N' ? Wide(x(i, j)) : trans == 'T' ? Wide(x(j, i)) : std::conj(Wide(x(j, i)));
    }

    Shape shape_;
    Complex alpha_{1}, beta_; // a real routine reads the real part
    Operand<T> a_, b_, before_, c_;
    Routine routine_;
};

template <class T>
std::vector<Shape> shapes(bool quick) {
    std::vector<Shape> list;
    const auto square = [&](const char* pair, int n) { list.push_back({pair[0], pair[1], n, n, n}); };
    if (quick) {
        for (int n : {4, 96})
            square("NN", n);
        square(isComplex<T> ? "CN" : "TN", 96);
        list.push_back({'N', 'N', 192, 192, 32});
        return list;
    }
    for (int n : {4, 8, 16, 24, 32, 48, 64, 96, 128, 192, 256, 384, 512, 768, 1024, 1536, 2048})
        if (!isComplex<T> || n != 1536)
            square("NN", n);
    for (int n : {64, 256, 1024})
        for (const char* pair : {"NT", "TN", "TT", "NC", "CN", "CC", "TC", "CT"})
            if (isComplex<T> || std::string(pair).find('C') == std::string::npos)
                square(pair, n);
    list.push_back({'N', 'N', 2048, 2048, 32});
    list.push_back({'N', 'N', 32, 2048, 2048});
    list.push_back({'N', 'N', 2048, 32, 2048});
    return list;
}

template <class T>
void add_cases(std::vector<Case>& cases, const char* name, const CaseOptions& options) {
    for (int threads : options.threads)
        for (const Shape& shape : shapes<T>(options.quick)) {
            if (options.quick && threads > 1 && shape.m != 96)
                continue;
            const bool isSquare = shape.m == shape.n && shape.n == shape.k;
            const std::string size =
                isSquare ? fmt::format("{}", shape.n) : fmt::format("{}x{}x{}", shape.m, shape.n, shape.k);
            const bool isPlain = shape.transa == 'N' && shape.transb == 'N';
            cases.push_back(
                {fmt::format("{}/{}{}/{}/t{}", name, shape.transa, shape.transb, size, threads), threads,
                 gemm_work(shape.m, shape.n, shape.k, isComplex<T>), isSquare && isPlain ? name : "", shape.n,
                 [=, beta = options.beta] { return std::make_unique<GemmWorkload<T>>(name, shape, beta); }});
        }
}

} // namespace

std::vector<Case> gemm_cases(const CaseOptions& options) {
    std::vector<Case> cases;
    add_cases<float>(cases, "sgemm", options);
    add_cases<Complex>(cases, "cgemm", options);
    return cases;
}

} // namespace bench
