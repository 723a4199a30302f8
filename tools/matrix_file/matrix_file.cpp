#include "matrix_file.hpp"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

#include "matrix_market.hpp"
#include "memory_limit.hpp"
#include "npy.hpp"

namespace tools {
namespace {

// A file that is open for reading; "-" is standard input.
class InputFile {
public:
    explicit InputFile(const std::string& name)
        : path(name), isOurs(name != "-"),
          descriptor(isOurs ? open(name.c_str(), O_RDONLY | O_CLOEXEC) : STDIN_FILENO) {
        if (descriptor < 0)
            fail();
    }
    ~InputFile() {
        if (isOurs)
            close(descriptor);
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // Does not wait until all bytes have come, as a stream of the C library does.
    std::size_t read(char* to, std::size_t most) const {
        ssize_t count = 0;
        while ((count = ::read(descriptor, to, most)) < 0)
            if (errno != EINTR)
                fail();
        return static_cast<std::size_t>(count);
    }

private:
    [[noreturn]] void fail() const { throw InputError("cannot read " + path + ": " + std::strerror(errno)); }

    const std::string& path;
    bool isOurs;
    int descriptor;
};

MatrixFile read(const std::string& name, const Source& source, double copies) {
    char first = 0;
    bool isHeld = source(&first, 1) == 1; // looked at and not yet handed on
    const Source all = [&](char* to, std::size_t most) {
        if (!isHeld)
            return source(to, most);
        isHeld = false;
        *to = first;
        return std::size_t{1};
    };
    const bool isNpy = is_npy_name(name) || (isHeld && first == npyMark);
    return isNpy ? read_npy(name, all, copies) : read_matrix_market(name, all, copies);
}

} // namespace

bool is_npy_name(const std::string& path) {
    return path.ends_with(".npy");
}

MatrixFile read_matrix(const std::string& path, double copies) {
    const InputFile file(path);
    const std::string name = path == "-" ? "standard input" : path;
    return read(
        name, [&](char* to, std::size_t most) { return file.read(to, most); }, copies);
}

MatrixFile parse_matrix(const std::string& name, const std::string& content) {
    std::size_t given = 0;
    const auto next = [&](char* to, std::size_t most) {
        const std::size_t count = content.copy(to, most, given);
        given += count;
        return count;
    };
    return read(name, next, 1);
}

void write_matrix(OutputFile& file, const AnyMatrix& matrix, Format format, const std::string& comment) {
    if (format == Format::npy)
        write_npy(file, matrix);
    else
        write_matrix_market(file, matrix, format, comment);
}

std::optional<std::string> lack_of_memory(int rows, int columns, std::size_t elementSize, double copies) {
    const double needed = copies * rows * columns * static_cast<double>(elementSize);
    const double memory =
        std::min(memory_limit(), static_cast<double>(std::numeric_limits<std::ptrdiff_t>::max())); // 32-bit processes
    if (needed <= memory)
        return {};
    const auto megabytes = [](double bytes) { return std::to_string(std::llround(bytes / 1e6)) + " MB"; };
    return std::to_string(rows) + " x " + std::to_string(columns) + " elements, held full and " +
           (copies > 1 ? "with what is computed from them, " : "") + "take " + megabytes(needed) +
           "; this process may use " + megabytes(memory);
}

bool fits_single(double value) {
    return std::abs(static_cast<float>(value)) <= std::numeric_limits<float>::max();
}

std::string quoted(std::string_view part) {
    constexpr std::size_t longest = 40;
    std::string text(part.substr(0, longest));
    for (char& c : text)
        if (c < ' ' || c > '~')
            c = '?';
    return "'" + text + (part.size() > longest ? "...'" : "'");
}

} // namespace tools
