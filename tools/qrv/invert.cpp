// qrv invert: the inverse of a matrix.
#include <fmt/core.h>
#include <optional>
#include <random>

#include "command.hpp"
#include "linear_system.hpp"
#include "progress.hpp"
#include "routines.hpp"

namespace tools {
namespace {

struct Request {
    std::string a, out;
    bool isCoordinate = false;
};

// Random signs. How well X v solves A y = v tells of the whole X, at the cost of two products with a vector.
template <class T>
Matrix<T> signs(int n) {
    Matrix<T> v(n, 1);
    std::minstd_rand generator(1);
    for (T& value : v.values)
        value = T(generator() % 2 == 0 ? 1.0F : -1.0F);
    return v;
}

template <class T>
void invert(const Request& request, std::optional<OutputFile>& out, const Matrix<T>& a) {
    if (out && !request.isCoordinate)
        out->reserve(array_bytes(1.0 * a.rows * a.columns, isComplex<T>));
    std::optional<ProgressBar> progress = factoring(a.rows);
    LinearSystem<T> system(request.a, a);
    progress.reset();
    progress = inverting(system.factor_seconds());
    const Matrix<T> x = std::move(system).inverse(), v = signs<T>(a.rows);
    progress.reset();
    const BackwardError error = backward_error(a, product(x, v), v);
    system.require_solved(error);
    const double condition = 1.0 * norm(MatrixNorm::Infinity, a) * norm(MatrixNorm::Infinity, x);
    fmt::print("  condition number  {:.2g} (1-norm), {:.2g} (infinity norm)\n",
               1.0 * norm(MatrixNorm::One, a) * norm(MatrixNorm::One, x), condition);
    fmt::print("  backward error    {:.2g} componentwise, {:.2g} normwise, of X v for A y = v with random signs v\n",
               error.componentwise, error.normwise);
    print_if_singular(condition, "X");
    if (out) {
        write_matrix_market(*out, x, request.isCoordinate ? Format::coordinate : Format::array, "Inverse by qrv");
        fmt::print("  X                 {}\n", out->name());
    }
}

void run(const Request& request) {
    std::optional<OutputFile> out = open_output(request.out);
    const MatrixFile a = read_matrix_market(request.a, 2); // and its factors, then its inverse
    require_square(request.a, a.matrix);
    fmt::print("A: {}\n", description(request.a, a));
    std::visit([&](const auto& matrix) { invert(request, out, matrix); }, a.matrix);
}

} // namespace

void add_invert(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("invert", "Inverts a matrix by LU, and tells how well it went");
    const auto request = std::make_shared<Request>();
    command->add_option("A", request->a, "Matrix Market file of a square matrix")->required()->check(file_name());
    command->add_option("-o,--out", request->out, "file for the inverse X")->check(file_name());
    command->add_flag("--coordinate", request->isCoordinate, "write nonzeros only");
    command->callback([request] { run(*request); });
}

} // namespace tools
