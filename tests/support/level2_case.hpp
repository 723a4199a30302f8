// Problems of BLAS level 2: sizes, increments and operands, and their results in double precision.
#pragma once

#include <ostream>

#include "support/builds.hpp"
#include "support/vectors.hpp"

namespace qrv::test {

// The kernel for an element type: real or complex.
template <class T, class Real, class Complex>
auto kernel_for(Real* real, Complex* complex) {
    if constexpr (isComplex<T>)
        return complex;
    else
        return real;
}

// The part of a diagonal element that a Hermitian matrix has.
inline double real_part(float x) {
    return x;
}
inline double real_part(SingleComplex x) {
    return x.re;
}

// ---- Cases --------------------------------------------------------------------------------------------------------

struct Level2Case {
    int m, n;
    int incx, incy;
    int extra = 0;             // leading dimension beyond the least
    int offset = 0;            // floats past a 64-byte boundary
    float alpha = 1, beta = 1; // see scalar_of
    Guard guard = Guard::canaries;
};

inline std::ostream& operator<<(std::ostream& out, const Level2Case& p) {
    return out << "m=" << p.m << " n=" << p.n << " incx=" << p.incx << " incy=" << p.incy << " ld+" << p.extra
               << " start " << p.offset << " alpha=" << p.alpha << " beta=" << p.beta << " guard "
               << static_cast<int>(p.guard);
}

// 0 and 1 as they are, others with an imaginary part.
template <class T>
T scalar_of(float x) {
    if constexpr (isComplex<T>)
        return {x, x == 0 || x == 1 ? 0 : 0.25F - x / 2};
    else
        return x;
}

// Sizes around those of vectors, passes and blocks. Increments, scalars, leading dimensions, starts and guards go round
// from case to case, so that each meets each; large sizes come once.
inline std::vector<Level2Case> level2_cases(bool square) {
    constexpr int small[] = {0, 1, 2, 3, 5, 8, 11, 15, 16, 17, 31, 32, 33};
    constexpr int large[][2] = {{64, 127},  {127, 64},  {128, 128}, {129, 300},
                                {300, 129}, {256, 256}, {1024, 33}, {33, 1025}};
    constexpr int largest[][2] = {{2051, 10}, {1025, 1024}, {4099, 3}}, largestSquares[] = {1025, 2051}; // once
    constexpr int increments[] = {1, -2, 1, 3, -1}, extras[] = {0, 1, 4, 16};
    constexpr float alphas[] = {1, -0.75F, 2, 1, 0}, betas[] = {1, 0, 0.5F};
    std::vector<Level2Case> cases;
    const auto add = [&](int m, int n) {
        const unsigned k =
            static_cast<unsigned>(cases.size()) + static_cast<unsigned>(cases.size()) / 60; // 60: the cycles
        cases.push_back({m, n, increments[k % 5], increments[k / 2 % 5], extras[k % 4], static_cast<int>(k * 5 % 16),
                         alphas[k / 3 % 5], betas[k / 7 % 3], static_cast<Guard>(k / 2 % 3)});
    };
    for (int round = 0; round < (square ? 12 : 3); ++round)
        for (const int m : small)
            for (const int n : small)
                if (!square || m == n)
                    add(m, n);
    for (int round = 0; round < 2; ++round)
        for (const auto& [m, n] : large)
            if (!square || m < 1000)
                add(m, square ? m : n);
    if (square)
        for (const int n : largestSquares)
            add(n, n);
    else
        for (const auto& [m, n] : largest)
            add(m, n);
    return cases;
}

// ---- Operands -----------------------------------------------------------------------------------------------------

// Which elements of a matrix are stored: all, or those of one triangle from some row (lower) or column (upper) on.
struct Stored {
    char uplo = 'A';
    int first = 0;
    bool operator()(int i, int j) const {
        switch (uplo) {
        case 'U':
        case 'u':
            return i <= j && j >= first;
        case 'L':
        case 'l':
            return i >= j && i >= first;
        default:
            return true;
        }
    }
};

// A column-major matrix with the guards of a vector; what is not stored in it is canaries, which are NaN.
template <class T>
class Level2Matrix {
public:
    Level2Matrix(int rows, int columns, const Level2Case& p, Stored stored = {})
        : rows_(rows), columns_(columns), ld_(std::max(1, rows) + p.extra), stored_(stored),
          elements_(rows < 1 || columns < 1 ? 0 : ld_ * (columns - 1) + rows, 1, p.offset, p.guard) {}

    int rows() const { return rows_; }
    int columns() const { return columns_; }
    const int& ld() const { return ld_; }
    bool stored(int i, int j) const { return stored_(i, j); }
    T* data() { return elements_.data(); }
    T& operator()(int i, int j) { return elements_.data()[i + std::ptrdiff_t{ld_} * j]; }

    // Stored elements become value(i, j).
    template <class Value>
    Level2Matrix& set(const Value& value) {
        for (int j = 0; j < columns_; ++j)
            for (int i = 0; i < rows_; ++i)
                if (stored_(i, j))
                    (*this)(i, j) = value(i, j);
        return *this;
    }
    Level2Matrix& fill(unsigned seed) {
        std::minstd_rand random(seed);
        return set([&](int, int) {
            return element<T>([&] { return static_cast<float>(static_cast<int>(random()) - (1 << 30)) * 0x1p-30F; });
        });
    }
    // Whether nothing but stored elements has been written.
    bool guards_intact() {
        bool intact = elements_.guards_intact();
        for (int j = 0; rows_ > 0 && j < columns_; ++j)
            for (int i = 0; i < (j + 1 < columns_ ? ld_ : rows_); ++i)
                intact = intact && ((i < rows_ && stored_(i, j)) || untouched(i, j));
        return intact;
    }

private:
    bool untouched(int i, int j) {
        const float* const p = reinterpret_cast<const float*>(&(*this)(i, j));
        return GuardedVector<T>::intact(p, p + sizeof(T) / sizeof(float));
    }

    int rows_, columns_, ld_;
    Stored stored_;
    GuardedVector<T> elements_;
};

template <class T>
GuardedVector<T>& fill_random(GuardedVector<T>& x, unsigned seed) {
    std::mt19937 random(seed);
    return x.fill([&] { return any_size_one<T>(random); });
}

// ---- Results ------------------------------------------------------------------------------------------------------

// What a vector should become, and how far off each element may be.
template <class T>
struct ExpectedVector {
    std::vector<Wide<T>> values;
    std::vector<double> allowed;

    bool held_by(GuardedVector<T>& y) const {
        return holds(y, values, [&](std::size_t i) { return allowed[i]; });
    }
};

constexpr double unitRoundoff = std::numeric_limits<float>::epsilon() / 2;

// alpha*A*x + beta*y, where A is whatever entry(i, j) says, in double; with beta = 0 y is not looked at. A sum of n
// products may be off by about n roundings of its terms' sizes, a complex product by three times as much.
template <class T, class Entry>
ExpectedVector<T> product(T alpha, const Entry& entry, GuardedVector<T>& x, T beta, GuardedVector<T>& y) {
    const Wide<T> a = widen(alpha), b = widen(beta);
    ExpectedVector<T> result;
    for (int i = 0; i < y.size(); ++i) {
        Wide<T> sum = 0;
        double size = 0;
        for (int j = 0; a != 0.0 && j < x.size(); ++j) {
            const Wide<T> term = entry(i, j) * widen(x[j]);
            sum += term;
            size += std::abs(term);
        }
        const Wide<T> scaled = b == 0.0 ? 0 : b * widen(y[i]);
        const double steps = isComplex<T> ? 3 * (x.size() + 3) : x.size() + 3;
        result.values.push_back(a * sum + scaled);
        result.allowed.push_back(unitRoundoff * (steps * std::abs(a) * size + 4 * std::abs(scaled)));
    }
    return result;
}

} // namespace qrv::test
