// LU factorization on every route: residuals, pivots, info, NaN, and real inputs. Teams are in
// getrf_team_test.cpp.
#include <gmock/gmock.h>

#include "matrix_file/matrix_file.hpp"
#include "qrv/native.h"
#include "support/lu.hpp"

namespace qrv::test {
namespace {

// The native routines on the threads of this machine, and the threaded bodies in wide and narrow block columns.
template <class T>
std::vector<LuRoute<T>> routes() {
    std::vector<LuRoute<T>> list = native_routes<T>();
    list.push_back(ib_route<T>(2));
    list.push_back(dynamic_route<T>(2, 64));
    list.push_back(dynamic_route<T>(2, 5));
    return list;
}

struct LuShape {
    int m, n;
};

// Nothing, and around the widths of blocks; square, tall and wide.
constexpr LuShape luShapes[] = {{0, 5},     {5, 0},     {1, 1},     {2, 2},    {1, 9},    {9, 1},    {7, 7},
                                {8, 8},     {9, 9},     {16, 16},   {17, 17},  {5, 17},   {17, 5},   {31, 33},
                                {32, 32},   {33, 31},   {64, 64},   {65, 65},  {40, 129}, {129, 40}, {65, 128},
                                {128, 128}, {129, 129}, {200, 130}, {130, 200}};

TEST_OF_ELEMENTS(Getrf, Residual) {
    for (const auto& route : routes<T>()) {
        int k = 0;
        for (const LuKind kind : luKinds)
            for (const auto& [m, n] : luShapes) {
                ++k;
                const auto a = lu_matrix<T>(kind, m, n, k % 3, k % 16);
                const double residual = lu_residual(a, factor(route, a));
                EXPECT_TRUE(residual <= luBound)
                    << residual << " for " << route << ", kind " << static_cast<int>(kind) << ", " << m << " x " << n;
            }
    }
}

TEST_OF_ELEMENTS(Getrf, TheSamePivotsOnEveryRoute) {
    for (const auto& route : routes<T>())
        for (const auto& [m, n] : luShapes) {
            const auto known = known_pivots<T>(m, n, 2);
            const auto f = factor(route, known.a);
            EXPECT_EQ(f.ipiv, known.ipiv) << route << ", " << m << " x " << n;
            EXPECT_EQ(f.info, 0);
        }
    const auto all = native_routes<T>();
    for (const auto& [m, n] : {LuShape{700, 700}, {1025, 300}, {300, 1025}, {1023, 1023}, {1024, 1025}}) {
        const auto known = known_pivots<T>(m, n);
        for (std::size_t r = 0; r < 3; ++r) {
            const auto f = factor(all[r], known.a);
            EXPECT_EQ(f.ipiv, known.ipiv) << all[r] << ", " << m << " x " << n;
            EXPECT_TRUE(m + n > 2000 || lu_residual(known.a, f) <= luBound) << all[r] << ", " << m << " x " << n;
        }
    }
}

// The first zero pivot is reported, wherever in blocks and panels it is, and the factors are complete.
TEST_OF_ELEMENTS(Getrf, InfoIsTheFirstZeroPivot) {
    constexpr int n = 133;
    for (const auto& route : routes<T>())
        for (const int first : {0, 6, 16, 17, 63, 64, 65, 127, 128, 131, 132}) {
            auto a = lu_matrix<T>(LuKind::random, n, n);
            for (const int zero : {first, n - 1})
                for (int i = 0; i < n; ++i)
                    a(i, zero) = T();
            const auto f = factor(route, a);
            EXPECT_EQ(f.info, first + 1) << route;
            EXPECT_EQ(f.ipiv[static_cast<std::size_t>(first)], first + 1) << route << ": the first row is the pivot";
            EXPECT_TRUE(lu_residual(a, f) <= luBound) << route << ", zero column " << first;
        }
}

// They spread and end in factors of some kind; rows that are named exist.
TEST_OF_ELEMENTS(Getrf, NanAndInfinity) {
    for (const auto& route : routes<T>())
        for (const auto& [m, n] : {LuShape{8, 8}, {100, 100}, {70, 150}, {150, 70}})
            for (const float value : {nan, infinity})
                for (const int at : {0, 3, 60, 67}) {
                    auto a = lu_matrix<T>(LuKind::random, m, n, 1);
                    a(std::min(at, m - 1), std::min(at * 3 % 70, n - 1)) = all_parts<T>(value);
                    const auto f = factor(route, a);
                    EXPECT_TRUE(pivots_in_range(f)) << route << ", " << m << " x " << n << ", at " << at;
                    EXPECT_TRUE(f.info >= 0 && f.info <= std::min(m, n)) << route;
                    EXPECT_GT(f.lu.count_bad([](int, int, T x) { return is_finite(x); }), 0) << route;
                }
}

// As ISAMAX and ICAMAX choose: |re| + |im| counts, and the element behind a NaN takes over from it.
TEST_OF_ELEMENTS(Getrf, PivotOfAColumn) {
    const T slanted = isComplex<T> ? all_parts<T>(0.8F) : scalar<T>(1.4F);
    for (const int m : {3, 40})
        for (const T third : {slanted, scalar<T>(0.5F)}) {
            Operand<T> a(m, 1, m);
            a.set([&](int i, int) { return i == 0 ? scalar<T>(1.3F) : i == 2 ? third : scalar<T>(0); });
            if (third == scalar<T>(0.5F))
                a(1, 0) = all_parts<T>(nan);
            for (const auto& route : routes<T>())
                EXPECT_EQ(factor(route, a).ipiv[0], 3) << route << ", " << m << " rows";
        }
}

// A pivot whose reciprocal would overflow, or vanish, divides its column.
TEST_OF_ELEMENTS(Getrf, PivotsAtTheEndsOfTheRange) {
    for (const float size : {0x1p-143F, 0x1.8p125F}) {
        const float column[] = {4, 2, -1};
        Operand<T> a(3, 1, 3);
        a.set([&](int i, int) { return all_parts<T>(column[i] * size); });
        for (const auto& route : routes<T>()) {
            const auto f = factor(route, a);
            EXPECT_TRUE(f.lu(1, 0) == scalar<T>(0.5F) && f.lu(2, 0) == scalar<T>(-0.25F)) << route;
        }
    }
}

// ---- Real inputs --------------------------------------------------------------------------------------------------

// As a full matrix with `extra` rows of gap between its columns. A complex file needs a complex T.
template <class T>
Operand<T> read_matrix_market(const std::string& path, int extra = 0) {
    const tools::AnyMatrix file = tools::read_matrix(path).matrix;
    const auto guarded = [extra](const auto& matrix, auto element) {
        return Operand<T>(matrix.rows, matrix.columns, matrix.rows + extra).set([&](int i, int j) {
            return element(matrix(i, j));
        });
    };
    if constexpr (isComplex<T>)
        return guarded(tools::to_complex(file), [](auto value) { return T{value.Re(), value.Im()}; });
    else
        return guarded(std::get<tools::Matrix<float>>(file), [](float value) { return value; });
}

template <class T>
void check_file(const char* name) {
    const auto a = read_matrix_market<T>(std::string(QRV_DATA) + "/" + name, 3);
    for (const auto& route : routes<T>()) {
        const auto f = factor(route, a);
        EXPECT_EQ(f.info, 0) << route << ", " << name;
        EXPECT_TRUE(lu_residual(a, f) <= luBound) << lu_residual(a, f) << " for " << route << ", " << name;
    }
}

TEST(GetrfFiles, Residual) {
    check_file<float>("olm500.mtx");
    check_file<float>("west0479.mtx");
    check_file<SingleComplex>("young1c.mtx");
}

} // namespace
} // namespace qrv::test
