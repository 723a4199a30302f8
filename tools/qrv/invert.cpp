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
void invert(const Request& request, const Matrix<T>& a) {
    std::optional<ProgressBar> progress(a.rows);
    LinearSystem<T> system(request.a, a);
    progress.reset();
    const Matrix<T> x = system.inverse(), v = signs<T>(a.rows);
    fmt::print("  condition number  {:.2g} (1-norm), {:.2g} (infinity norm)\n",
               1.0 * norm(MatrixNorm::One, a) * norm(MatrixNorm::One, x),
               1.0 * norm(MatrixNorm::Infinity, a) * norm(MatrixNorm::Infinity, x));
    const BackwardError error = backward_error(a, product(x, v), v);
    fmt::print("  backward error    {:.2g} componentwise, {:.2g} normwise, of X v for A y = v with random signs v\n",
               error.componentwise, error.normwise);
    if (!request.out.empty()) {
        write_matrix_market(request.out, x, request.isCoordinate ? Format::coordinate : Format::array,
                            "Inverse by qrv");
        fmt::print("  X                 {}\n", request.out);
    }
}

void run(const Request& request) {
    const MatrixFile a = read_matrix_market(request.a);
    require_square(request.a, a.matrix);
    fmt::print("A: {}\n", description(request.a, a));
    std::visit([&](const auto& matrix) { invert(request, matrix); }, a.matrix);
}

} // namespace

void add_invert(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("invert", "Inverts a matrix by LU, and tells how well it went");
    const auto request = std::make_shared<Request>();
    command->add_option("A", request->a, "Matrix Market file of a square matrix")->required();
    command->add_option("-o,--out", request->out, "file for the inverse X");
    command->add_flag("--coordinate", request->isCoordinate, "write nonzeros only");
    command->callback([request] { run(*request); });
}

} // namespace tools
