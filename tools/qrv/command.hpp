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

#include "matrix_market/matrix_market.hpp"

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

// A validator of options: an unset shell variable must not count as an option that is not given.
CLI::Validator file_name();

// The file of an option that names one, opened; none without. Several of one command must differ.
std::optional<OutputFile> open_output(const std::string& name);
void require_different(std::initializer_list<std::string> files);

// Name, size and kind of a matrix, for the head of a report.
std::string description(const std::string& path, const MatrixFile& file);

// Order of a square matrix; raises InputError for any other.
int require_square(const std::string& path, const AnyMatrix& matrix);

// One line if a matrix with this condition number counts as singular, about the result that it makes unsure.
void print_if_singular(double condition, const char* result);

} // namespace tools
