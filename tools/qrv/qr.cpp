// qrv qr: the factors of a matrix.
#include <fmt/core.h>
#include <optional>

#include "command.hpp"
#include "qr_factors.hpp"

namespace tools {
namespace {

struct Request {
    std::string a, q, r, p;
    bool pivoted = false, isCoordinate = false;
};

struct Outputs {
    std::optional<OutputFile> q, r, p;
};

template <class T>
void write(std::optional<OutputFile>& out, const char* name, const Matrix<T>& factor, const Request& request) {
    if (!out)
        return;
    write_matrix_market(*out, factor, request.isCoordinate ? Format::coordinate : Format::array,
                        std::string(name) + " of a QR factorization by qrv");
    fmt::print("  {:<16}  {}\n", name, out->name());
}

// Column j has its 1 in the row of the column of A that stands in place j.
Matrix<float> permutation(const std::vector<int>& order) {
    const int n = static_cast<int>(order.size());
    Matrix<float> p(n, n);
    for (int j = 0; j < n; ++j)
        p(order[static_cast<std::size_t>(j)] - 1, j) = 1;
    return p;
}

template <class T>
void factor(const Request& request, Outputs& outputs, const Matrix<T>& a) {
    const QrFactors<T> factors(request.a, a, request.pivoted);
    fmt::print("  {:<16}  {:.2f} ms, {:.1f} GFLOP/s\n", request.pivoted ? "pivoted QR" : "QR",
               1e3 * factors.factor_seconds(), factors.gflops());
    const FactorErrors errors = factor_errors(factors, a);
    fmt::print("  errors            |A{} - Q R| {:.2g} of |A|, |Q'Q - I| {:.2g}, estimated\n",
               request.pivoted ? " P" : "", errors.factors, errors.orthogonality);
    fmt::print("  rank              {} of {}\n", factors.rank(), std::min(a.rows, a.columns));
    fmt::print("  condition number  {:.2g}, of R in the 1-norm, estimated\n", factors.condition());
    write(outputs.q, "Q", factors.q(), request);
    write(outputs.r, "R", factors.r(), request);
    if (outputs.p)
        write(outputs.p, "P", permutation(factors.order()), request);
}

void run(const Request& request) {
    require_different({request.q, request.r, request.p});
    Outputs outputs{open_output(request.q), open_output(request.r), open_output(request.p)};
    const MatrixFile a = read_matrix_market(request.a, 4); // its factors, Q and R
    fmt::print("A: {}\n", description(request.a, a));
    std::visit([&](const auto& matrix) { factor(request, outputs, matrix); }, a.matrix);
}

} // namespace

void add_qr(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "qr", "Factors A = Q R, Q with orthonormal columns and R upper triangular, and tells how well it went");
    const auto request = std::make_shared<Request>();
    command->add_option("A", request->a, "Matrix Market file")->required()->check(file_name());
    command->add_option("-q,--q", request->q, "file for Q, as many columns as A has, or rows if these are fewer")
        ->check(file_name());
    command->add_option("-r,--r", request->r, "file for R")->check(file_name());
    CLI::Option* const p = command->add_option("-p,--p", request->p, "file for the permutation P: A P = Q R");
    p->check(file_name());
    p->needs(command->add_flag("--pivot", request->pivoted, "take the longest column that is left, each time"));
    command->add_flag("--coordinate", request->isCoordinate, "write nonzeros only");
    command->callback([request] { run(*request); });
}

} // namespace tools
