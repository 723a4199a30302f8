#include "npy.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>

namespace tools {
namespace {

constexpr std::string_view mark = "\x93NUMPY";

// The bytes of a file, and its name for messages.
class Bytes {
public:
    Bytes(const std::string& fileName, const Source& bytes) : name(fileName), source(bytes) {}

    // How many of so many there are.
    std::size_t take(char* to, std::size_t wanted) const {
        std::size_t taken = 0;
        while (taken < wanted) {
            const std::size_t count = source(to + taken, wanted - taken);
            if (count == 0)
                break;
            taken += count;
        }
        return taken;
    }

    // A little-endian number.
    std::uint32_t number(std::size_t length) const {
        std::array<unsigned char, 4> bytes{};
        if (take(reinterpret_cast<char*>(bytes.data()), length) < length)
            fail("the file ends within its first bytes");
        const auto byte = [&](unsigned i) { return std::uint32_t{bytes[i]} << 8 * i; };
        return byte(0) | byte(1) | byte(2) | byte(3);
    }

    [[noreturn]] void fail(const std::string& what) const { throw InputError(name + ": " + what); }

private:
    const std::string& name;
    const Source& source;
};

// ---- The header -----------------------------------------------------------------------------------------------------

struct ElementType {
    const char* descr;
    std::size_t partSize; // of a real or imaginary part
    bool isComplex;

    std::size_t size() const { return isComplex ? 2 * partSize : partSize; }
};
constexpr ElementType elementTypes[] = {{"<f4", 4, false}, {"<f8", 8, false}, {"<c8", 4, true}, {"<c16", 8, true}};

struct Header {
    const ElementType* type;
    bool inColumns; // Fortran's order
    int rows, columns;

    long long elements() const { return 1LL * rows * columns; }
};

// A dictionary of literals as Python writes it.
class Dictionary {
public:
    Dictionary(const Bytes& file, std::string_view text) : bytes(file), rest(text) {}

    Header header() {
        require('{');
        while (!skip('}')) {
            const std::string_view key = string("a name");
            require(':');
            if (key == "descr")
                type = element_type();
            else if (key == "fortran_order")
                inColumns = truth();
            else if (key == "shape")
                shape = numbers();
            else
                bytes.fail("its header has an unknown name " + quoted(key));
            if (!skip(','))
                require('}', true);
        }
        skip_spaces();
        if (!rest.empty())
            fail("nothing more");
        if (!type || !inColumns || !shape)
            bytes.fail("its header lacks one of descr, fortran_order and shape");
        return {*type, *inColumns, shape->at(0), shape->at(1)};
    }

private:
    void skip_spaces() { rest.remove_prefix(std::min(rest.find_first_not_of(" \t\n"), rest.size())); }
    bool skip(char sign) {
        skip_spaces();
        const bool isThere = !rest.empty() && rest.front() == sign;
        rest.remove_prefix(isThere ? 1 : 0);
        return isThere;
    }
    void require(char sign, bool staysThere = false) {
        const std::string_view before = rest;
        if (!skip(sign))
            fail(std::string("'") + sign + "'");
        if (staysThere)
            rest = before;
    }
    [[noreturn]] void fail(const std::string& wanted) const {
        bytes.fail("its header should have " + wanted + " at " + quoted(rest));
    }

    std::string_view string(const char* wanted) {
        skip_spaces();
        const char quote = rest.empty() ? '\0' : rest.front();
        const std::size_t end = quote == '\'' || quote == '"' ? rest.find(quote, 1) : std::string_view::npos;
        if (end == std::string_view::npos)
            fail(wanted);
        const std::string_view text = rest.substr(1, end - 1);
        rest.remove_prefix(end + 1);
        return text;
    }
    const ElementType* element_type() {
        const std::string_view descr = string("the type of its elements in one word");
        for (const ElementType& known : elementTypes)
            if (descr == known.descr)
                return &known;
        bytes.fail("its elements are " + quoted(descr) +
                   "; read are '<f4', '<f8', '<c8' and '<c16', to which astype converts");
    }
    bool truth() {
        skip_spaces();
        for (const bool value : {false, true})
            if (const std::string_view word = value ? "True" : "False"; rest.starts_with(word)) {
                rest.remove_prefix(word.size());
                return value;
            }
        fail("True or False");
    }
    std::array<int, 2> numbers() {
        std::array<int, 2> sizes{1, 1};
        std::size_t count = 0;
        require('(');
        while (!skip(')')) {
            const int size = number();
            if (count < sizes.size())
                sizes[count] = size;
            ++count;
            if (!skip(','))
                require(')', true);
        }
        if (count == 0 || count > sizes.size())
            bytes.fail("its array has " + std::to_string(count) + " dimensions; read are 1 and 2");
        return sizes;
    }
    int number() {
        skip_spaces();
        long long value = 0;
        const auto [end, failure] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
        if (failure == std::errc::invalid_argument)
            fail("a number");
        if (failure != std::errc{} || value < 1 || value > std::numeric_limits<int>::max())
            bytes.fail("the size " + quoted(rest.substr(0, static_cast<std::size_t>(end - rest.data()))) +
                       " of its array is out of range");
        rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
        return static_cast<int>(value);
    }

    const Bytes& bytes;
    std::string_view rest;
    std::optional<const ElementType*> type;
    std::optional<bool> inColumns;
    std::optional<std::array<int, 2>> shape;
};

Header read_header(const Bytes& bytes) {
    std::array<char, mark.size()> first{};
    const std::size_t count = bytes.take(first.data(), first.size());
    if (count == 0)
        bytes.fail("the file is empty");
    if (count < first.size() || std::string_view(first.data(), first.size()) != mark)
        bytes.fail("no file of NumPy: it does not begin with \\x93NUMPY");
    const std::uint32_t version = bytes.number(2), major = version & 0xFFU;
    if (major < 1 || major > 3 || version > major)
        bytes.fail("version " + std::to_string(major) + "." + std::to_string(version >> 8U) +
                   " of the format is not known; 1.0, 2.0 and 3.0 are");
    constexpr std::uint32_t longest = 1 << 16; // of an array with unnamed elements it is a line
    const std::uint32_t length = bytes.number(major == 1 ? 2 : 4);
    if (length > longest)
        bytes.fail("its header is told to have " + std::to_string(length) + " bytes, more than any");
    std::string text(length, '\0');
    if (bytes.take(text.data(), length) < length)
        bytes.fail("the file ends within its header");
    return Dictionary(bytes, text).header();
}

// ---- The elements ---------------------------------------------------------------------------------------------------

double part(const char* at, std::size_t size) {
    if (size == sizeof(double)) {
        double value = 0;
        std::memcpy(&value, at, sizeof value);
        return value;
    }
    float value = 0;
    std::memcpy(&value, at, sizeof value);
    return value;
}

// Row and column of the elements, in the order of the file.
class Walk {
public:
    explicit Walk(const Header& h) : header(h) {}

    void step() {
        int &fast = header.inColumns ? i : j, &slow = header.inColumns ? j : i;
        if (++fast == (header.inColumns ? header.rows : header.columns)) {
            fast = 0;
            ++slow;
        }
    }

    int i = 0, j = 0;

private:
    const Header& header;
};

float single(const Bytes& bytes, double value, const Walk& place) {
    const auto fail = [&](const char* what) {
        bytes.fail("the element in row " + std::to_string(place.i + 1) + ", column " + std::to_string(place.j + 1) +
                   " " + what);
    };
    if (!std::isfinite(value))
        fail("is no finite number");
    if (!fits_single(value))
        fail("does not fit single precision");
    return static_cast<float>(value);
}

template <class T>
Matrix<T> read_elements(const Bytes& bytes, const Header& header, double copies) {
    if (const auto lack = lack_of_memory(header.rows, header.columns, sizeof(T), copies))
        bytes.fail(*lack);
    const std::size_t size = header.type->size(), partSize = header.type->partSize;
    std::vector<char> chunk(size << 12U);
    Matrix<T> a(header.rows, header.columns);
    Walk place(header);
    for (long long done = 0; done < header.elements();) {
        const auto wanted =
            static_cast<std::size_t>(std::min(header.elements() - done, static_cast<long long>(chunk.size() / size)));
        const std::size_t count = bytes.take(chunk.data(), wanted * size) / size;
        for (std::size_t k = 0; k < count; ++k, place.step()) {
            const char* const at = chunk.data() + k * size;
            const float re = single(bytes, part(at, partSize), place);
            if constexpr (isComplex<T>)
                a(place.i, place.j) = {re, single(bytes, part(at + partSize, partSize), place)};
            else
                a(place.i, place.j) = re;
        }
        done += static_cast<long long>(count);
        if (count < wanted)
            bytes.fail("the file ends after " + std::to_string(done) + " of " + std::to_string(header.elements()) +
                       " elements");
    }
    if (bytes.take(chunk.data(), 1) > 0)
        bytes.fail("more than the " + std::to_string(header.elements()) + " elements that the header announces");
    return a;
}

} // namespace

MatrixFile read_npy(const std::string& name, const Source& source, double copies) {
    const Bytes bytes(name, source);
    const Header header = read_header(bytes);
    MatrixFile file{{}, Format::npy, Symmetry::general, header.elements()};
    if (header.type->isComplex)
        file.matrix = read_elements<SingleComplex>(bytes, header, copies);
    else
        file.matrix = read_elements<float>(bytes, header, copies);
    return file;
}

void write_npy(OutputFile& file, const AnyMatrix& matrix) {
    std::visit(
        [&]<class T>(const Matrix<T>& a) {
            std::string header = std::string("{'descr': '") + (isComplex<T> ? "<c8" : "<f4") + "', 'fortran_order': ";
            header += a.columns == 1
                          ? "False, 'shape': (" + std::to_string(a.rows) + ",), }"
                          : "True, 'shape': (" + std::to_string(a.rows) + ", " + std::to_string(a.columns) + "), }";
            // The elements begin at a multiple of 64 bytes.
            constexpr std::size_t unit = 64, before = mark.size() + 4;
            header.resize((before + header.size() + unit) / unit * unit - before - 1, ' ');
            header += '\n';
            const char version[] = {1, 0, static_cast<char>(header.size() & 0xFFU),
                                    static_cast<char>(header.size() >> 8U)};
            file.write(std::string(mark) + std::string(version, sizeof version) + header);
            file.write({reinterpret_cast<const char*>(a.values.data()), a.values.size() * sizeof(T)});
        },
        matrix);
    file.commit();
}

} // namespace tools
