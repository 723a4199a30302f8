// SGEMM: squares from tiny calls to large, thin panels as factorizations have them, the four transposition pairs.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <fmt/format.h>
#include <limits>
#include <random>

#include "case.hpp"
#include "flops.hpp"

namespace bench {
namespace {

// The peers' Fortran name, with the two hidden text lengths that some compilers rely on; our entry takes the same
// arguments, and like every C routine leaves surplus ones alone.
using Sgemm = void(const char*, const char*, const int*, const int*, const int*, const float*, const float*, const int*,
                   const float*, const int*, const float*, float*, const int*, std::size_t, std::size_t);

Sgemm* sgemm_of(const Library& library) {
    return library.find<Sgemm>(library.ours ? "SGEMM" : "sgemm_");
}

struct Shape {
    char transa, transb;
    int m, n, k;
};

struct AlignedDelete {
    void operator()(float* block) const { operator delete[](block, std::align_val_t{64}); }
};

// Column-major and dense (leading dimension = rows), uniform in [-0.5, 0.5), on a cache line.
struct Operand {
    Operand(int rows_, int columns, unsigned seed) : rows(rows_), count(std::size_t(rows_) * std::size_t(columns)) {
        data.reset(new (std::align_val_t{64}) float[count]);
        std::minstd_rand generator(seed);
        std::uniform_real_distribution<float> uniform(-0.5F, 0.5F);
        std::generate_n(data.get(), count, [&] { return uniform(generator); });
    }
    float operator()(int i, int j) const { return data[std::size_t(i) + std::size_t(j) * std::size_t(rows)]; }
    float operator()(int i, int j, char trans) const { return trans == 'N' ? (*this)(i, j) : (*this)(j, i); }

    int rows;
    std::size_t count;
    std::unique_ptr<float[], AlignedDelete> data;
};

class GemmWorkload : public Workload {
public:
    GemmWorkload(const Shape& shape, float beta)
        : shape_(shape), beta_(beta),
          a_(shape.transa == 'N' ? shape.m : shape.k, shape.transa == 'N' ? shape.k : shape.m, 1),
          b_(shape.transb == 'N' ? shape.k : shape.n, shape.transb == 'N' ? shape.n : shape.k, 2),
          before_(shape.m, shape.n, 3), c_(shape.m, shape.n, 3) {}

    bool correct(const Library& library) override {
        Sgemm* sgemm = sgemm_of(library);
        if (!sgemm)
            return false;
        restore();
        call(sgemm);
        std::minstd_rand generator(4);
        for (int sample = 0; sample < 200; ++sample) {
            const int i = int(generator() % unsigned(shape_.m)), j = int(generator() % unsigned(shape_.n));
            double expected = double(beta_) * before_(i, j), magnitude = std::abs(expected);
            for (int l = 0; l < shape_.k; ++l) {
                const double product = double(a_(i, l, shape_.transa)) * b_(l, j, shape_.transb);
                expected += product;
                magnitude += std::abs(product);
            }
            // Holds for every order of summation, fused or not.
            const double bound = (shape_.k + 2) * double(std::numeric_limits<float>::epsilon()) * magnitude;
            if (!(std::abs(c_(i, j) - expected) <= bound))
                return false;
        }
        return true;
    }

    void run(benchmark::State& state, const Library& library) override {
        Sgemm* sgemm = sgemm_of(library);
        restore();
        for (auto _ : state)
            call(sgemm);
    }

private:
    // With beta = 1 C grows by the same product in each call, far from overflow over one repetition.
    void restore() { std::copy_n(before_.data.get(), before_.count, c_.data.get()); }

    void call(Sgemm* sgemm) {
        const float alpha = 1;
        sgemm(&shape_.transa, &shape_.transb, &shape_.m, &shape_.n, &shape_.k, &alpha, a_.data.get(), &a_.rows,
              b_.data.get(), &b_.rows, &beta_, c_.data.get(), &c_.rows, 1, 1);
    }

    Shape shape_;
    float beta_;
    Operand a_, b_, before_, c_;
};

std::vector<Shape> shapes(bool quick) {
    std::vector<Shape> list;
    const auto square = [&](char transa, char transb, int n) { list.push_back({transa, transb, n, n, n}); };
    if (quick) {
        for (int n : {4, 32, 96})
            square('N', 'N', n);
        square('T', 'N', 96);
        list.push_back({'N', 'N', 192, 192, 32});
        return list;
    }
    for (int n : {4, 8, 16, 24, 32, 48, 64, 96, 128, 192, 256, 384, 512, 768, 1024, 1536, 2048})
        square('N', 'N', n);
    for (int n : {64, 256, 1024})
        for (const char* pair : {"NT", "TN", "TT"})
            square(pair[0], pair[1], n);
    list.push_back({'N', 'N', 2048, 2048, 32});
    list.push_back({'N', 'N', 32, 2048, 2048});
    list.push_back({'N', 'N', 2048, 32, 2048});
    return list;
}

} // namespace

std::vector<Case> gemm_cases(const CaseOptions& options) {
    std::vector<Case> cases;
    for (int threads : options.threads)
        for (const Shape& shape : shapes(options.quick)) {
            const bool isSquare = shape.m == shape.n && shape.n == shape.k;
            const std::string size =
                isSquare ? fmt::format("{}", shape.n) : fmt::format("{}x{}x{}", shape.m, shape.n, shape.k);
            const bool isPlain = shape.transa == 'N' && shape.transb == 'N';
            cases.push_back({fmt::format("sgemm/{}{}/{}/t{}", shape.transa, shape.transb, size, threads), threads,
                             gemm_flops(shape.m, shape.n, shape.k), isSquare && isPlain ? shape.n : 0,
                             [=, beta = options.beta] { return std::make_unique<GemmWorkload>(shape, beta); }});
        }
    return cases;
}

} // namespace bench
