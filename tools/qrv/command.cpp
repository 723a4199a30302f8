#include <fmt/format.h>

#include "command.hpp"

namespace tools {
namespace {

const char* name_of(Symmetry symmetry) {
    switch (symmetry) {
    case Symmetry::general:
        return "general";
    case Symmetry::symmetric:
        return "symmetric";
    case Symmetry::hermitian:
        return "Hermitian";
    default:
        return "skew-symmetric";
    }
}

} // namespace

std::string description(const std::string& path, const MatrixFile& file) {
    const char* const element = std::holds_alternative<Matrix<float>>(file.matrix) ? "real" : "complex";
    return std::visit(
        [&](const auto& a) {
            return fmt::format("{}, {} x {}, {}, {}, {} entries", path, a.rows, a.columns, element,
                               name_of(file.symmetry), file.entries);
        },
        file.matrix);
}

int require_square(const std::string& path, const AnyMatrix& matrix) {
    return std::visit(
        [&](const auto& a) {
            if (a.rows != a.columns)
                throw InputError(fmt::format("{} is {} x {}; this needs a square matrix", path, a.rows, a.columns));
            return a.rows;
        },
        matrix);
}

} // namespace tools
