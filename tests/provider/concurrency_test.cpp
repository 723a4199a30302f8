// The very first calls into the library, made by many host threads at once, and many small ones after them.
#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "qrv/providers.hpp"
#include "qrv/service.h"

namespace qrv::test {
namespace {

using namespace Corvex::Mathematics::LinearAlgebra;

std::vector<float> product(Providers::ParallelX86SingleLinearAlgebraProvider& provider, int n, int seed) {
    const auto size = static_cast<std::size_t>(n * n);
    std::vector<float> a(size), b(size), c(size, 1);
    for (std::size_t i = 0; i < size; ++i) {
        a[i] = static_cast<float>((i * 7 + static_cast<std::size_t>(seed)) % 11) - 5;
        b[i] = static_cast<float>(i * 5 % 13) - 6;
    }
    provider.BlasLevel3()->Sgemm(TransposeOperation::None, TransposeOperation::Transpose, n, n, n, 0.5F, a, 0, n, b, 0,
                                 n, -1, c, 0, n);
    return c;
}

TEST(Concurrency, ManyHostThreadsFromTheFirstCallOn) {
    Providers::ParallelX86SingleLinearAlgebraProvider provider;
    constexpr int threads = 8;
    const auto products = [&](int seed) {
        std::vector<std::vector<float>> list;
        for (int n = 3; n < 43; ++n)
            list.push_back(product(provider, n, seed));
        return list;
    };
    std::atomic<int> waiting{threads};
    std::vector<std::vector<float>> results[threads];
    std::vector<std::jthread> team;
    for (int t = 0; t < threads; ++t)
        team.emplace_back([&, t] {
            for (--waiting; waiting > 0;)
                std::this_thread::yield();
            qrv_serv_get_max_threads();
            results[t] = products(t % 2);
        });
    team.clear();
    for (int t = 0; t < threads; ++t)
        EXPECT_EQ(results[t], products(t % 2));
}

} // namespace
} // namespace qrv::test
