// qrv svd: singular values of a matrix, what they tell of it, and its singular vectors.
#include <optional>

#include "command.hpp"
#include "report.hpp"
#include "singular_values.hpp"
#include "support/plot.hpp"

namespace tools {
namespace {

struct Request {
    std::string a, out, left, right, picture;
    bool judged = false; // vectors, whether or not they are written
    bool wantsJson = false;
    std::optional<double> tolerance;

    bool with_vectors() const { return judged || !left.empty() || !right.empty(); }
};

struct Outputs { // opened before the work
    std::optional<OutputFile> values, left, right, picture;
};

// All of a short list; of a long one both ends.
void print_values(Report& report, const SingularValues& svd) {
    constexpr int ends = 10;
    for (int k = 0; k < svd.count(); ++k) {
        if (k == ends && svd.count() > 2 * ends) {
            report.print("    ... {} more; -o gives all\n", svd.count() - 2 * ends);
            k = svd.count() - ends;
        }
        report.print("    {:.9g}\n", svd.value(k));
    }
}

void print_summary(Report& report, const SingularValues& svd, double tolerance) {
    report.print("  singular values   {}, from {:.6g} to {:.6g}  ({:.2f} ms)\n", svd.count(),
                 figure("largest_value", svd.value(0)), figure("smallest_value", svd.value(svd.count() - 1)),
                 figure("milliseconds", 1e3 * svd.seconds()));
    report.print("  rank              {}: values above {:.2g} of the largest\n", figure("rank", svd.rank(tolerance)),
                 figure("tolerance", tolerance));
    report.print("  condition         {:.4g}: the largest over the smallest value\n",
                 figure("condition_number", svd.condition()));
    report.singular(svd.condition(), "a solution");
}

void solve(const Request& request, Report& report, Outputs& outputs, Format formatOfA, const AnyMatrix& a) {
    const SingularValues svd(request.a, a, request.with_vectors());
    const double tolerance = request.tolerance.value_or(svd.rounding_tolerance());
    print_summary(report, svd, tolerance);
    if (request.with_vectors()) {
        report.print("  residual          {:.2g}: |A - U S V'| relative to |A|\n", figure("residual", svd.residual(a)));
        report.print("  orthogonality     {:.2g}: the largest element of U' U - I and V' V - I\n",
                     figure("orthogonality_error", svd.orthogonality()));
    }
    if (!outputs.values)
        print_values(report, svd);
    const auto write = [&](const char* label, const std::string& name, auto& file, const AnyMatrix& result) {
        report.result(label, file, result, format_of(name, formatOfA), std::string(label) + " by qrv");
    };
    write("Singular values", request.out, outputs.values, svd.values());
    if (request.with_vectors()) {
        write("Left vectors", request.left, outputs.left, svd.left());
        write("Right vectors", request.right, outputs.right, svd.right());
    }
    if (outputs.picture)
        report.picture(*outputs.picture, support::svg(decay(svd, tolerance, "Singular values of " + request.a)));
}

void run(const Request& request) {
    require_different({request.out, request.left, request.right, request.picture});
    Outputs outputs{open_output(request.out), open_output(request.left), open_output(request.right),
                    open_output(request.picture)};
    const MatrixFile file = read_matrix(request.a, request.with_vectors() ? 6 : 2);
    if (std::visit([](const auto& a) { return a.values.empty(); }, file.matrix))
        throw InputError(request.a + " has no elements");
    Report report(request.wantsJson, {request.out, request.left, request.right, request.picture});
    report.matrix("A", request.a, file);
    solve(request, report, outputs, file.format, file.matrix);
    report.close();
}

} // namespace

void add_svd(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "svd", "Finds the singular values of a matrix, its rank and condition, and its singular vectors if wanted");
    const auto request = std::make_shared<Request>();
    command->add_option("A", request->a, "file of a matrix")->required()->check(file_name());
    command->add_option("-o,--out", request->out, "file for the values")->check(file_name());
    command->add_flag("--vectors", request->judged, "find vectors too, and tell how good they are");
    command->add_option("--left", request->left, "file for the left vectors U, A = U S V'")->check(file_name());
    command->add_option("--right", request->right, "file for the right vectors V")->check(file_name());
    command
        ->add_option("--tolerance", request->tolerance,
                     "values up to so much of the largest count as zero for the rank (the larger size times 1.2e-7 "
                     "without)")
        ->check(CLI::Range(0.0, 1.0));
    command->add_option("--picture", request->picture, "SVG file for the values over their index")->check(file_name());
    add_json(*command, request->wantsJson);
    command->callback([request] { run(*request); });
}

} // namespace tools
