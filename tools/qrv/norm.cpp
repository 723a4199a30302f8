// qrv norm: norms of a matrix.
#include <fmt/core.h>

#include "command.hpp"
#include "routines.hpp"

namespace tools {
namespace {

void run(const std::string& path) {
    const MatrixFile file = read_matrix_market(path);
    fmt::print("{}\n", description(path, file));
    std::visit(
        [](const auto& a) {
            // Nine digits name a float.
            fmt::print("  largest element  {:.9g}\n", norm(MatrixNorm::MaximumAbsolute, a));
            fmt::print("  1-norm           {:.9g}\n", norm(MatrixNorm::One, a));
            fmt::print("  infinity-norm    {:.9g}\n", norm(MatrixNorm::Infinity, a));
            fmt::print("  Frobenius norm   {:.9g}\n", norm(MatrixNorm::Frobenius, a));
        },
        file.matrix);
}

} // namespace

void add_norm(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("norm", "Norms of a matrix");
    CLI::Option* const path = command->add_option("A", "Matrix Market file")->required()->check(file_name());
    command->callback([path] { run(path->as<std::string>()); });
}

} // namespace tools
