// Problems of level 3 with a symmetric or Hermitian matrix: operands of which only one triangle is stored, and the
// comparison of a result with one in double precision.
#pragma once

#include "support/level2_case.hpp"

namespace qrv::test {

// Sizes around those of vectors, blocks and halves; the other dimensions go with them.
constexpr int splitSizes[] = {0,   1,   7,   8,   9,   15,  16,  17,  31,  32,  33,  63,   64,   65,  127,
                              128, 129, 191, 192, 193, 255, 256, 257, 511, 512, 513, 1023, 1024, 1025};

// Leading dimension, start, scalars and guards change from case to case, so that each meets each.
struct SymmetricCase : Level2Case {
    int k = 0;
    SymmetricCase(int number, int rows, int columns, int depth) : Level2Case{rows, columns, 1, 1}, k(depth) {
        constexpr float alphas[] = {-0.75F, 1, 2, 1, 0}, betas[] = {0.5F, 0, 1};
        extra = number % 4 * (number % 3);
        offset = number * 5 % 16;
        alpha = alphas[number % 5];
        beta = betas[(number + number / 15) % 3];
        guard = static_cast<Guard>(number / 2 % 3);
    }
};

constexpr bool is_upper(char uplo) {
    return uplo == 'U' || uplo == 'u';
}

// x without an imaginary part, or with one that must not be read.
inline void set_imaginary(float&, float) {}
inline void set_imaginary(SingleComplex& x, float value) {
    x.im = value;
}

// What has a diagonal that is read as real numbers is NaN in its imaginary part.
template <class T>
void poison_diagonal(Level2Matrix<T>& x) {
    for (int i = 0; i < x.rows(); ++i)
        set_imaginary(x(i, i), nan);
}
template <class T>
void fill_operand(Level2Matrix<T>& x, bool unread, unsigned seed) {
    if (unread)
        x.set([](int, int) { return all_parts<T>(nan); });
    else
        x.fill(seed);
}

// op(X) in double, by rows.
template <class T>
std::vector<Wide<T>> widened_rows(int rows, int columns, bool transposed, bool conjugated, Level2Matrix<T>& x) {
    std::vector<Wide<T>> values;
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < columns; ++j) {
            const Wide<T> value = widen(transposed ? x(j, i) : x(i, j));
            values.push_back(conjugated ? conjugate(value) : value);
        }
    return values;
}

// A sum of products with the sizes of its terms.
template <class T>
struct SizedSum {
    Wide<T> value = 0;
    double size = 0;

    void add_products(Wide<T> factor, int count, const Wide<T>* x, const Wide<T>* y, bool conjugated = false) {
        Wide<T> sum = 0;
        for (int l = 0; l < count; ++l) {
            const Wide<T> term = x[l] * (conjugated ? conjugate(y[l]) : y[l]);
            sum += term;
            size += std::abs(factor) * std::abs(term);
        }
        value += factor * sum;
    }
    // Whether x is this, but for as many roundings as a sum of that many products may have.
    bool held_by(T x, Wide<T> scaled, int products) const {
        const double steps = isComplex<T> ? 3 * (products + 3) : products + 3;
        const double allowed = unitRoundoff * (steps * size + 4 * std::abs(scaled));
        return std::abs(widen(x) - (value + scaled)) <= allowed;
    }
};

template <class T>
bool same_bits(const T& x, const T& y) {
    return std::memcmp(&x, &y, sizeof x) == 0;
}

} // namespace qrv::test
