// qrv qr: the factors of a matrix.
#include <optional>

#include "command.hpp"
#include "qr_factors.hpp"
#include "report.hpp"

namespace tools {
namespace {

struct Request {
    std::string a, q, r, p;
    bool pivoted = false, isCoordinate = false, wantsJson = false;
};

struct Outputs {
    std::optional<OutputFile> q, r, p;
};

// Column j has its 1 in the row of the column of A that stands in place j.
Matrix<float> permutation(const std::vector<int>& order) {
    const int n = static_cast<int>(order.size());
    Matrix<float> p(n, n);
    for (int j = 0; j < n; ++j)
        p(order[static_cast<std::size_t>(j)] - 1, j) = 1;
    return p;
}

template <class T>
void factor(const Request& request, Report& report, Outputs& outputs, Format formatOfA, const Matrix<T>& a) {
    const QrFactors<T> factors(request.a, a, request.pivoted);
    report.print("  {:<16}  {:.2f} ms, {:.1f} GFLOP/s\n",
                 figure("method", std::string(request.pivoted ? "pivoted QR" : "QR")),
                 figure("milliseconds", 1e3 * factors.factor_seconds()), figure("gflops", factors.gflops()));
    const FactorErrors errors = factor_errors(factors, a);
    report.print("  errors            |A{} - Q R| {:.2g} of |A|, |Q'Q - I| {:.2g}, estimated\n",
                 request.pivoted ? " P" : "", figure("factor_error", errors.factors),
                 figure("orthogonality_error", errors.orthogonality));
    report.print("  rank              {} of {}\n", figure("rank", factors.rank()), std::min(a.rows, a.columns));
    report.print("  condition number  {:.2g}, of R in the 1-norm, estimated\n",
                 figure("condition_number", factors.condition()));
    const auto write = [&](const char* label, const std::string& name, std::optional<OutputFile>& file,
                           const auto& made) {
        if (file || report.as_json())
            report.result(label, file, made(), format_of(name, formatOfA, request.isCoordinate),
                          std::string(label) + " of a QR factorization by qrv");
    };
    write("Q", request.q, outputs.q, [&] { return factors.q(); });
    write("R", request.r, outputs.r, [&] { return factors.r(); });
    if (request.pivoted)
        write("P", request.p, outputs.p, [&] { return permutation(factors.order()); });
}

void run(const Request& request) {
    require_different({request.q, request.r, request.p});
    Outputs outputs{open_output(request.q, request.isCoordinate), open_output(request.r, request.isCoordinate),
                    open_output(request.p, request.isCoordinate)};
    const MatrixFile a = read_matrix(request.a, 4); // its factors, Q and R
    Report report(request.wantsJson, {request.q, request.r, request.p});
    report.matrix("A", request.a, a);
    std::visit([&](const auto& matrix) { factor(request, report, outputs, a.format, matrix); }, a.matrix);
    report.close();
}

} // namespace

void add_qr(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "qr", "Factors A = Q R, Q with orthonormal columns and R upper triangular, and tells how well it went");
    const auto request = std::make_shared<Request>();
    command->add_option("A", request->a, "file of a matrix")->required()->check(file_name());
    command->add_option("-q,--q", request->q, "file for Q, as many columns as A has, or rows if these are fewer")
        ->check(file_name());
    command->add_option("-r,--r", request->r, "file for R")->check(file_name());
    CLI::Option* const p = command->add_option("-p,--p", request->p, "file for the permutation P: A P = Q R");
    p->check(file_name());
    p->needs(command->add_flag("--pivot", request->pivoted, "take the longest column that is left, each time"));
    add_coordinate(*command, request->isCoordinate);
    add_json(*command, request->wantsJson);
    command->callback([request] { run(*request); });
}

} // namespace tools
