#include "command.hpp"

#include <filesystem>
#include <fmt/format.h>
#include <limits>

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

CLI::Validator file_name() {
    return {[](const std::string& name) { return name.empty() ? std::string("the name of the file is empty") : ""; },
            "FILE"};
}

std::optional<OutputFile> open_output(const std::string& name) {
    return name.empty() ? std::nullopt : std::optional<OutputFile>(std::in_place, name);
}

void require_different(std::initializer_list<std::string> files) {
    std::error_code none; // what cannot be found is said when it is opened
    const auto whole = [&](const std::string& name) {
        return std::filesystem::weakly_canonical(std::filesystem::absolute(name, none), none);
    };
    for (const std::string& file : files)
        for (const std::string* other = &file + 1; other < files.end(); ++other)
            if (!file.empty() && !other->empty() && whole(file) == whole(*other))
                throw CLI::ValidationError(*other + " would take two results");
}

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

void print_if_singular(double condition, const char* result) {
    constexpr double roundingError = std::numeric_limits<float>::epsilon() / 2.0;
    if (!(condition * roundingError < 1))
        fmt::print("  A is singular to working precision: no digit of {} is sure.\n", result);
}

} // namespace tools
