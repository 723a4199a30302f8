// qrv svd: singular values of a matrix, what they tell of it, and its singular vectors.
#include <fmt/core.h>
#include <optional>

#include "command.hpp"
#include "progress.hpp"
#include "singular_values.hpp"
#include "support/plot.hpp"

namespace tools {
namespace {

struct Request {
    std::string a, out, left, right, picture;
    bool judged = false; // vectors, whether or not they are written
    std::optional<double> tolerance;

    bool with_vectors() const { return judged || !left.empty() || !right.empty(); }
};

struct Outputs { // opened before the work
    std::optional<OutputFile> values, left, right, picture;
};

// All of a short list; of a long one both ends.
void print_values(const SingularValues& svd) {
    constexpr int ends = 10;
    for (int k = 0; k < svd.count(); ++k) {
        if (k == ends && svd.count() > 2 * ends) {
            fmt::print("    ... {} more; -o gives all\n", svd.count() - 2 * ends);
            k = svd.count() - ends;
        }
        fmt::print("    {:.9g}\n", svd.value(k));
    }
}

void print_summary(const SingularValues& svd, double tolerance) {
    fmt::print("  singular values   {}, from {:.6g} to {:.6g}  ({:.2f} ms)\n", svd.count(), svd.value(0),
               svd.value(svd.count() - 1), 1e3 * svd.seconds());
    fmt::print("  rank              {}: values above {:.2g} of the largest\n", svd.rank(tolerance), tolerance);
    fmt::print("  condition         {:.4g}: the largest over the smallest value\n", svd.condition());
    print_if_singular(svd.condition(), "a solution");
}

void write(OutputFile& file, const AnyMatrix& matrix, const char* what) {
    write_matrix_market(file, matrix, Format::array, std::string(what) + " by qrv");
    fmt::print("  {:<16}  {}\n", what, file.name());
}

void solve(const Request& request, Outputs& outputs, const AnyMatrix& a) {
    const SingularValues svd(request.a, a, request.with_vectors());
    const double tolerance = request.tolerance.value_or(svd.rounding_tolerance());
    print_summary(svd, tolerance);
    if (request.with_vectors()) {
        fmt::print("  residual          {:.2g}: |A - U S V'| relative to |A|\n", svd.residual(a));
        fmt::print("  orthogonality     {:.2g}: the largest element of U' U - I and V' V - I\n", svd.orthogonality());
    }
    if (outputs.values)
        write(*outputs.values, svd.values(), "Singular values");
    else
        print_values(svd);
    if (outputs.left)
        write(*outputs.left, svd.left(), "Left vectors");
    if (outputs.right)
        write(*outputs.right, svd.right(), "Right vectors");
    if (outputs.picture) {
        outputs.picture->write(support::svg(decay(svd, tolerance, "Singular values of " + request.a)));
        outputs.picture->commit();
        fmt::print("  picture           {}\n", outputs.picture->name());
    }
}

void run(const Request& request) {
    require_different({request.out, request.left, request.right, request.picture});
    Outputs outputs{open_output(request.out), open_output(request.left), open_output(request.right),
                    open_output(request.picture)};
    const MatrixFile file = read_matrix_market(request.a, request.with_vectors() ? 6 : 2);
    if (std::visit([](const auto& a) { return a.values.empty(); }, file.matrix))
        throw InputError(request.a + " has no elements");
    fmt::print("A: {}\n", description(request.a, file));
    solve(request, outputs, file.matrix);
}

} // namespace

void add_svd(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "svd", "Finds the singular values of a matrix, its rank and condition, and its singular vectors if wanted");
    const auto request = std::make_shared<Request>();
    command->add_option("A", request->a, "Matrix Market file")->required()->check(file_name());
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
    command->callback([request] { run(*request); });
}

} // namespace tools
