// The work memory pool: which slot serves a request, what reaches the allocator, and what other threads may do.
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "service/work_pool.hpp"
#include "support/child.hpp"

namespace qrv::test {
namespace {

std::atomic<int> mallocs, frees, refuseFrom;

// Each test starts with an empty pool and a counting allocator, and ends with every buffer released.
class WorkPool : public testing::Test {
protected:
    void SetUp() override {
        if (!pool_enabled())
            GTEST_SKIP() << "the pool is off in this environment";
        qrv_serv_free_buffers();
        saved_ = allocatorSlots;
        allocatorSlots.malloc = [](std::size_t size) {
            return mallocs < refuseFrom ? ++mallocs, std::malloc(size) : nullptr;
        };
        allocatorSlots.free = [](void* block) { ++frees, std::free(block); };
        mallocs = frees = 0;
        refuseFrom = 1 << 30;
    }
    void TearDown() override {
        qrv_serv_free_buffers();
        EXPECT_EQ(kept(), std::pair(0, 0));
        allocatorSlots = saved_;
    }
    // Buffers and bytes.
    static std::pair<int, int> kept() {
        int buffers = 0;
        const auto bytes = qrv_serv_memory_stat(&buffers);
        return {buffers, static_cast<int>(bytes)};
    }
    static void* once(std::size_t size, int alignment) {
        void* block = qrv_serv_allocate(size, alignment);
        qrv_serv_deallocate(block);
        return block;
    }

private:
    AllocatorSlots saved_{};
};

TEST_F(WorkPool, ManyThreadsAtOnce) {
    std::vector<std::jthread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < 500; ++i) {
                const std::size_t size = 100 + static_cast<std::size_t>((t + i) % 7);
                auto* block = static_cast<char*>(qrv_serv_allocate(size, 64));
                block[0] = block[size - 1] = static_cast<char>(t);
                EXPECT_EQ(block[0], block[size - 1]);
                qrv_serv_deallocate(block);
            }
        });
    threads.clear();
    EXPECT_EQ(kept().first, 8 * 5);
}

// More threads than there are records, each of which leaves nothing.
TEST_F(WorkPool, ThreadsGiveBackTheirBuffers) {
    constexpr int threads = 10'000;
    int reused = 0;
    for (int t = 0; t < threads; ++t)
        std::thread([&] {
            void* first = once(1000, 128);
            once(70'000, 64);
            reused += once(1000, 128) == first;
            qrv_serv_free_thread_buffers();
        }).join();
    EXPECT_EQ(reused, threads) << "each has a record";
    EXPECT_EQ(kept().first, 0);
    EXPECT_EQ(mallocs, frees);
    EXPECT_EQ(mallocs, 3 * threads) << "a record and two buffers";
}

// Steps as words, "a=1000/64" takes a block and names it, "-a" gives it back, "a==b" compares addresses, of which that
// of "0" is null; "a%64" tells that one is a multiple; "@1" goes on in that thread, of whose buffers "leave" frees
// those that are not held; "free" those of all; after "!2" two calls of malloc are granted.
struct Steps {
    std::map<std::string, void*> blocks;
    std::set<void*> held;

    // The sanitizer sees a block that is too short.
    static void* take(std::size_t size, int alignment) {
        void* const block = qrv_serv_allocate(size, alignment);
        return block ? std::memset(block, 1, size) : block;
    }
    void step(const std::string& word) {
        const std::size_t sign = word.find_first_of("=%");
        void*& block = blocks[word.substr(word[0] == '-', sign)];
        if (word == "leave")
            qrv_serv_free_thread_buffers();
        else if (word == "free")
            qrv_serv_free_buffers();
        else if (word[0] == '!')
            refuseFrom = mallocs + std::stoi(word.substr(1));
        else if (word[0] == '-')
            held.erase(block), qrv_serv_deallocate(block);
        else if (word[sign] == '%')
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % std::stoul(word.substr(sign + 1)), 0U) << word;
        else if (word[sign + 1] == '=')
            EXPECT_EQ(block, blocks[word.substr(sign + 2)]) << word;
        else
            held.insert(block = take(std::stoul(word.substr(sign + 1)), std::stoi(word.substr(word.find('/') + 1))));
    }
    explicit Steps(const std::string& steps) {
        std::atomic<int> turn{0};
        std::vector<std::jthread> threads;
        for (char id = '0'; id < '4'; ++id)
            threads.emplace_back([&, id] {
                std::istringstream words(steps);
                char thread = '0';
                int next = 0;
                for (std::string word; words >> word; ++next) {
                    if (word[0] == '@')
                        thread = word[1];
                    if (thread != id)
                        continue;
                    while (turn != next)
                        std::this_thread::yield();
                    if (word[0] != '@')
                        step(word);
                    ++turn;
                }
            });
    }
    ~Steps() {
        for (void* block : held)
            qrv_serv_deallocate(block);
        refuseFrom = 1 << 30;
    }
    Steps(const Steps&) = delete;
};

TEST_F(WorkPool, Steps) {
    const std::string five = "a=1000/128 b=1000/128 c=1000/128 d=1000/128 e=1000/128 ",
                      sizes = "a=2000/128 -a a=1000/128 -a a=3000/128 -a a=4000/128 -a a=5000/128 -a ",
                      some = "a=500/64 -a @1 b=2000/64 -b c=1000/64 leave ",
                      three = "@1 a=9/64 -a @2 a=9/64 -a @3 a=9/64 -a ";
    const struct {
        const char* what;
        std::string steps;
        int buffers, bytes, blocks; // that malloc gave, a record for each thread too, and were not given back
    } rows[] = {
        {"nothing", "a=0/128 a==0 -a", 0, 0, 0},
        {"the same again", "a=1000/128 -a b=1000/128 -b a==b", 1, 1128, 2},
        {"alignments", "a=1000/96 a%32 b=1000/4096 b%4096 c=1000/64 c%64 d=1000/4 d%4 e=1000/-64", 5, 9196, 6},
        {"without one", "a=1000/0 b=1000/2", 2, 2000, 3},
        {"a larger slot serves as it is", sizes + "b=900/128", 5, 15640, 6},
        {"a full record refills a smaller one", sizes + "a=6000/128 -a", 5, 19640, 6},
        {"one that fits before larger ones", sizes + "c=1000/128 d=4000/128 -c e=1000/128 c==e", 5, 15640, 6},
        {"the first larger one, if it is free", sizes + "a=2500/128 b=2500/128 -a c=3000/128 a==c", 5, 15640, 6},
        {"a new slot before one of another size", "a=2000/128 -a b=1000/128", 2, 3256, 3},
        {"a sixth one is not kept", five + "f=1000/128 -f free", 5, 5640, 6},
        {"but five", five + "-a -b -c -d -e", 5, 5640, 6},
        {"large ones are not kept", "a=41943041/128 -a", 0, 0, 0},
        {"from a limit on", "a=41943040/128 -a", 1, 41943168, 2},
        {"given back elsewhere", "a=1000/128 @1 b=500/64 -a -b @0 c=1000/128 a==c", 2, 1692, 4},
        {"not even a record", "!0 a=1000/128 a==0", 0, 0, 0},
        {"a record alone, its slot held", "!1 a=1000/128 a==0 !9 b=1000/128", 2, 1128, 2},
        {"of a thread that leaves stays what is held", some, 3, 1628, 4},
        {"of another one too", some + "@0 leave", 2, 1064, 2},
        {"given back then", some + "@0 leave -c d=500/64 -d e=500/64 -e d==e", 3, 1628, 4},
        {"records go in any order", three + "@1 leave @3 leave", 1, 73, 2},
        {"no record of an earlier generation is used", three + "@0 free @2 a=9/64 -a", 1, 73, 2},
    };
    for (const auto& row : rows) {
        {
            const Steps steps(row.steps);
            EXPECT_EQ(kept(), std::pair(row.buffers, row.bytes)) << row.what;
            EXPECT_EQ(mallocs - frees, row.blocks) << row.what;
        }
        qrv_serv_free_buffers();
        EXPECT_EQ(mallocs, frees) << row.what;
    }
}

TEST(WorkPoolEnvironment, SwitchedOff) {
    expect_found({"ask"}, {}, "buffers=1");
    for (const char* name : {"QRV_DISABLE_FAST_MM", "QRV_MM_DISABLE"}) {
        expect_found({"ask"}, {{name, "0"}}, "buffers=-1 bytes=0");
        expect_found({"ask"}, {{name, ""}}, "buffers=1"); // empty is unset
    }
}

} // namespace
} // namespace qrv::test
