// How teams divide the results of level 3: properties of the partitions, and one known row each.
#include <gtest/gtest.h>
#include <vector>

#include "blas/thread/32/level3/level3_threads.hpp"
#include "blas/thread/32/level3/triangle_blocks.hpp"

namespace qrv::test {
namespace {

// How often a team computes each element of an m x n matrix.
class Visits {
public:
    Visits(int m, int n) : m_(m), times_(std::size_t(m) * std::size_t(n)) {}
    void add(MatrixSlice s) {
        for (int j = s.column; j < s.column + s.n; ++j)
            for (int i = s.row; i < s.row + s.m; ++i)
                ++times_[std::size_t(i) + std::size_t(m_) * std::size_t(j)];
    }
    template <class Expected>
    bool are(const Expected& expected) const {
        for (std::size_t p = 0; p < times_.size(); ++p)
            if (times_[p] != expected(int(p) % m_, int(p) / m_))
                return false;
        return true;
    }

private:
    int m_;
    std::vector<int> times_;
};

TEST(Level3Slices, CoverTheMatrixOnce) {
    for (const Side side : {Side::left, Side::right})
        for (int n = 1; n < 40; ++n)
            for (int team = 1; team < 20; ++team) {
                Visits visits(n, n + 3);
                for (int thread = 0; thread < team; ++thread)
                    visits.add(matrix_slice(side, n, n + 3, team, thread));
                EXPECT_TRUE(visits.are([](int, int) { return 1; })) << n << ' ' << team;
            }
    const MatrixSlice last = matrix_slice(Side::right, 10, 5, 3, 2);
    EXPECT_TRUE(last.row == 6 && last.m == 4 && last.column == 0 && last.n == 5);
}

TEST(Level3Slices, BlockRowsCoverTheTriangleOnce) {
    for (int n = 1; n < 70; ++n)
        for (int team = 1; team < 20; ++team) {
            Visits visits(n, n);
            for (int part = 0; part < team; ++part) {
                const auto [rows, rest] = triangle_block_row(n, team, part);
                for (int i = rows.first; i < rows.first + rows.count; ++i)
                    visits.add({i, i, 1, rest.first + rest.count - i});
            }
            EXPECT_TRUE(visits.are([](int i, int j) { return i <= j; })) << n << ' ' << team;
        }
    EXPECT_EQ(triangle_block_row(17, 2, 1).rows.count, 9);
}

// The budget is asked for last.
struct FourThreads {
    int* asked;
    constexpr int budget() const { return ++*asked, 4; }
};
constexpr int threads_for(int m, int n, int questions) {
    int asked = 0;
    const int threads = sliced_threads(m, n, FourThreads{&asked});
    return asked == questions ? threads : -1;
}
static_assert(threads_for(16, 16, 0) == 1);
static_assert(threads_for(17, 16, 1) == 4);
static_assert(threads_for(1, 17, 1) == 4);

} // namespace
} // namespace qrv::test
