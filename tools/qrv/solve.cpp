// qrv solve: a linear system, and how far its solution can be trusted.
#include <map>
#include <optional>

#include "command.hpp"
#include "linear_system.hpp"
#include "picture.hpp"
#include "progress.hpp"
#include "report.hpp"

namespace tools {
namespace {

struct Request {
    std::string a, b, out, picture;
    bool isCoordinate = false, wantsJson = false;
    Method method = Method::automatic;

    bool has_right_hand_side() const { return !b.empty(); }
};

// Without a right-hand side: the product with a vector of ones, which is the solution, then.
template <class T>
Matrix<T> ones(int n) {
    Matrix<T> x(n, 1);
    x.values.assign(x.values.size(), T(1));
    return x;
}

template <class T>
void print_quality(Report& report, const LinearSystem<T>& system, const Matrix<T>& a, const Matrix<T>& x,
                   const Matrix<T>& b, bool isKnown) {
    const double condition = system.condition();
    const BackwardError error = backward_error(a, x, b);
    system.require_solved(error);
    const double bound = forward_error_bound(condition, error);
    report.print("  condition number  {:.2g}, infinity norm, estimated\n", figure("condition_number", condition));
    report.print("  backward error    {:.2g} componentwise, {:.2g} normwise\n",
                 figure("backward_error_componentwise", error.componentwise),
                 figure("backward_error_normwise", error.normwise));
    report.print("  error of x        at most {:.2g} of the largest element: condition number times backward error\n",
                 figure("error_bound", bound));
    report.print("                    about {:.2g}: what a step of refinement would correct\n",
                 figure("error_estimate", system.error_estimate(a, x, b)));
    if (isKnown)
        report.print("                    in truth {:.2g}\n", figure("error", relative_difference(x, ones<T>(a.rows))));
    report.singular(condition, "x");
}

template <class T>
void print_method(Report& report, const LinearSystem<T>& system) {
    if (system.indefinite_column() > 0)
        report.print("  Cholesky          ended at column {}: A is not positive definite\n",
                     figure("indefinite_column", system.indefinite_column()));
    report.print("  {:<16}  {:.2f} ms, {:.1f} GFLOP/s\n", figure("method", std::string(system.method())),
                 figure("milliseconds", 1e3 * system.factor_seconds()), figure("gflops", system.gflops()));
    if (const auto saving = system.saving())
        report.print(
            "  band              {} + {} diagonals beside the main one: {:.2g} of the numbers of a full matrix, "
            "{:.2g} of the operations of LU\n",
            figure("diagonals_below", saving->band.below), figure("diagonals_above", saving->band.above),
            figure("share_of_numbers", saving->numbers), figure("share_of_operations", saving->operations));
}

struct Outputs {
    std::optional<OutputFile> x, picture;
};

template <class T>
void solve(const Request& request, Report& report, Outputs& outputs, Format format, const Matrix<T>& a,
           const std::optional<Matrix<T>>& given) {
    const Matrix<T> b = given ? *given : product(a, ones<T>(a.rows));
    reserve(outputs.x, format, b);
    std::optional<ProgressBar> progress = factoring(a.rows);
    LinearSystem<T> system(request.a, a, request.method);
    progress.reset();
    const Matrix<T> x = system.solve(b);
    print_method(report, system);
    print_quality(report, system, a, x, b, !given);
    report.result("x", outputs.x, x, format, "Solution of A x = b by qrv");
    if (outputs.picture)
        report.picture(*outputs.picture, picture(x, "Solution of A x = b, A: " + request.a));
}

void check_sizes(const Request& request, const AnyMatrix& a, const std::optional<MatrixFile>& b) {
    const auto rows = [](const auto& matrix) { return matrix.rows; };
    const int n = require_square(request.a, a);
    if (b && std::visit(rows, b->matrix) != n)
        throw InputError(
            fmt::format("{} has {} rows; the matrix {} has {}", request.b, std::visit(rows, b->matrix), request.a, n));
}

void run(const Request& request) {
    require_different({request.out, request.picture});
    require_one_standard_input(request.a, request.b);
    Outputs outputs{open_output(request.out, request.isCoordinate), open_output(request.picture)};
    std::optional<MatrixFile> b; // first, for it tells what A will be held as
    if (request.has_right_hand_side())
        b = read_matrix(request.b, 4); // b, x, the correction, and one to work with
    const bool withComplex = b && std::holds_alternative<Matrix<SingleComplex>>(b->matrix);
    // With its factors; a real one, in the worst case, is made complex first.
    const MatrixFile a = read_matrix(request.a, withComplex ? 5 : 2);
    check_sizes(request, a.matrix, b);
    if (request.method == Method::band && (withComplex || std::holds_alternative<Matrix<SingleComplex>>(a.matrix)))
        throw InputError(request.a + ": the band routines are for real systems");
    Report report(request.wantsJson, {request.out, request.picture});
    report.matrix("A", request.a, a);
    if (b)
        report.matrix("b", request.b, *b);
    else
        report.print("b: A times a vector of ones\n");
    const Format format = format_of(request.out, a.format, request.isCoordinate);
    // A complex side makes the other one complex.
    if (const auto* const realA = std::get_if<Matrix<float>>(&a.matrix); realA && !withComplex)
        solve<float>(request, report, outputs, format, *realA,
                     b ? std::optional(std::get<Matrix<float>>(b->matrix)) : std::nullopt);
    else
        solve<SingleComplex>(request, report, outputs, format,
                             realA ? to_complex(*realA) : std::get<Matrix<SingleComplex>>(a.matrix),
                             b ? std::optional(to_complex(b->matrix)) : std::nullopt);
    report.close();
}

} // namespace

void add_solve(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "solve", "Solves A x = b, and tells condition number, backward error and a bound of the error of x");
    const auto request = std::make_shared<Request>();
    command->add_option("A", request->a, "file of a square matrix")->required()->check(file_name());
    command->add_option("b", request->b, "file of right-hand sides; without, A times a vector of ones")
        ->check(file_name());
    command->add_option("-o,--out", request->out, "file for x")->check(file_name());
    command->add_option("--picture", request->picture, "SVG file for the elements of x over their index")
        ->check(file_name());
    add_coordinate(*command, request->isCoordinate);
    add_json(*command, request->wantsJson);
    const std::map<std::string, Method> methods{
        {"auto", Method::automatic}, {"lu", Method::lu}, {"cholesky", Method::cholesky}, {"band", Method::band}};
    command
        ->add_option(
            "--method", request->method,
            "auto: within the band if that is narrow; by Cholesky if A is symmetric or Hermitian with a positive "
            "diagonal, and by LU if it turns out not to be definite")
        ->transform(CLI::CheckedTransformer(methods))
        ->option_text("auto|lu|cholesky|band");
    command->callback([request] { run(*request); });
}

} // namespace tools
