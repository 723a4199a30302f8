// The commands of the program. Each adds itself to the command line and, when chosen, runs from its callback.
//
// What goes wrong leaves a command as an exception, of which main makes one line on standard error and the exit code:
//
//   0  good        1  the problem could not be solved, or its result not be written        2  bad usage or bad input
#pragma once

#include <CLI/CLI.hpp>
#include <initializer_list>
#include <optional>
#include <string>

#include "matrix_file/matrix_file.hpp"

namespace tools {

void add_info(CLI::App& program);
void add_norm(CLI::App& program);
void add_solve(CLI::App& program);
void add_invert(CLI::App& program);
void add_fit(CLI::App& program);
void add_qr(CLI::App& program);
void add_eig(CLI::App& program);
void add_svd(CLI::App& program);
void add_compress(CLI::App& program);
void add_bench(CLI::App& program);
void add_manual(CLI::App& program);

// A validator of options: an unset shell variable must not count as an option that is not given.
CLI::Validator file_name();

// What every command with a report has, and every one with results that may be written without their zeros.
void add_json(CLI::App& command, bool& wantsJson);
void add_coordinate(CLI::App& command, bool& isCoordinate);

// The file of an option that names one, opened; none without. Several of one command must differ, and standard input is
// read once.
std::optional<OutputFile> open_output(const std::string& name, bool isCoordinate = false);
void require_different(std::initializer_list<std::string> files);
void require_one_standard_input(const std::string& a, const std::string& b);

// The format of a result by the name of its file; what goes to standard output has that of the matrix that came in.
Format format_of(const std::string& output, Format ofInput, bool isCoordinate = false);

// Takes room for a result of this size, so that a full disk is known before the work.
template <class T>
void reserve(std::optional<OutputFile>& file, Format format, const Matrix<T>& alike) {
    if (file && format != Format::coordinate)
        file->reserve(file_bytes(format, 1.0 * alike.rows * alike.columns, isComplex<T>));
}

// Order of a square matrix; raises InputError for any other.
int require_square(const std::string& path, const AnyMatrix& matrix);

} // namespace tools
