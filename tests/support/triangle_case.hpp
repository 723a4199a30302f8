// Problems with a triangular or banded matrix: what is stored, what the matrix is, and how good a solution is.
#pragma once

#include "support/level2_case.hpp"

namespace qrv::test {

// Options of a triangular routine, and a matrix of n columns with k diagonals beside the main one, in full or in band
// storage. Whatever a routine must not read is NaN: the other triangle, corners of band storage, a unit diagonal.
template <class T>
struct TriangleCase {
    char uplo, trans, diag;
    int n, k;
    bool banded;
    Level2Matrix<T> a;

    TriangleCase(char uploOption, char transOption, char diagOption, const Level2Case& p, int diagonals, bool inBand)
        : uplo(uploOption), trans(transOption), diag(diagOption), n(p.n), k(diagonals), banded(inBand),
          a(inBand ? k + 1 : n, n, p) {
        std::mt19937 random(5);
        // Small beside the diagonal: solves are well-conditioned then, whatever the size.
        const float size = 2.0F / static_cast<float>(std::min(k, n) + 1);
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i)
                if (is_stored(i, j))
                    at(i, j) = i == j ? scalar<T>(1.5F) : scalar<T>(size) * any_size_one<T>(random);
        for (int j = 0; j < n; ++j)
            if (!unit())
                at(j, j) += scalar<T>(0.5F) * any_size_one<T>(random);
    }

    bool upper() const { return uplo == 'U' || uplo == 'u'; }
    bool unit() const { return diag == 'U' || diag == 'u'; }
    bool is_stored(int i, int j) const {
        const int above = upper() ? j - i : i - j;
        return above >= (unit() ? 1 : 0) && above <= k;
    }
    T& at(int i, int j) { return banded ? a((upper() ? k : 0) + i - j, j) : a(i, j); }

    // op(A), in double.
    auto entries() {
        return [this](int i, int j) { return entry(i, j); };
    }
    Wide<T> entry(int i, int j) {
        if (is_transposed(trans))
            std::swap(i, j);
        if (i == j && unit())
            return 1;
        if (!is_stored(i, j))
            return 0;
        const Wide<T> value = widen(at(i, j));
        return trans == 'C' || trans == 'c' ? conjugate(value) : value;
    }
};

template <class T>
std::ostream& operator<<(std::ostream& out, const TriangleCase<T>& t) {
    return out << (isComplex<T> ? "complex " : "real ") << t.uplo << t.trans << t.diag << " k=" << t.k;
}

// Every third combination of options, beginning with another one from case to case, so that all sizes meet all of them.
// Letters are of either case.
template <class Each>
void each_triangle_option(int number, const Each& each) {
    int combination = 0;
    for (const char* uplo : {"Ul", "uL"})
        for (const char trans : {'N', 't', 'C', 'c', 'T'})
            for (const char diag : {'n', 'U'})
                if (combination++ % 3 == number % 3)
                    each(uplo[is_transposed(trans)], trans, diag);
}

// All of that for each case: each(case, uplo, trans, diag). The walk along a triangle has no block that larger ones
// would fill.
template <class Each>
void each_triangle(const Each& each) {
    constexpr int largest = 1025;
    int number = 0;
    for (const Level2Case& p : level2_cases(true))
        if (p.n <= largest)
            each_triangle_option(number++, [&](auto... options) { each(p, options...); });
}

// Whether x := op(A)*x comes out on all builds, by routine(build, x).
template <class T, class Routine>
void expect_product(TriangleCase<T>& t, const Level2Case& p, const Routine& routine) {
    const auto vector = [&] { return GuardedVector<T>(p.n, p.incx, p.offset / 2, p.guard); };
    const auto start = [&](GuardedVector<T>& x) {
        std::mt19937 random(8);
        x.fill([&] { return any_size_one<T>(random); });
    };
    GuardedVector<T> before = vector();
    start(before);
    const auto expected = product<T>(scalar<T>(1), t.entries(), before, scalar<T>(0), before);
    for (const VectorBuild& build : vector_builds()) {
        GuardedVector<T> x = vector();
        start(x);
        routine(build, x.data());
        EXPECT_TRUE(expected.held_by(x)) << build << ' ' << t << ' ' << p;
    }
}

// Whether op(A)*x = b is solved for x: multiplied again, in double, x must give b, but for as many roundings as the
// product itself may have.
template <class T, class Routine>
void expect_solution(TriangleCase<T>& t, const Level2Case& p, const Routine& routine) {
    for (const VectorBuild& build : vector_builds()) {
        GuardedVector<T> b(p.n, p.incx), x(p.n, p.incx, p.offset / 2, p.guard);
        std::mt19937 random(8);
        b.fill([&] { return any_size_one<T>(random); });
        for (int i = 0; i < p.n; ++i)
            x[i] = b[i];
        routine(build, x.data());
        EXPECT_TRUE(product<T>(scalar<T>(1), t.entries(), x, scalar<T>(0), x).held_by(b) && x.guards_intact())
            << build << ' ' << t << ' ' << p;
    }
}

} // namespace qrv::test
