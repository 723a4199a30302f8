// qrv fit: a least squares problem, and how far its solution can be trusted.
#include <fmt/core.h>
#include <optional>

#include "command.hpp"
#include "picture.hpp"
#include "qr_factors.hpp"

namespace tools {
namespace {

struct Request {
    std::string a, b, out, picture;
    bool pivoted = false, isCoordinate = false;
    int over = 0; // column of A, from 1
};

struct Outputs {
    std::optional<OutputFile> x, picture;
};

template <class T>
void print_quality(const QrFactors<T>& factors, const FitQuality& quality) {
    fmt::print("  residual          {:.4g} in the 2-norm, {:.2g} of b\n", quality.residual, quality.share);
    fmt::print("  condition number  {:.2g}, of R in the 1-norm, estimated\n", factors.condition());
    fmt::print("  backward error    {:.2g}: a change of A by that share makes x exact\n", quality.backwardError);
    fmt::print("  error of x        at most {:.2g} of its length: what such a change does\n", quality.errorBound);
}

template <class T>
void fit(const Request& request, Outputs& outputs, const Matrix<T>& a, const Matrix<T>& b) {
    if (outputs.x && !request.isCoordinate)
        outputs.x->reserve(array_bytes(1.0 * a.columns * b.columns, isComplex<T>));
    const QrFactors<T> factors(request.a, a, request.pivoted);
    fmt::print("  {:<16}  {:.2f} ms, {:.1f} GFLOP/s\n", request.pivoted ? "pivoted QR" : "QR",
               1e3 * factors.factor_seconds(), factors.gflops());
    fmt::print("  rank              {} of {}\n", factors.rank(), a.columns);
    const Matrix<T> x = factors.solve(b);
    print_quality(factors, factors.quality(a, x, b));
    if (outputs.x) {
        write_matrix_market(*outputs.x, x, request.isCoordinate ? Format::coordinate : Format::array,
                            "Least squares solution of A x = b by qrv");
        fmt::print("  x                 {}\n", outputs.x->name());
    }
    if (outputs.picture) {
        write_fit_picture(*outputs.picture, a, x, b, request.over,
                          "Least squares fit of A x to b, A: " + request.a + ", b: " + request.b);
        fmt::print("  picture           {}\n", outputs.picture->name());
    }
}

void check_sizes(const Request& request, const AnyMatrix& a, const AnyMatrix& b) {
    const auto rows = [](const auto& matrix) { return matrix.rows; };
    const auto columns = [](const auto& matrix) { return matrix.columns; };
    const int m = std::visit(rows, a), n = std::visit(columns, a);
    if (std::visit(rows, b) != m)
        throw InputError(
            fmt::format("{} has {} rows; the matrix {} has {}", request.b, std::visit(rows, b), request.a, m));
    if (m < n && !request.pivoted)
        throw InputError(fmt::format("{} has more columns than rows; which of them to use, --pivot finds", request.a));
    if (request.over > n)
        throw InputError(fmt::format("{} has no column {}", request.a, request.over));
}

void run(const Request& request) {
    require_different({request.out, request.picture});
    Outputs outputs{open_output(request.out), open_output(request.picture)};
    const MatrixFile b = read_matrix_market(request.b, 3); // first, for it tells what A will be held as
    const bool withComplex = std::holds_alternative<Matrix<SingleComplex>>(b.matrix);
    const MatrixFile a = read_matrix_market(request.a, withComplex ? 5 : 2); // with its factors
    check_sizes(request, a.matrix, b.matrix);
    fmt::print("A: {}\nb: {}\n", description(request.a, a), description(request.b, b));
    // A complex side makes the other one complex.
    if (const auto* const realA = std::get_if<Matrix<float>>(&a.matrix); realA && !withComplex)
        fit(request, outputs, *realA, std::get<Matrix<float>>(b.matrix));
    else
        fit(request, outputs, to_complex(a.matrix), to_complex(b.matrix));
}

} // namespace

void add_fit(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "fit", "Finds the x with the least |b - A x| by QR, and tells residual, rank and how sure x is");
    const auto request = std::make_shared<Request>();
    command->add_option("A", request->a, "Matrix Market file: a row for each observation")
        ->required()
        ->check(file_name());
    command->add_option("b", request->b, "file of the observed values, one or more columns")
        ->required()
        ->check(file_name());
    command->add_option("-o,--out", request->out, "file for x")->check(file_name());
    command->add_option("--picture", request->picture, "SVG file for b, A x and the residual of the first column")
        ->check(file_name());
    command->add_option("--over", request->over, "column of A, from 1, to draw them over; without, the row")
        ->check(CLI::PositiveNumber);
    command->add_flag("--pivot", request->pivoted, "choose independent columns; x is 0 for the others");
    command->add_flag("--coordinate", request->isCoordinate, "write nonzeros only");
    command->callback([request] { run(*request); });
}

} // namespace tools
