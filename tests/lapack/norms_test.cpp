// Norms and copies against their definitions in double; what is not stored is NaN.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

#include "qrv/native.h"
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

template <class T>
float computed(char norm, const Operand<T>& a) {
    const int m = a.rows(), n = a.columns();
    GuardedVector<float> work(norm == 'I' || norm == 'i' ? m : 0);
    return a.form().kind == Form::general
               ? call_for<T>(SLANGE, CLANGE, norm, m, n, a, work)
               : call_for<T>(SLANTR, CLANTR, norm, a.form().uplo, a.form().diag, m, n, a, work);
}

TEST_OF_ELEMENTS(Norms, AsDefined) {
    combine({std::pair{1, 1}, {1, 5}, {5, 1}, {7, 7}, {30, 33}, {33, 30}}, {"AN", "UN", "UU", "LN", "LU"},
            {1.0F, 0x1p100F, 0x1p-120F})
        .each([](const auto& shape, const char* options, float size) {
            const auto [m, n] = shape;
            if ((options[0] == 'U' && m > n) || (options[0] == 'L' && m < n))
                return;
            const auto kind = options[0] == 'A' ? Form::general : Form::triangular;
            Operand<T> a(Form{m, n, kind, options[0], options[1]}, {.extra = 3});
            std::mt19937 random(7);
            a.set([&](int, int) { return scalar<T>(size) * any_size_one<T>(random); });
            for (const std::string names : {"Mm", "Oo1", "Ii", "FfEe"})
                for (const char which : names) {
                    const double expected = norm(WideMatrix<T>(a), names[0]), units = shape.first * shape.second + 8;
                    EXPECT_LE(std::abs(computed(which, a) - expected), units * unitRoundoff * expected) << which;
                }
        });
}

// The largest so far is replaced by what does not compare below it.
TEST_OF_ELEMENTS(Norms, NanIsReplacedByTheNext) {
    const auto norm_of = [](char norm, std::vector<float> columns) { // of a 1 x n matrix
        std::vector<T> a;
        for (const float x : columns)
            a.push_back(scalar<T>(x));
        float work = 0;
        return call_for<T>(SLANGE, CLANGE, norm, 1, static_cast<int>(a.size()), a, 1, &work);
    };
    for (const char norm : {'M', '1'}) {
        EXPECT_EQ(norm_of(norm, {9, nan, 2, 1}), 2) << norm;
        EXPECT_EQ(norm_of(norm, {9, nan, 2, 3}), 3) << norm;
        EXPECT_TRUE(std::isnan(norm_of(norm, {9, 1, nan}))) << norm;
        EXPECT_EQ(norm_of(norm, {1, infinity, 3}), infinity) << norm;
        EXPECT_EQ(norm_of(norm, {}), 0) << norm;
    }
    std::vector<T> columns(60, scalar<T>(9));
    for (int i = 31; i < 60; ++i)
        columns[static_cast<std::size_t>(i)] = scalar<T>(i == 31 ? nan : i == 50 ? 3 : 2);
    const auto largest = [&](int m, int n) { return call_for<T>(SLANGE, CLANGE, 'M', m, n, columns, m, nullptr); };
    EXPECT_EQ(largest(30, 2), 3) << "inside a column";
    EXPECT_TRUE(std::isnan(largest(32, 1)));
    EXPECT_TRUE(std::isnan(norm_of('I', {9, nan, 2}))) << "a row sum";
    EXPECT_TRUE(std::isnan(norm_of('F', {9, nan, 2})));
    EXPECT_EQ(norm_of('F', {infinity, 1, infinity}), infinity);
}

TEST_OF_ELEMENTS(Norms, SquaresAreAddedToWhatIsThere) {
    std::vector<T> x{scalar<T>(3), scalar<T>(99), scalar<T>(-4), scalar<T>(99)};
    float scale = 12, sumsq = 1;
    call_for<T>(SLASSQ, CLASSQ, -1, x, 2, &scale, &sumsq);
    EXPECT_EQ(scale * scale * sumsq, 144);
    call_for<T>(SLASSQ, CLASSQ, 2, x, 2, &scale, &sumsq);
    EXPECT_NEAR(scale * std::sqrt(sumsq), 13, 1e-5);
    EXPECT_EQ(scale, 12);
}

TEST_OF_ELEMENTS(Norms, CopiesOfWhatIsNamed) {
    std::mt19937 random(3);
    combine({std::pair{0, 3}, {1, 1}, {24, 30}, {25, 30}, {26, 30}, {60, 31}}, {'U', 'u', 'L', 'l', 'A', 'B', '\0'})
        .each([&](const auto& shape, char uplo) {
            const int m = shape.first, n = shape.second;
            const char kind = static_cast<char>(uplo & ~0x20);
            const auto is_copied = [&](int i, int j) { return kind == 'U' ? i <= j : kind == 'L' ? i >= j : true; };
            Operand<T> a(m, n, m + 1, 1), b(m, n, m + 2, 2);
            a.fill_random(random);
            call_for<T>(SLACPY, CLACPY, uplo, m, n, a, b.fill(5));
            const auto isRight = [&](int i, int j, T x) { return x == (is_copied(i, j) ? a(i, j) : all_parts<T>(5)); };
            EXPECT_EQ(b.count_bad(isRight), 0);
            if constexpr (!isComplex<T>) { // to complex elements
                Operand<SingleComplex> c(m, n, m + 3);
                call(CLACP2, uplo, m, n, a, c.fill(5));
                EXPECT_EQ(c.count_bad([&](int i, int j, SingleComplex x) {
                    return x == (is_copied(i, j) ? SingleComplex{a(i, j), 0} : SingleComplex{5, 5});
                }),
                          0);
            }
        });
}

TEST(SymmetricNorms, AreThoseOfTheWholeMatrix) {
    std::mt19937 random(5);
    combine({0, 1, 2, 5, 33}, {1.0F, 0x1p100F, 0x1p-120F}, "Ul", "MmOo1IiFfEe")
        .each([&](int n, float size, char uplo, char norm) {
            Operand<float> a(Form{n, n, Form::symmetric, uplo}, Layout{2}), whole(n, n, n + 1), three(n, n, n + 1);
            a.set([&](int, int) { return size * any_size_one<float>(random); });
            whole.set([&](int i, int j) { return static_cast<float>(a.entry(i, j)); });
            GuardedVector<float> d(n), e(n - 1), work(std::strchr("Oo1Ii", norm) ? n : 0), unused(n);
            for (auto* v : {&d, &e})
                v->fill([&] { return size * any_size_one<float>(random); });
            three.set([&](int i, int j) { return i == j ? d[i] : std::abs(i - j) == 1 ? e[std::min(i, j)] : 0; });
            const float allowed = (n + 8) * 0x1p-23F, expected = call(SLANGE, norm, n, n, whole, unused),
                        tridiagonal = call(SLANGE, norm, n, n, three, unused);
            EXPECT_NEAR(call(SLANSY, norm, uplo, n, a, work), expected, allowed * expected);
            EXPECT_NEAR(call(SLANST, norm, n, d, e), tridiagonal, allowed * tridiagonal);
        });
}

TEST_OF_ELEMENTS(Norms, PartsAreSet) {
    const T beside = scalar_of<T>(3), diagonal = scalar_of<T>(-2);
    combine({std::pair{0, 3}, {1, 1}, {4, 7}, {7, 4}}, "UlA").each([&](const auto& shape, char uplo) {
        Operand<T> a(Form{shape.first, shape.second, Form::general, uplo}, Layout{2});
        call_for<T>(SLASET, CLASET, uplo, shape.first, shape.second, beside, diagonal, a);
        EXPECT_EQ(a.count_bad([&](int i, int j, T x) { return x == (i == j ? diagonal : beside); }), 0);
    });
}

// Quotients that no float holds, on every kind of storage.
TEST_OF_ELEMENTS(Norms, MultiplesOfWhatIsStored) {
    struct Row {
        const char* type;
        Form form; // of 5 rows
        int kl, ku;
    };
    const Form::Kind general = Form::general;
    const Row rows[] = {{"G", {5, 3}, 9, 9},
                        {"l", {5, 7, general, 'L'}, 9, 9},
                        {"L", {5, 3, general, 'L'}, 9, 9},
                        {"U", {5, 7, general, 'U'}, 9, 9},
                        {"u", {5, 3, general, 'U'}, 9, 9},
                        {"B", {5, 5, general, 'L', 'N', true, 2, 0}, 2, 2},
                        {"q", {5, 5, general, 'U', 'N', true, 0, 2}, 2, 2},
                        {"Z", {5, 7, general, 'A', 'N', true, 2, 1}, 2, 1}};
    std::mt19937 random(8);
    struct Quotient {
        float from, to, size;
    };
    combine({Quotient{0x1p-100F, 0x1p90F, 0x1p-120F}, {0x1p120F, 0x1p-20F, 0x1p120F}, {-3, 1, 1}, {2, 0, 1}}, rows)
        .each([&](const Quotient& q, const Row& row) {
            Form stored = row.form;
            if (*row.type == 'Z')
                stored.above += row.kl; // room that is not looked at
            Operand<T> a(stored, Layout{1});
            const auto in_band = [&](int i, int j) { return !stored.banded || j - i <= row.ku; };
            a.set([&](int i, int j) {
                return in_band(i, j) ? scalar<T>(q.size) * any_size_one<T>(random) : all_parts<T>(7);
            });
            const Operand<T> before = a;
            const auto [m, n] = std::pair(row.form.rows, row.form.columns);
            EXPECT_EQ(call_for<T>(SLASCL, CLASCL, row.type, row.kl, row.ku, q.from, q.to, m, n, a), 0);
            EXPECT_EQ(a.count_bad([&](int i, int j, T x) {
                const auto expected = widen(before(i, j)) * (double{q.to} / q.from);
                return in_band(i, j) ? std::abs(widen(x) - expected) <= 0x1p-22 * std::abs(expected)
                                     : same_bits(x, before(i, j));
            }),
                      0)
                << row.type << ' ' << q.to << " / " << q.from;
        });
}

// The first diagonal below belongs to it too.
TEST(Multiples, OfHessenbergMatrices) {
    Operand<float> a(5, 5, 5);
    a.fill(1);
    call(SLASCL, 'H', 0, 0, 1.0F, 2.0F, 5, 5, a);
    EXPECT_EQ(a.count_bad([](int i, int j, float x) { return x == (i <= j + 1 ? 2 : 1); }), 0);
}

} // namespace
} // namespace qrv::test
