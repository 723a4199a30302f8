// qrv fit: a least squares problem, and how far its solution can be trusted.
#include <optional>

#include "command.hpp"
#include "picture.hpp"
#include "qr_factors.hpp"
#include "report.hpp"

namespace tools {
namespace {

struct Request {
    std::string a, b, out, picture;
    bool pivoted = false, isCoordinate = false, wantsJson = false;
    int over = 0; // column of A, from 1
};

struct Outputs {
    std::optional<OutputFile> x, picture;
};

template <class T>
void print_quality(Report& report, const QrFactors<T>& factors, const FitQuality& quality) {
    report.print("  residual          {:.4g} in the 2-norm, {:.2g} of b\n", figure("residual", quality.residual),
                 figure("share_of_b", quality.share));
    report.print("  condition number  {:.2g}, of R in the 1-norm, estimated\n",
                 figure("condition_number", factors.condition()));
    report.print("  backward error    {:.2g}: a change of A by that share makes x exact\n",
                 figure("backward_error", quality.backwardError));
    report.print("  error of x        at most {:.2g} of its length: what such a change does\n",
                 figure("error_bound", quality.errorBound));
}

template <class T>
void fit(const Request& request, Report& report, Outputs& outputs, Format format, const Matrix<T>& a,
         const Matrix<T>& b) {
    const QrFactors<T> factors(request.a, a, request.pivoted);
    report.print("  {:<16}  {:.2f} ms, {:.1f} GFLOP/s\n",
                 figure("method", std::string(request.pivoted ? "pivoted QR" : "QR")),
                 figure("milliseconds", 1e3 * factors.factor_seconds()), figure("gflops", factors.gflops()));
    report.print("  rank              {} of {}\n", figure("rank", factors.rank()), a.columns);
    const Matrix<T> x = factors.solve(b);
    print_quality(report, factors, factors.quality(a, x, b));
    report.result("x", outputs.x, x, format, "Least squares solution of A x = b by qrv");
    if (outputs.picture)
        report.picture(
            *outputs.picture,
            fit_picture(a, x, b, request.over, "Least squares fit of A x to b, A: " + request.a + ", b: " + request.b));
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
    require_one_standard_input(request.a, request.b);
    Outputs outputs{open_output(request.out, request.isCoordinate), open_output(request.picture)};
    const MatrixFile b = read_matrix(request.b, 3); // first, for it tells what A will be held as
    const bool withComplex = std::holds_alternative<Matrix<SingleComplex>>(b.matrix);
    const MatrixFile a = read_matrix(request.a, withComplex ? 5 : 2); // with its factors
    check_sizes(request, a.matrix, b.matrix);
    Report report(request.wantsJson, {request.out, request.picture});
    report.matrix("A", request.a, a);
    report.matrix("b", request.b, b);
    const Format format = format_of(request.out, a.format, request.isCoordinate);
    // A complex side makes the other one complex.
    if (const auto* const realA = std::get_if<Matrix<float>>(&a.matrix); realA && !withComplex)
        fit(request, report, outputs, format, *realA, std::get<Matrix<float>>(b.matrix));
    else
        fit(request, report, outputs, format, to_complex(a.matrix), to_complex(b.matrix));
    report.close();
}

} // namespace

void add_fit(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "fit", "Finds the x with the least |b - A x| by QR, and tells residual, rank and how sure x is");
    const auto request = std::make_shared<Request>();
    command->add_option("A", request->a, "file of a matrix with a row for each observation")
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
    add_coordinate(*command, request->isCoordinate);
    add_json(*command, request->wantsJson);
    command->callback([request] { run(*request); });
}

} // namespace tools
