#include "report.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>
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

// Length of a character of UTF-8 at the start of a text; 0 for bytes that are none.
std::size_t character_length(std::string_view text) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const std::size_t length = byte(0) < 0x80   ? 1
                               : byte(0) < 0xC2 ? 0
                               : byte(0) < 0xE0 ? 2
                               : byte(0) < 0xF0 ? 3
                               : byte(0) < 0xF5 ? 4
                                                : 0;
    if (length > text.size())
        return 0;
    for (std::size_t k = 1; k < length; ++k)
        if ((byte(k) & 0xC0U) != 0x80)
            return 0;
    return length;
}

template <class T>
std::string number(T value) {
    return std::isfinite(value) ? fmt::format("{}", value) : "null";
}

bool controls_a_terminal(std::string_view character) {
    const auto byte = static_cast<unsigned char>(character.back());
    return character.size() == 1 ? byte < ' ' || byte == 0x7F : character.front() == '\xC2' && byte < 0xA0;
}

} // namespace

std::string printable(std::string_view text) {
    std::string shown;
    for (; !text.empty(); text.remove_prefix(std::max<std::size_t>(character_length(text), 1))) {
        const std::string_view character = text.substr(0, character_length(text));
        shown += character.empty() || controls_a_terminal(character) ? "?" : character;
    }
    return shown;
}

std::string json(const std::string& text) {
    std::string quoted = "\"";
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t length = character_length(rest);
        if (length == 0)
            quoted += "\\ufffd";
        else if (rest.front() == '"' || rest.front() == '\\')
            quoted += {'\\', rest.front()};
        else if (static_cast<unsigned char>(rest.front()) < ' ')
            quoted += fmt::format("\\u{:04x}", static_cast<unsigned char>(rest.front()));
        else
            quoted += rest.substr(0, length);
        rest.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return quoted + "\"";
}
std::string json(double value) {
    return number(value);
}
std::string json(float value) {
    return number(value);
}
std::string json(SingleComplex value) {
    return "[" + json(value.Re()) + ", " + json(value.Im()) + "]";
}
std::string json(const AnyMatrix& matrix) {
    return std::visit(
        [](const auto& a) {
            if (a.columns == 1)
                return json(a.values);
            std::string rows;
            for (int i = 0; i < a.rows; ++i) {
                rows += i == 0 ? "[" : ", [";
                for (int j = 0; j < a.columns; ++j)
                    rows += (j == 0 ? "" : ", ") + json(a(i, j));
                rows += "]";
            }
            return "[" + rows + "]";
        },
        matrix);
}

std::string json(const JsonObject& object) {
    return "{" + object.members + "}";
}

std::string member_name(std::string label) {
    for (char& c : label)
        c = c == ' ' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return label;
}

JsonObject& JsonObject::add_text(const std::string& name, const std::string& value) {
    members += (members.empty() ? "" : ", ") + json(name) + ": " + value;
    return *this;
}

Report::Report(bool wantsJson, std::initializer_list<std::string> outputs)
    : isJson(wantsJson), stream(std::find(outputs.begin(), outputs.end(), "-") == outputs.end() ? stdout : stderr) {}

void Report::matrix(const char* label, const std::string& path, const MatrixFile& file) {
    const bool isReal = std::holds_alternative<Matrix<float>>(file.matrix);
    std::visit(
        [&](const auto& a) {
            print("{}: {}, {} x {}, {}, {}, {} entries\n", label, printable(path), a.rows, a.columns,
                  isReal ? "real" : "complex", name_of(file.symmetry), file.entries);
            add(label, JsonObject()
                           .add("file", path)
                           .add("rows", a.rows)
                           .add("columns", a.columns)
                           .add("complex", !isReal)
                           .add("symmetry", std::string(name_of(file.symmetry)))
                           .add("entries", file.entries));
        },
        file.matrix);
}

void Report::result(const char* label, std::optional<OutputFile>& file, const AnyMatrix& matrix, Format format,
                    const std::string& comment) {
    if (file) {
        write_matrix(*file, matrix, format, comment);
        print("  {:<16}  {}\n", label, printable(file->name()));
        add((member_name(label) + "_file").c_str(), file->name());
    } else if (isJson) {
        add(member_name(label).c_str(), matrix);
    }
}

void Report::picture(OutputFile& file, const std::string& svg) {
    file.write(svg);
    file.commit();
    print("  picture           {}\n", figure("picture_file", file.name()));
}

void Report::singular(double condition, const char* result) {
    constexpr double roundingError = std::numeric_limits<float>::epsilon() / 2.0;
    const bool isSingular = !(condition * roundingError < 1);
    add("singular_to_working_precision", isSingular);
    if (isSingular)
        print("  A is singular to working precision: no digit of {} is sure.\n", result);
}

void Report::close() {
    if (isJson)
        fmt::print(stream, "{}\n", json(object));
}

} // namespace tools
