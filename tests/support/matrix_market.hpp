// Reads general matrices in the Matrix Market exchange format: coordinate or array, real, integer or complex.
#pragma once

#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>

#include "support/matrices.hpp"

namespace qrv::test {

// As a full matrix with `extra` rows of gap between its columns.
template <class T>
BasicGuardedMatrix<T> read_matrix_market(const std::string& path, int extra = 0) {
    std::ifstream file(path);
    std::string banner, object, format, field, symmetry;
    file >> banner >> object >> format >> field >> symmetry;
    const bool isCoordinate = format == "coordinate", isComplexFile = field == "complex";
    if (banner != "%%MatrixMarket" || object != "matrix" || (!isCoordinate && format != "array") ||
        symmetry != "general" || field == "pattern" || (isComplexFile && !isComplex<T>))
        throw std::runtime_error("cannot read " + path);
    std::string line;
    while (std::getline(file, line) && (line.empty() || line[0] == '%'))
        ;
    std::istringstream sizes(line);
    int rows = 0, columns = 0, entries = 0;
    sizes >> rows >> columns;
    if (isCoordinate)
        sizes >> entries;
    else
        entries = rows * columns;
    BasicGuardedMatrix<T> a(rows, columns, rows + extra);
    a.fill(0);
    for (int p = 0, i, j; p < entries; ++p) {
        if (isCoordinate)
            file >> i >> j;
        else
            i = p % rows + 1, j = p / rows + 1;
        T value{};
        if constexpr (isComplex<T>) {
            file >> value.re;
            if (isComplexFile)
                file >> value.im;
        } else {
            file >> value;
        }
        a(i - 1, j - 1) = value;
    }
    if (!file)
        throw std::runtime_error(path + " ends too early");
    return a;
}

} // namespace qrv::test
