// What each thread of a team works on: every partition covers its matrix or vector once, in whole units.
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

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
            for (const bool byWork : {false, true})
                for (const Side side : {Side::left, Side::right}) {
                    const bool left = side == Side::left;
                    const int tile = left ? 4 : 16;
                    expect_cover("matrix", n, team, byWork ? tile : 1, [&](int part) {
                        const auto [row, column, rows, columns] =
                            matrix_slice({side, left ? 7 : n, left ? n : 7, 0}, byWork, team, part);
                        EXPECT_TRUE(left ? row == 0 && rows == 7 : column == 0 && columns == 7);
                        return left ? Slice{column, columns} : Slice{row, rows};
                    });
                }
            for (const Uplo uplo : {Uplo::upper, Uplo::lower})
                expect_cover("trapezoids", n, team, 1, [&](int part) {
                    const auto [columns, beside] = trapezoid(uplo, n, team, part);
                    const int end = columns.first + columns.count;
                    EXPECT_EQ(beside.first, uplo == Uplo::upper ? 0 : end);
                    EXPECT_EQ(beside.count, uplo == Uplo::upper ? columns.first : n - end);
                    return columns.first < n ? columns : Slice{};
                });
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
            EXPECT_EQ(trmv_band(3000, 2, 0, uplo, op, false).slice.count,
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

// Where offsets are beyond an int.
TEST(Slices, FarApart) {
    if constexpr (sizeof(std::ptrdiff_t) > sizeof(int)) {
        EXPECT_EQ(slice_offset({1 << 30, 8}, most, 4), std::int64_t{1} << 32);
        EXPECT_EQ(slice_offset({0, 8}, most, -4), std::int64_t{most - 8} * 4);
    }
    constexpr std::size_t all = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(gemm_shared_bytes(3, 1000, 12), 3U * (1000 + 8192));
    for (const auto& [copies, bytes] : {std::pair{3, all / 2}, {1, all - 5}, {most, all / 4}})
        EXPECT_EQ(gemm_shared_bytes(copies, bytes, 12), 0U) << copies;
}

} // namespace
} // namespace qrv::test
