#include "command.hpp"

#include <filesystem>
#include <fmt/format.h>

namespace tools {

CLI::Validator file_name() {
    return {[](const std::string& name) { return name.empty() ? std::string("the name of the file is empty") : ""; },
            "FILE"};
}

void add_json(CLI::App& command, bool& wantsJson) {
    command.add_flag("--json", wantsJson, "tell all figures, and results that go to no file, as one JSON object");
}
void add_coordinate(CLI::App& command, bool& isCoordinate) {
    command.add_flag("--coordinate", isCoordinate, "write nonzeros only");
}

std::optional<OutputFile> open_output(const std::string& name, bool isCoordinate) {
    if (isCoordinate && is_npy_name(name))
        throw CLI::ValidationError("--coordinate", "files of NumPy, as " + name + ", have all elements");
    return name.empty() ? std::nullopt : std::optional<OutputFile>(std::in_place, name);
}

void require_different(std::initializer_list<std::string> files) {
    std::error_code none; // what cannot be found is said when it is opened
    const auto whole = [&](const std::string& name) {
        return std::filesystem::weakly_canonical(std::filesystem::absolute(name == "-" ? "/dev/stdout" : name, none),
                                                 none);
    };
    for (const std::string& file : files)
        for (const std::string* other = &file + 1; other < files.end(); ++other)
            if (!file.empty() && !other->empty() && whole(file) == whole(*other))
                throw CLI::ValidationError(*other + " would take two results");
}

void require_one_standard_input(const std::string& a, const std::string& b) {
    if (a == "-" && b == "-")
        throw CLI::ValidationError("standard input holds one matrix, not both");
}

Format format_of(const std::string& output, Format ofInput, bool isCoordinate) {
    if (isCoordinate)
        return Format::coordinate;
    const bool isNpy = is_npy_name(output) || (output == "-" && ofInput == Format::npy);
    return isNpy ? Format::npy : Format::array;
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
