#include <array>
#include <charconv>
#include <sstream>

#include "matrix_market.hpp"

namespace tools {
namespace {

constexpr std::size_t blockSize = 1 << 16; // bytes handed over at a time

void append(std::string& text, long long value) {
    text += std::to_string(value);
}
void append(std::string& text, float value) {
    std::array<char, 32> digits; // the shortest that reads back as the same float
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    text.append(digits.data(), end);
}
void append(std::string& text, SingleComplex value) {
    append(text, value.Re());
    text += ' ';
    append(text, value.Im());
}

std::string header(const AnyMatrix& matrix, Format format, const std::string& comment) {
    std::string text = "%%MatrixMarket matrix ";
    text += format == Format::array ? "array " : "coordinate ";
    text += std::holds_alternative<Matrix<float>>(matrix) ? "real" : "complex";
    text += " general\n";
    std::istringstream lines(comment);
    for (std::string line; std::getline(lines, line);)
        text += "% " + line + "\n";
    return text;
}

template <class T>
void write_entries(OutputFile& file, std::string text, const Matrix<T>& a, Format format) {
    append(text, static_cast<long long>(a.rows));
    text += ' ';
    append(text, static_cast<long long>(a.columns));
    if (format == Format::coordinate) {
        long long nonzeros = 0;
        for (const T value : a.values)
            nonzeros += value != T{};
        text += ' ';
        append(text, nonzeros);
    }
    text += '\n';
    for (int j = 0; j < a.columns; ++j)
        for (int i = 0; i < a.rows; ++i) {
            if (format == Format::coordinate) {
                if (a(i, j) == T{})
                    continue;
                append(text, static_cast<long long>(i + 1));
                text += ' ';
                append(text, static_cast<long long>(j + 1));
                text += ' ';
            }
            append(text, a(i, j));
            text += '\n';
            if (text.size() >= blockSize) {
                file.write(text);
                text.clear();
            }
        }
    file.write(text);
}

} // namespace

void write_matrix_market(OutputFile& file, const AnyMatrix& matrix, Format format, const std::string& comment) {
    std::visit([&](const auto& a) { write_entries(file, header(matrix, format, comment), a, format); }, matrix);
    file.commit();
}

} // namespace tools
