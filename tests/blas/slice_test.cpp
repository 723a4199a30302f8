// What each thread of a team works on: every partition covers its matrix or vector once, in whole units.
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include "blas/thread/32/level3/level3_threads.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/level3/gemm_partition.hpp"
#include "blas/thread/common/slice.hpp"

namespace qrv::test {
namespace {

constexpr int most = std::numeric_limits<int>::max();

// Whether slice_of(0), slice_of(1), ... follow each other from 0 to n, the inner ones of a multiple of `unit`; and an
// address is taken at `first` even where nothing is there, so it stays inside.
template <class SliceOf>
void expect_cover(const char* what, int n, int parts, int unit, const SliceOf& slice_of) {
    int next = 0;
    for (int part = 0; part < parts; ++part) {
        const Slice slice = slice_of(part);
        SCOPED_TRACE(testing::Message() << what << ' ' << n << " on " << parts << ", part " << part);
        ASSERT_TRUE(slice.first == next || (slice.count == 0 && next == n));
        ASSERT_TRUE(slice.first < n || n == 0);
        ASSERT_TRUE(slice.count >= 0 && slice.count <= n - next);
        ASSERT_TRUE(part == parts - 1 || next + slice.count == n || slice.count % unit == 0);
        next += slice.count;
    }
    ASSERT_EQ(next, n) << what << " on " << parts;
}

TEST(Slices, CoverEverythingOnce) {
    for (int n = 0; n <= 300; ++n)
        for (int team = 1; team <= 20; ++team) {
            for (const int unit : {1, 2, 4})
                expect_cover("equal", n, team, unit, [&](int part) { return equal_slice(n, team, part, unit); });
            expect_cover("vector", n, team, 8, [&](int part) { return vector_slice(n, team, part); });
            expect_cover("gemv T", n, team, 8,
                         [&](int part) { return gemv_slice(Op::transpose, 7, n, team, part, 8); });
            expect_cover("gemv N", n, team, 8, [&](int part) { return gemv_slice(Op::none, n, 7, team, part, 1); });
            for (const int unit : {8, 16})
                expect_cover("tiles", n, team, unit, [&](int part) { return tile_slice(n, team, part, unit); });
            for (const bool byWork : {false, true}) {
                expect_cover("matrix L", n, team, byWork ? 4 : 1, [&](int part) {
                    const MatrixSlice slice = matrix_slice({Side::left, 7, n, 0}, byWork, team, part);
                    EXPECT_TRUE(slice.row == 0 && slice.m == 7);
                    return Slice{slice.column, slice.n};
                });
                expect_cover("matrix R", n, team, byWork ? 16 : 1, [&](int part) {
                    const MatrixSlice slice = matrix_slice({Side::right, n, 7, 0}, byWork, team, part);
                    EXPECT_TRUE(slice.column == 0 && slice.n == 7);
                    return Slice{slice.row, slice.m};
                });
            }
            for (const Uplo uplo : {Uplo::upper, Uplo::lower}) {
                int next = 0;
                for (int part = 0; part < team; ++part) {
                    const auto [columns, beside] = trapezoid(uplo, n, team, part);
                    ASSERT_TRUE(columns.first == next && columns.count >= 0) << n << ' ' << team << ' ' << part;
                    next += columns.count;
                    ASSERT_EQ(beside.first, uplo == Uplo::upper ? 0 : next);
                    ASSERT_EQ(beside.count, uplo == Uplo::upper ? columns.first : n - next);
                }
                ASSERT_EQ(next, n) << team;
            }
            expect_cover("triangle's block rows", n, team, 1, [&](int part) {
                const auto [rows, rest] = triangle_block_row(n, team, part);
                EXPECT_TRUE(rest.first == rows.first + rows.count && rest.first + rest.count == n);
                return rows;
            });
            if (team == 1)
                continue;
            for (const TriangleCut cut : {TriangleCut::third, TriangleCut::twoThirds})
                expect_cover("triangle", n, team, 8, [&](int part) { return triangle_slice(n, team, part, cut); });
            expect_cover("symv", n, team & ~1, 8, [&](int part) {
                const SymvBlock block = symv_block(n, symv_blocks(team), part);
                EXPECT_EQ(block.before, block.rows.first);
                EXPECT_EQ(block.before + block.rows.count + block.after, n);
                return block.rows;
            });
        }
}

// Tiles are dealt out evenly, trapezoids have about equal areas, and of two bands of a triangle the one with the long
// rows is half as wide.
TEST(Slices, AreOfEqualWork) {
    for (const Uplo uplo : {Uplo::upper, Uplo::lower}) {
        EXPECT_EQ(syr_band(3000, 2, 0, uplo).count, uplo == Uplo::upper ? 2000 : 1000);
        for (const Op op : {Op::none, Op::transpose})
            EXPECT_EQ(trmv_band(3000, 2, 0, uplo, op).slice.count,
                      (uplo == Uplo::upper) == (op == Op::none) ? 1000 : 2000);
    }
    for (const int n : {1000, 4096})
        for (const int team : {2, 3, 8})
            for (int part = 0; part < team; ++part) {
                EXPECT_NEAR(tile_slice(n, team, part, 16).count, static_cast<double>(n) / team, 32);
                for (const Uplo uplo : {Uplo::upper, Uplo::lower}) {
                    const auto [columns, beside] = trapezoid(uplo, n, team, part);
                    EXPECT_NEAR(columns.count * (beside.count + columns.count / 2.0), 0.5 * n * n / team, 32.0 * n)
                        << n << ' ' << team << ' ' << part;
                }
            }
}

// A slice handed to a routine names the elements that it names in the whole vector.
TEST(Slices, OfAnyIncrement) {
    const auto index = [](int n, int inc, int element) { // from the address given
        return std::ptrdiff_t{inc >= 0 ? element : element - (n - 1)} * inc;
    };
    for (const int n : {1, 7, 16, 100, 299})
        for (const int team : {1, 2, 3, 7, 20})
            for (const int inc : {1, 2, 7, -1, -2, -7})
                for (int thread = 0; thread < team; ++thread) {
                    const Slice slice = vector_slice(n, team, thread);
                    for (int i = 0; i < slice.count; ++i)
                        EXPECT_EQ(slice_offset(slice, n, inc) + index(slice.count, inc, i),
                                  index(n, inc, slice.first + i))
                            << n << " on " << team << " inc=" << inc;
                }
    if constexpr (sizeof(std::ptrdiff_t) > sizeof(int)) {
        EXPECT_EQ(slice_offset({1 << 30, 8}, most, 4), std::int64_t{1} << 32);
        EXPECT_EQ(slice_offset({0, 8}, most, -4), std::int64_t{most - 8} * 4);
    }
}

} // namespace
} // namespace qrv::test
