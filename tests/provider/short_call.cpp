// A second call of the same size allocates nothing and takes no lock: counted at the linker's wrappers of the C
// allocator, operator new and the service lock.
#include <atomic>
#include <cstddef>
#include <gtest/gtest.h>
#include <vector>

#include "qrv/providers.hpp"
#include "service/work_pool.hpp"

namespace {
std::atomic<int> allocations{0};
std::atomic<int> locks{0};
} // namespace

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void* QRV_REAL_NEW(std::size_t size);
void __real_qrv_serv_lock();

void* __wrap_malloc(std::size_t size) {
    return ++allocations, __real_malloc(size);
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return ++allocations, __real_calloc(count, size);
}
void* __wrap_realloc(void* block, std::size_t size) {
    return ++allocations, __real_realloc(block, size);
}
void* QRV_WRAP_NEW(std::size_t size) {
    return ++allocations, QRV_REAL_NEW(size);
}
void __wrap_qrv_serv_lock() {
    ++locks;
    __real_qrv_serv_lock();
}
}

namespace qrv::test {
namespace {

using namespace Corvex::Mathematics::LinearAlgebra;

TEST(ShortCall, SecondCallAllocatesNothingAndTakesNoLock) {
    if (!pool_enabled())
        GTEST_SKIP() << "without the pool every call allocates its work memory";
    Providers::ParallelX86SingleLinearAlgebraProvider provider;
    for (const int n : {1, 4, 16, 70, 200}) {
        const auto size = static_cast<std::size_t>(n * n);
        std::vector<float> a(size, 1), b(size, 2), c(size, 3);
        const auto call = [&] {
            allocations = locks = 0;
            provider.BlasLevel3()->Sgemm(TransposeOperation::None, TransposeOperation::Transpose, n, n, n, 1, a, 0, n,
                                         b, 0, n, 0, c, 0, n);
        };
        call();
        EXPECT_TRUE(n != 1 || locks > 0) << "the wrappers count nothing";
        call();
        EXPECT_EQ(allocations, 0) << "n = " << n;
        EXPECT_EQ(locks, 0) << "n = " << n;
    }
    allocations = 0;
    void* large = qrv_serv_allocate(pooledLimit + 1, 0);
    EXPECT_EQ(allocations, 1) << "the wrappers count nothing";
    qrv_serv_deallocate(large);
}

} // namespace
} // namespace qrv::test
