// qrv solve: a linear system, and how far its solution can be trusted.
#include <fmt/core.h>
#include <map>
#include <optional>

#include "command.hpp"
#include "linear_system.hpp"
#include "picture.hpp"
#include "progress.hpp"

namespace tools {
namespace {

struct Request {
    std::string a, b, out, picture;
    bool isCoordinate = false;
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
void print_quality(const LinearSystem<T>& system, const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b,
                   bool isKnown) {
    const double condition = system.condition();
    const BackwardError error = backward_error(a, x, b);
    system.require_solved(error);
    const double bound = forward_error_bound(condition, error);
    fmt::print("  condition number  {:.2g}, infinity norm, estimated\n", condition);
    fmt::print("  backward error    {:.2g} componentwise, {:.2g} normwise\n", error.componentwise, error.normwise);
    fmt::print("  error of x        at most {:.2g} of the largest element: condition number times backward error\n",
               bound);
    fmt::print("                    about {:.2g}: what a step of refinement would correct\n",
               system.error_estimate(a, x, b));
    if (isKnown)
        fmt::print("                    in truth {:.2g}\n", relative_difference(x, ones<T>(a.rows)));
    print_if_singular(condition, "x");
}

template <class T>
void print_method(const LinearSystem<T>& system) {
    if (system.indefinite_column() > 0)
        fmt::print("  Cholesky          ended at column {}: A is not positive definite\n", system.indefinite_column());
    fmt::print("  {:<16}  {:.2f} ms, {:.1f} GFLOP/s\n", system.method(), 1e3 * system.factor_seconds(),
               system.gflops());
    if (const auto saving = system.saving())
        fmt::print("  band              {} + {} diagonals beside the main one: {:.2g} of the numbers of a full matrix, "
                   "{:.2g} of "
                   "the operations of LU\n",
                   saving->band.below, saving->band.above, saving->numbers, saving->operations);
}

struct Outputs {
    std::optional<OutputFile> x, picture;
};

template <class T>
void solve(const Request& request, Outputs& outputs, const Matrix<T>& a, const std::optional<Matrix<T>>& given) {
    const Matrix<T> b = given ? *given : product(a, ones<T>(a.rows));
    if (outputs.x && !request.isCoordinate)
        outputs.x->reserve(array_bytes(1.0 * b.rows * b.columns, isComplex<T>));
    std::optional<ProgressBar> progress = factoring(a.rows);
    LinearSystem<T> system(request.a, a, request.method);
    progress.reset();
    const Matrix<T> x = system.solve(b);
    print_method(system);
    print_quality(system, a, x, b, !given);
    if (outputs.x) {
        write_matrix_market(*outputs.x, x, request.isCoordinate ? Format::coordinate : Format::array,
                            "Solution of A x = b by qrv");
        fmt::print("  x                 {}\n", outputs.x->name());
    }
    if (outputs.picture) {
        write_picture(*outputs.picture, x, "Solution of A x = b, A: " + request.a);
        fmt::print("  picture           {}\n", outputs.picture->name());
    }
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
    Outputs outputs{open_output(request.out), open_output(request.picture)};
    std::optional<MatrixFile> b; // first, for it tells what A will be held as
    if (request.has_right_hand_side())
        b = read_matrix_market(request.b, 4); // b, x, the correction, and one to work with
    const bool withComplex = b && std::holds_alternative<Matrix<SingleComplex>>(b->matrix);
    // With its factors; a real one, in the worst case, is made complex first.
    const MatrixFile a = read_matrix_market(request.a, withComplex ? 5 : 2);
    check_sizes(request, a.matrix, b);
    if (request.method == Method::band && (withComplex || std::holds_alternative<Matrix<SingleComplex>>(a.matrix)))
        throw InputError(request.a + ": the band routines are for real systems");
    fmt::print("A: {}\nb: {}\n", description(request.a, a),
               b ? description(request.b, *b) : "A times a vector of ones");
    // A complex side makes the other one complex.
    if (const auto* const realA = std::get_if<Matrix<float>>(&a.matrix); realA && !withComplex)
        solve<float>(request, outputs, *realA, b ? std::optional(std::get<Matrix<float>>(b->matrix)) : std::nullopt);
    else
        solve<SingleComplex>(request, outputs, realA ? to_complex(*realA) : std::get<Matrix<SingleComplex>>(a.matrix),
                             b ? std::optional(to_complex(b->matrix)) : std::nullopt);
}

} // namespace

void add_solve(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "solve", "Solves A x = b, and tells condition number, backward error and a bound of the error of x");
    const auto request = std::make_shared<Request>();
    command->add_option("A", request->a, "Matrix Market file of a square matrix")->required()->check(file_name());
    command->add_option("b", request->b, "file of right-hand sides; without, A times a vector of ones")
        ->check(file_name());
    command->add_option("-o,--out", request->out, "file for x")->check(file_name());
    command->add_option("--picture", request->picture, "SVG file for the elements of x over their index")
        ->check(file_name());
    command->add_flag("--coordinate", request->isCoordinate, "write nonzeros only");
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
