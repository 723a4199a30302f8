// A file for a result, which appears whole or not at all.
#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tools {

// A file that could not be written.
class OutputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Opened before the work whose result it takes, so that a wrong name does not cost the work. What is written goes to a
// temporary file beside the target, which commit() gives the target's name; without commit() the temporary is removed
// and a file that was there before stays. Links are followed, also to what is not there yet. Written straight to is a
// target that is no ordinary file, such as a device or a pipe, and one that this process has open for writing, such as
// standard output: it may hold more than ours. The name "-" is standard output. All members raise OutputError.
class OutputFile {
public:
    explicit OutputFile(const std::string& target);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    const std::string& name() const { return shown; }

    // Takes room for so many bytes, as far as the file system can tell; what is left over is given back.
    void reserve(double bytes);
    void write(std::string_view text);
    void commit();

private:
    [[noreturn]] void fail(int error) const;
    bool is_direct() const { return temporary.empty(); }
    void open_temporary(bool replaces, mode_t mode);

    std::string shown, target, temporary;
    std::FILE* file = nullptr;
    std::size_t place = 0; // among the temporary files that a signal removes
};

// From now on a signal that ends the process removes its temporary files first.
void remove_temporary_files_on_signals();

} // namespace tools
