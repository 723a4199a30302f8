// qrv invert: the inverse of a matrix.
#include <optional>
#include <random>

#include "command.hpp"
#include "linear_system.hpp"
#include "progress.hpp"
#include "report.hpp"
#include "routines.hpp"

namespace tools {
namespace {

struct Request {
    std::string a, out;
    bool isCoordinate = false, wantsJson = false;
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
void invert(const Request& request, Report& report, std::optional<OutputFile>& out, Format format, const Matrix<T>& a) {
    reserve(out, format, a);
    std::optional<ProgressBar> progress = factoring(a.rows);
    LinearSystem<T> system(request.a, a);
    progress.reset();
    progress = inverting(system.factor_seconds());
    const Matrix<T> x = std::move(system).inverse(), v = signs<T>(a.rows);
    progress.reset();
    const BackwardError error = backward_error(a, product(x, v), v);
    system.require_solved(error);
    const double condition = 1.0 * norm(MatrixNorm::Infinity, a) * norm(MatrixNorm::Infinity, x);
    report.print("  condition number  {:.2g} (1-norm), {:.2g} (infinity norm)\n",
                 figure("condition_number_one_norm", 1.0 * norm(MatrixNorm::One, a) * norm(MatrixNorm::One, x)),
                 figure("condition_number", condition));
    report.print("  backward error    {:.2g} componentwise, {:.2g} normwise, of X v for A y = v with random signs v\n",
                 figure("backward_error_componentwise", error.componentwise),
                 figure("backward_error_normwise", error.normwise));
    report.singular(condition, "X");
    report.result("X", out, x, format, "Inverse by qrv");
}

void run(const Request& request) {
    std::optional<OutputFile> out = open_output(request.out, request.isCoordinate);
    const MatrixFile a = read_matrix(request.a, 2); // and its factors, then its inverse
    require_square(request.a, a.matrix);
    Report report(request.wantsJson, {request.out});
    report.matrix("A", request.a, a);
    const Format format = format_of(request.out, a.format, request.isCoordinate);
    std::visit([&](const auto& matrix) { invert(request, report, out, format, matrix); }, a.matrix);
    report.close();
}

} // namespace

void add_invert(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("invert", "Inverts a matrix by LU, and tells how well it went");
    const auto request = std::make_shared<Request>();
    command->add_option("A", request->a, "file of a square matrix")->required()->check(file_name());
    command->add_option("-o,--out", request->out, "file for the inverse X")->check(file_name());
    add_coordinate(*command, request->isCoordinate);
    add_json(*command, request->wantsJson);
    command->callback([request] { run(*request); });
}

} // namespace tools
