// qrv eig: eigenvalues and eigenvectors of a matrix, and how good they are.
#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <random>

#include "command.hpp"
#include "eigensystem.hpp"
#include "progress.hpp"
#include "report.hpp"
#include "support/plot.hpp"

namespace tools {
namespace {

struct Request {
    std::string a, out, left, right, picture;
    VectorsWanted judged; // whether or not they are written
    bool wantsJson = false;

    VectorsWanted wanted() const { return {judged.left || !left.empty(), judged.right || !right.empty()}; }
};

// Outputs, opened before the work.
struct Outputs {
    std::optional<OutputFile> values, left, right, picture;
};

std::string text_of(SingleComplex value) {
    return value.Im() == 0 ? fmt::format("{:.9g}", value.Re()) : fmt::format("{:.9g} {:+.9g}i", value.Re(), value.Im());
}

// All of a short list; of a long one both ends.
void print_values(Report& report, const Eigensystem& system) {
    constexpr int ends = 10;
    for (int k = 0; k < system.order(); ++k) {
        if (k == ends && system.order() > 2 * ends) {
            report.print("    ... {} more; -o gives all\n", system.order() - 2 * ends);
            k = system.order() - ends;
        }
        report.print("    {}\n", text_of(system.value(k)));
    }
}

void print_summary(Report& report, const Eigensystem& system) {
    int complex = 0;
    double largest = 0;
    for (int k = 0; k < system.order(); ++k) {
        complex += system.value(k).Im() != 0 ? 1 : 0;
        largest = std::max(largest, std::abs(wide(system.value(k))));
    }
    report.print("  {:<16}  {:.2f} ms\n",
                 figure("method", std::string(system.by_symmetry() ? "symmetric" : "unsymmetric")),
                 figure("milliseconds", 1e3 * system.seconds()));
    if (system.by_symmetry())
        report.print("  eigenvalues       {}, from {:.6g} to {:.6g}\n", system.order(),
                     figure("smallest_value", system.value(0).Re()),
                     figure("largest_value", system.value(system.order() - 1).Re()));
    else
        report.print("  eigenvalues       {}: {} real, {} conjugate pairs; the largest has size {:.6g}\n",
                     system.order(), figure("real", system.order() - complex), figure("conjugate_pairs", complex / 2),
                     figure("largest_size", largest));
}

void print_quality(Report& report, const Eigensystem& system, const Matrix<float>& a, VectorsWanted wanted) {
    report.print("  their sum         off the trace of A by {:.2g} of |A|\n",
                 figure("trace_error", system.trace_error(a)));
    if (system.by_symmetry() ? wanted.any() : wanted.right)
        report.print("  residual          {:.2g}: the largest |A v - w v| relative to |A|\n",
                     figure("residual", system.residual(a, false)));
    if (!system.by_symmetry() && wanted.left)
        report.print("  residual, left    {:.2g}: the largest |u' A - w u'| relative to |A|\n",
                     figure("left_residual", system.residual(a, true)));
    if (system.by_symmetry() && wanted.any())
        report.print("  orthogonality     {:.2g}: the largest element of V' V - I\n",
                     figure("orthogonality_error", system.orthogonality()));
}

// Seconds it may take, from a small matrix: the operations grow with the cube of the order. Nothing for small ones,
// whose work is done before a bar would show.
std::optional<double> expected_seconds(const Matrix<float>& a, VectorsWanted wanted) {
    constexpr int small = 256, worthIt = 600;
    if (a.rows < worthIt)
        return {};
    Matrix<float> sample(small, small);
    std::minstd_rand generator(1);
    for (float& element : sample.values)
        element = static_cast<float>(generator() % 1000);
    if (is_symmetric(a))
        for (int j = 0; j < small; ++j)
            for (int i = 0; i < j; ++i)
                sample(i, j) = sample(j, i);
    return Eigensystem("a sample", sample, wanted).seconds() * std::pow(1.0 * a.rows / small, 3);
}

void solve(const Request& request, Report& report, Outputs& outputs, Format formatOfA, const Matrix<float>& a) {
    const VectorsWanted wanted = request.wanted();
    std::optional<ProgressBar> progress;
    if (const auto seconds = expected_seconds(a, wanted))
        progress = expecting("eigenvalues", *seconds);
    const Eigensystem system(request.a, a, wanted);
    progress.reset();
    print_summary(report, system);
    print_quality(report, system, a, wanted);
    if (!outputs.values)
        print_values(report, system);
    const auto write = [&](const char* label, const std::string& name, auto& file, const AnyMatrix& result) {
        report.result(label, file, result, format_of(name, formatOfA), std::string(label) + " by qrv");
    };
    write("Eigenvalues", request.out, outputs.values, system.values());
    if (wanted.right)
        write("Right vectors", request.right, outputs.right, system.vectors(false));
    if (wanted.left)
        write("Left vectors", request.left, outputs.left, system.vectors(true));
    if (outputs.picture)
        report.picture(*outputs.picture, support::svg(spectrum(system, "Eigenvalues of " + request.a)));
}

const Matrix<float>& require_real(const std::string& path, const MatrixFile& file) {
    if (const auto* const real = std::get_if<Matrix<float>>(&file.matrix))
        return *real;
    const char* const kind = file.symmetry == Symmetry::hermitian   ? "Hermitian"
                             : file.symmetry == Symmetry::symmetric ? "symmetric"
                                                                    : "nonsymmetric";
    throw InputError(fmt::format("{} is complex; the library has no complex {} eigenvalue solver", path, kind));
}

void run(const Request& request) {
    require_different({request.out, request.left, request.right, request.picture});
    Outputs outputs{open_output(request.out), open_output(request.left), open_output(request.right),
                    open_output(request.picture)};
    const MatrixFile file = read_matrix(request.a, request.wanted().any() ? 6 : 3);
    require_square(request.a, file.matrix);
    const Matrix<float>& a = require_real(request.a, file);
    Report report(request.wantsJson, {request.out, request.left, request.right, request.picture});
    report.matrix("A", request.a, file);
    solve(request, report, outputs, file.format, a);
    report.close();
}

} // namespace

void add_eig(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("eig", "Finds the eigenvalues of a real matrix, and its eigenvectors if wanted");
    const auto request = std::make_shared<Request>();
    command->add_option("A", request->a, "file of a square matrix")->required()->check(file_name());
    command->add_option("-o,--out", request->out, "file for the values")->check(file_name());
    const std::map<std::string, VectorsWanted> sides{
        {"left", {true, false}}, {"right", {false, true}}, {"both", {true, true}}};
    command
        ->add_option_function<std::string>(
            "--vectors", [request, sides](const std::string& side) { request->judged = sides.at(side); },
            "find vectors too, and tell how good they are; of a symmetric matrix both sides are one")
        ->check(CLI::IsMember({"left", "right", "both"}))
        ->option_text("left|right|both");
    command->add_option("--left", request->left, "file for the left vectors, u with u' A = w u'")->check(file_name());
    command->add_option("--right", request->right, "file for the right vectors, v with A v = w v")->check(file_name());
    command
        ->add_option("--picture", request->picture,
                     "SVG file for the values: over their index if A is symmetric, else in the complex plane")
        ->check(file_name());
    add_json(*command, request->wantsJson);
    command->callback([request] { run(*request); });
}

} // namespace tools
