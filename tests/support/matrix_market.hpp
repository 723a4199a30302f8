// Matrices of files in the Matrix Market exchange format, guarded.
#pragma once

#include <string>
#include <variant>

#include "matrix_file/matrix_file.hpp"
#include "support/operand.hpp"

namespace qrv::test {

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

} // namespace qrv::test
