// Test matrices: random data, guard bands, and the double-precision product they are checked against.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace qrv::test {

// A column-major matrix with a leading dimension, a chosen start offset (in floats past a 64-byte boundary) and
// canaries in front of it, behind it and in the gaps between its columns.
class GuardedMatrix {
public:
    GuardedMatrix(int rows, int columns, int ld, int offset = 0)
        : rows_(rows), columns_(columns), ld_(ld),
          storage_(static_cast<std::size_t>(ld) * static_cast<std::size_t>(columns) + 3 * band, canary()) {
        const auto address = reinterpret_cast<std::uintptr_t>(storage_.data());
        first_ = band + (64 - address % 64) % 64 / sizeof(float) + static_cast<std::size_t>(offset);
    }

    float* data() { return storage_.data() + first_; }
    const float* data() const { return storage_.data() + first_; }
    int ld() const { return ld_; }
    int rows() const { return rows_; }
    int columns() const { return columns_; }
    float& operator()(int i, int j) { return data()[i + static_cast<std::ptrdiff_t>(ld_) * j]; }
    float operator()(int i, int j) const { return data()[i + static_cast<std::ptrdiff_t>(ld_) * j]; }

    GuardedMatrix& fill_random(std::mt19937& random) {
        std::uniform_real_distribution<float> uniform(-1, 1);
        for (int j = 0; j < columns_; ++j)
            for (int i = 0; i < rows_; ++i)
                (*this)(i, j) = uniform(random);
        return *this;
    }
    GuardedMatrix& fill(float value) {
        for (int j = 0; j < columns_; ++j)
            for (int i = 0; i < rows_; ++i)
                (*this)(i, j) = value;
        return *this;
    }

    // The elements of a matrix of the same size.
    GuardedMatrix& assign(const GuardedMatrix& other) {
        for (int j = 0; j < columns_; ++j)
            for (int i = 0; i < rows_; ++i)
                (*this)(i, j) = other(i, j);
        return *this;
    }

    // Whether every float outside the matrix still holds the canary.
    bool guards_intact() const {
        std::size_t inside = 0;
        for (std::size_t p = 0; p < storage_.size(); ++p) {
            const bool within = p >= first_ &&
                                p < first_ + static_cast<std::size_t>(ld_) * static_cast<std::size_t>(columns_) &&
                                (p - first_) % static_cast<std::size_t>(ld_) < static_cast<std::size_t>(rows_);
            inside += within;
            if (!within && storage_[p] != canary())
                return false;
        }
        return inside == static_cast<std::size_t>(rows_) * static_cast<std::size_t>(columns_);
    }

private:
    static constexpr std::size_t band = 64;
    static float canary() { return -7.0e33F; }

    int rows_, columns_, ld_;
    std::vector<float> storage_;
    std::size_t first_;
};

inline bool is_transposed(char option) {
    return option != 'N' && option != 'n';
}

// alpha*op(A)*op(B) + beta*C0 in double, to compare one or several results with.
class GemmReference {
public:
    GemmReference(char transa, char transb, int k, float alpha, const GuardedMatrix& a, const GuardedMatrix& b,
                  float beta, const GuardedMatrix& before)
        : rows_(before.rows()), columns_(before.columns()) {
        constexpr double unit = std::numeric_limits<float>::epsilon() / 2;
        for (int j = 0; j < columns_; ++j)
            for (int i = 0; i < rows_; ++i) {
                double sum = 0, size = 0;
                for (int l = 0; l < k; ++l) {
                    const double x = is_transposed(transa) ? a(l, i) : a(i, l);
                    const double y = is_transposed(transb) ? b(j, l) : b(l, j);
                    sum += x * y;
                    size += std::abs(x * y);
                }
                const double scaled = beta == 0 ? 0 : static_cast<double>(beta) * before(i, j);
                expected_.push_back(alpha * sum + scaled);
                allowed_.push_back(unit * ((k + 3) * std::abs(alpha) * size + 2 * std::abs(scaled)) +
                                   std::numeric_limits<float>::denorm_min());
            }
    }

    // Largest error of C in units of the rounding that a sum of k + 2 terms of that size may have: at most about 1
    // for a good product. NaN if an element that should be finite is not.
    double error(const GuardedMatrix& c) const {
        double worst = 0;
        std::size_t p = 0;
        for (int j = 0; j < columns_; ++j)
            for (int i = 0; i < rows_; ++i, ++p) {
                const double error = std::abs(c(i, j) - expected_[p]) / allowed_[p];
                if (!(error <= worst))
                    worst = error;
            }
        return worst;
    }

private:
    int rows_, columns_;
    std::vector<double> expected_, allowed_; // by columns
};

inline double gemm_error(char transa, char transb, int k, float alpha, const GuardedMatrix& a, const GuardedMatrix& b,
                         float beta, const GuardedMatrix& before, const GuardedMatrix& c) {
    return GemmReference(transa, transb, k, alpha, a, b, beta, before).error(c);
}

} // namespace qrv::test
