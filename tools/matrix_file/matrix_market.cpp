#include "matrix_market.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <sstream>
#include <string_view>
#include <utility>

namespace tools {
namespace {

// ---- Lines and words ----------------------------------------------------------------------------------------------

bool is_space(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

// The words of one line, first to last.
class Words {
public:
    explicit Words(std::string_view line) : rest(line) {}

    // Empty after the last one.
    std::string_view next() {
        rest.remove_prefix(
            static_cast<std::size_t>(std::find_if_not(rest.begin(), rest.end(), is_space) - rest.begin()));
        const auto length = static_cast<std::size_t>(std::find_if(rest.begin(), rest.end(), is_space) - rest.begin());
        const std::string_view word = rest.substr(0, length);
        rest.remove_prefix(length);
        return word;
    }

private:
    std::string_view rest;
};

std::string lower_case(std::string_view word) {
    std::string text(word);
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// The lines of a file that may be endless: no more than one of them is held.
class Lines {
public:
    Lines(const std::string& fileName, const Source& bytes) : name(fileName), source(bytes), buffer(longestLine) {}

    // The next line of the file, whatever it holds. False at the end.
    bool next(std::string_view& line) {
        ++number;
        std::size_t length = 0;
        for (std::size_t known = 0; (length = find_end(known)) == end - begin; known = length)
            if (!refill())
                break;
        if (length == longestLine && number > 1) // a file of another kind, which the first line tells
            fail("the line has more than " + std::to_string(longestLine) + " characters");
        const bool isThere = end > begin;
        if (!isThere)
            --number;
        line = std::string_view(buffer.data() + begin, length);
        begin = std::min(begin + length + 1, end);
        return isThere;
    }

    // The next line that is neither blank nor a comment.
    bool next_content(std::string_view& line) {
        while (next(line))
            if (const std::string_view word = Words(line).next(); !word.empty() && word.front() != '%')
                return true;
        return false;
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw InputError(name + ":" + std::to_string(std::max(number, 1LL)) + ": " + what);
    }

private:
    static constexpr std::size_t longestLine = 1 << 16; // the format allows 1024

    // Length of the line at hand, of which so many characters hold no end; all there is if it does not end there.
    std::size_t find_end(std::size_t known) const {
        const char* const first = buffer.data() + begin;
        const void* const found = std::memchr(first + known, '\n', end - begin - known);
        return found ? static_cast<std::size_t>(static_cast<const char*>(found) - first) : end - begin;
    }

    // False if there are no more bytes, or no room for them.
    bool refill() {
        std::copy(buffer.data() + begin, buffer.data() + end, buffer.data());
        end -= begin;
        begin = 0;
        const std::size_t count = end < buffer.size() ? source(buffer.data() + end, buffer.size() - end) : 0;
        end += count;
        return count > 0;
    }

    const std::string& name;
    const Source& source;
    std::vector<char> buffer;
    std::size_t begin = 0, end = 0; // of what was read and not yet given
    long long number = 0;
};

// ---- Numbers ------------------------------------------------------------------------------------------------------

// from_chars knows no plus sign.
std::string_view without_plus(std::string_view word) {
    const bool hasPlus = word.size() > 1 && word[0] == '+' && word[1] != '-';
    return word.substr(hasPlus ? 1 : 0);
}

long long integer(const Lines& lines, std::string_view word, const char* what) {
    long long value = 0;
    const std::string_view digits = without_plus(word);
    const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (word.empty())
        lines.fail(std::string("the ") + what + " is missing");
    if (failure == std::errc::result_out_of_range)
        lines.fail(std::string("the ") + what + " " + quoted(word) + " is out of range");
    if (failure != std::errc{} || end != digits.data() + digits.size())
        lines.fail(std::string("the ") + what + " " + quoted(word) + " is no integer");
    return value;
}

double real(const Lines& lines, std::string_view word, const char* what) {
    std::string digits(without_plus(word));
    std::replace_if(
        digits.begin(), digits.end(), [](char c) { return c == 'd' || c == 'D'; }, 'e');
    double value = 0;
    const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (word.empty())
        lines.fail(std::string("the ") + what + " is missing");
    if (end != digits.data() + digits.size() || failure == std::errc::invalid_argument || std::isnan(value) ||
        std::isinf(value))
        lines.fail(std::string("the ") + what + " " + quoted(word) + " is no finite number");
    if (failure == std::errc::result_out_of_range)
        value = std::strtod(digits.c_str(), nullptr); // tells too large from too small, which counts as 0
    return value;
}

// ---- The parts of a file ------------------------------------------------------------------------------------------

enum class Field { real, integer, complex };

struct Header {
    Format format;
    Field field;
    Symmetry symmetry;
};

template <class Value>
struct Named {
    const char* name;
    Value value;
};

template <class Value, std::size_t N>
Value chosen(const Lines& lines, std::string_view word, const char* what, const Named<Value> (&values)[N]) {
    std::string known;
    for (const auto& [name, value] : values) {
        if (lower_case(word) == name)
            return value;
        known += std::string(known.empty() ? "" : ", ") + name;
    }
    lines.fail(std::string("unknown ") + what + " " + quoted(word) + " in the banner; known are " + known);
}

Header read_banner(Lines& lines) {
    std::string_view line;
    if (!lines.next(line))
        lines.fail("the file is empty");
    Words words(line);
    if (lower_case(words.next()) != "%%matrixmarket")
        lines.fail("no Matrix Market file: it does not begin with %%MatrixMarket");
    if (const std::string_view object = words.next(); lower_case(object) != "matrix")
        lines.fail("the banner announces " + quoted(object) + ", not a matrix");

    static constexpr Named<Format> formats[] = {{"array", Format::array}, {"coordinate", Format::coordinate}};
    static constexpr Named<Field> fields[] = {
        {"real", Field::real}, {"integer", Field::integer}, {"complex", Field::complex}};
    static constexpr Named<Symmetry> symmetries[] = {{"general", Symmetry::general},
                                                     {"symmetric", Symmetry::symmetric},
                                                     {"hermitian", Symmetry::hermitian},
                                                     {"skew-symmetric", Symmetry::skewSymmetric}};
    const Format format = chosen(lines, words.next(), "format", formats);
    const Field field = chosen(lines, words.next(), "field", fields);
    const Symmetry symmetry = chosen(lines, words.next(), "symmetry", symmetries);
    if (const std::string_view extra = words.next(); !extra.empty())
        lines.fail("unexpected " + quoted(extra) + " at the end of the banner");
    if (symmetry == Symmetry::hermitian && field != Field::complex)
        lines.fail("a hermitian matrix must be complex");
    return {format, field, symmetry};
}

struct Sizes {
    int rows, columns;
    long long entries;
};

int dimension(const Lines& lines, std::string_view word, const char* what) {
    const long long value = integer(lines, word, what);
    if (value < 1 || value > std::numeric_limits<int>::max())
        lines.fail(std::string("the ") + what + " " + quoted(word) + " is out of range");
    return static_cast<int>(value);
}

// Elements of the array format: all, or the lower triangle with or without the diagonal.
long long array_entries(Symmetry symmetry, long long rows, long long columns) {
    switch (symmetry) {
    case Symmetry::general:
        return rows * columns;
    case Symmetry::skewSymmetric:
        return rows * (rows - 1) / 2;
    default:
        return rows * (rows + 1) / 2;
    }
}

Sizes read_sizes(Lines& lines, const Header& header) {
    std::string_view line;
    if (!lines.next_content(line))
        lines.fail("the file ends before the line of sizes");
    Words words(line);
    Sizes sizes{};
    sizes.rows = dimension(lines, words.next(), "number of rows");
    sizes.columns = dimension(lines, words.next(), "number of columns");
    if (header.format == Format::coordinate) {
        sizes.entries = integer(lines, words.next(), "number of entries");
        if (sizes.entries < 0)
            lines.fail("the number of entries is negative");
    } else {
        sizes.entries = array_entries(header.symmetry, sizes.rows, sizes.columns);
    }
    if (const std::string_view extra = words.next(); !extra.empty())
        lines.fail("unexpected " + quoted(extra) + " after the sizes");
    if (header.symmetry != Symmetry::general && sizes.rows != sizes.columns)
        lines.fail("only a square matrix can have symmetry, this one is " + std::to_string(sizes.rows) + " x " +
                   std::to_string(sizes.columns));
    return sizes;
}

// ---- Entries ------------------------------------------------------------------------------------------------------

struct Value {
    double re = 0, im = 0;
};

Value read_value(const Lines& lines, Words& words, Field field) {
    Value value;
    if (field == Field::integer)
        value.re = static_cast<double>(integer(lines, words.next(), "value"));
    else
        value.re = real(lines, words.next(), field == Field::complex ? "real part" : "value");
    if (field == Field::complex)
        value.im = real(lines, words.next(), "imaginary part");
    if (const std::string_view extra = words.next(); !extra.empty())
        lines.fail("unexpected " + quoted(extra) + " after the entry");
    return value;
}

// The matrix as its entries come in.
template <class T>
class Elements {
public:
    Elements(const Header& header, const Sizes& sizes) : symmetry(header.symmetry), result(sizes.rows, sizes.columns) {}

    // Adds an entry of the stored triangle, and what it stands for in the other one.
    void add(const Lines& lines, int i, int j, Value value) {
        check_place(lines, i, j, value);
        add_one(lines, i, j, value);
        if (symmetry == Symmetry::general || i == j)
            return;
        const double re = symmetry == Symmetry::skewSymmetric ? -value.re : value.re;
        const double im = symmetry == Symmetry::symmetric ? value.im : -value.im;
        add_one(lines, j, i, {re, im});
    }

    Matrix<T> take() { return std::move(result); }

private:
    void check_place(const Lines& lines, int i, int j, Value value) const {
        if (symmetry != Symmetry::general && i < j)
            lines.fail("an entry above the diagonal, of which a matrix with symmetry holds the lower triangle only");
        if (symmetry == Symmetry::skewSymmetric && i == j)
            lines.fail("an entry on the diagonal of a skew-symmetric matrix, where all are 0");
        if (symmetry == Symmetry::hermitian && i == j && value.im != 0)
            lines.fail("an entry with an imaginary part on the diagonal of a hermitian matrix");
    }

    void add_one(const Lines& lines, int i, int j, Value value) {
        if constexpr (isComplex<T>) {
            const double re = result(i, j).Re() + value.re, im = result(i, j).Im() + value.im;
            if (!fits_single(re) || !fits_single(im))
                lines.fail("the value does not fit single precision");
            result(i, j) = {static_cast<float>(re), static_cast<float>(im)};
        } else {
            const double sum = result(i, j) + value.re;
            if (!fits_single(sum))
                lines.fail("the value does not fit single precision");
            result(i, j) = static_cast<float>(sum);
        }
    }

    Symmetry symmetry;
    Matrix<T> result;
};

// Row and column of the entries of the array format, in the order of the file.
class ArrayWalk {
public:
    ArrayWalk(Symmetry symmetryOfFile, int rowCount) : symmetry(symmetryOfFile), rows(rowCount), i(first()) {}

    int row() const { return i; }
    int column() const { return j; }
    void step() {
        if (++i == rows) {
            ++j;
            i = first();
        }
    }

private:
    int first() const { return symmetry == Symmetry::general ? 0 : symmetry == Symmetry::skewSymmetric ? j + 1 : j; }

    Symmetry symmetry;
    int rows, j = 0, i;
};

int read_index(const Lines& lines, Words& words, int count, const char* what) {
    const long long index = integer(lines, words.next(), what);
    if (index < 1 || index > count)
        lines.fail(std::string("the ") + what + " " + std::to_string(index) + " is not between 1 and " +
                   std::to_string(count));
    return static_cast<int>(index - 1);
}

template <class T>
Matrix<T> read_entries(Lines& lines, const Header& header, const Sizes& sizes, double copies) {
    if (const auto lack = lack_of_memory(sizes.rows, sizes.columns, sizeof(T), copies))
        lines.fail(*lack);
    Elements<T> elements(header, sizes);
    ArrayWalk place(header.symmetry, sizes.rows);
    std::string_view line;
    for (long long done = 0; done < sizes.entries; ++done) {
        if (!lines.next_content(line))
            lines.fail("the file ends after " + std::to_string(done) + " of " + std::to_string(sizes.entries) +
                       " entries");
        Words words(line);
        int i = place.row(), j = place.column();
        if (header.format == Format::coordinate) {
            i = read_index(lines, words, sizes.rows, "row");
            j = read_index(lines, words, sizes.columns, "column");
        } else {
            place.step();
        }
        elements.add(lines, i, j, read_value(lines, words, header.field));
    }
    if (lines.next_content(line))
        lines.fail("more than the " + std::to_string(sizes.entries) + " entries that the sizes announce");
    return elements.take();
}

// ---- Writing --------------------------------------------------------------------------------------------------------

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

MatrixFile read_matrix_market(const std::string& name, const Source& source, double copies) {
    Lines lines(name, source);
    const Header header = read_banner(lines);
    const Sizes sizes = read_sizes(lines, header);
    MatrixFile file{{}, header.format, header.symmetry, sizes.entries};
    if (header.field == Field::complex)
        file.matrix = read_entries<SingleComplex>(lines, header, sizes, copies);
    else
        file.matrix = read_entries<float>(lines, header, sizes, copies);
    return file;
}

void write_matrix_market(OutputFile& file, const AnyMatrix& matrix, Format format, const std::string& comment) {
    std::visit([&](const auto& a) { write_entries(file, header(matrix, format, comment), a, format); }, matrix);
    file.commit();
}

} // namespace tools
