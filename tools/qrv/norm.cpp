// qrv norm: norms of a matrix.
#include "command.hpp"
#include "report.hpp"
#include "routines.hpp"

namespace tools {
namespace {

struct Request {
    std::string a;
    bool wantsJson = false;
};

void run(const Request& request) {
    const MatrixFile file = read_matrix(request.a);
    Report report(request.wantsJson, {});
    report.matrix("A", request.a, file);
    std::visit(
        [&](const auto& a) {
            // Nine digits name a float.
            report.print("  largest element  {:.9g}\n",
                         figure("largest_element", norm(MatrixNorm::MaximumAbsolute, a)));
            report.print("  1-norm           {:.9g}\n", figure("one_norm", norm(MatrixNorm::One, a)));
            report.print("  infinity-norm    {:.9g}\n", figure("infinity_norm", norm(MatrixNorm::Infinity, a)));
            report.print("  Frobenius norm   {:.9g}\n", figure("frobenius_norm", norm(MatrixNorm::Frobenius, a)));
        },
        file.matrix);
    report.close();
}

} // namespace

void add_norm(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("norm", "Norms of a matrix");
    const auto request = std::make_shared<Request>();
    command->add_option("A", request->a, "file of a matrix")->required()->check(file_name());
    add_json(*command, request->wantsJson);
    command->callback([request] { run(*request); });
}

} // namespace tools
