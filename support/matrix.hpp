// Full column-major matrices as files hold them and as the provider takes them.
#pragma once

#include <cstddef>
#include <qrv/providers.hpp>
#include <type_traits>
#include <variant>
#include <vector>

namespace support {

using Corvex::Mathematics::SingleComplex;

template <class T>
inline constexpr bool isComplex = std::is_same_v<T, SingleComplex>;

template <class T> // float or SingleComplex
struct Matrix {
    int rows = 0, columns = 0;
    std::vector<T> values; // column by column, without gaps

    Matrix() = default;
    Matrix(int m, int n) : rows(m), columns(n), values(static_cast<std::size_t>(m) * static_cast<std::size_t>(n)) {}

    T& operator()(int i, int j) { return values[index(i, j)]; }
    T operator()(int i, int j) const { return values[index(i, j)]; }

private:
    std::size_t index(int i, int j) const {
        return static_cast<std::size_t>(j) * static_cast<std::size_t>(rows) + static_cast<std::size_t>(i);
    }
};

using AnyMatrix = std::variant<Matrix<float>, Matrix<SingleComplex>>;

// The same matrix with complex elements.
inline Matrix<SingleComplex> to_complex(const Matrix<float>& a) {
    Matrix<SingleComplex> result(a.rows, a.columns);
    result.values.assign(a.values.begin(), a.values.end());
    return result;
}
inline Matrix<SingleComplex> to_complex(const AnyMatrix& a) {
    if (const auto* real = std::get_if<Matrix<float>>(&a))
        return to_complex(*real);
    return std::get<Matrix<SingleComplex>>(a);
}

// Of a square matrix, to the last bit.
inline bool is_symmetric(const Matrix<float>& a) {
    for (int j = 0; j < a.columns; ++j)
        for (int i = 0; i < j; ++i)
            if (a(i, j) != a(j, i))
                return false;
    return true;
}

} // namespace support
