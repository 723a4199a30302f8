#include "eigenvalues.hpp"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fmt/os.h>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <vector>

#include "matrix_file/matrix_file.hpp"
#include "qrv/eigensystem.hpp"

namespace {

using support::wide;
using tools::Eigensystem, tools::Matrix;

Matrix<float> read(const std::filesystem::path& path) {
    return std::get<Matrix<float>>(tools::read_matrix(path.string()).matrix);
}

void write(const std::filesystem::path& path, const support::Plot& plot) {
    fmt::output_file(path.string()).print("{}", support::svg(plot));
    fmt::print("  {}\n", path.string());
}

// The matrix of a network, taken for springs that hold as many equal masses: its vectors are the modes of vibration,
// its values the squares of their frequencies. Masses stand in the order in which the slowest mode moves them.
support::Plot slowest_modes(const Eigensystem& system) {
    const auto vectors = std::get<Matrix<float>>(system.vectors(false));
    std::vector<int> masses(static_cast<std::size_t>(system.order()));
    std::iota(masses.begin(), masses.end(), 0);
    std::sort(masses.begin(), masses.end(), [&](int i, int j) { return vectors(i, 0) < vectors(j, 0); });
    support::Plot plot{"The slowest modes of 494 masses on springs",
                       {.title = "mass, in the order of the slowest mode", .isWhole = true},
                       {.title = "displacement"},
                       {}};
    for (int mode = 0; mode < 4; ++mode) {
        const double frequency = std::sqrt(wide(system.value(mode).Re())) / (2 * 3.14159265358979);
        support::Series& curve = plot.series.emplace_back();
        curve.name = fmt::format("frequency {:.3f}", frequency);
        for (const int mass : masses) {
            curve.x.push_back(static_cast<double>(curve.x.size() + 1));
            curve.y.push_back(wide(vectors(mass, mode)));
        }
    }
    return plot;
}

void show(const char* what, const Matrix<float>& a, const Eigensystem& system) {
    const double residual = system.residual(a, false);
    fmt::print("  {:<15} {:4} x {:<4} {:<10} {:8.2f} ms   residual {:.1e}\n", what, a.rows, a.columns,
               system.by_symmetry() ? "Ssyevr" : "Sgeev", 1e3 * system.seconds(), residual);
    // Each method is off by a few roundings; a fault is off by far more.
    const double allowed = a.rows * static_cast<double>(std::numeric_limits<float>::epsilon());
    if (!(residual <= allowed))
        throw std::runtime_error(
            fmt::format("the vectors of the {} are wrong: residual {:.1e}, allowed {:.1e}", what, residual, allowed));
}

} // namespace

void show_eigenvalues(const std::filesystem::path& data, const std::filesystem::path& pictures) {
    fmt::print("Eigenvalues and eigenvectors\n");
    const Matrix<float> network = read(data / "494_bus.mtx"), flow = read(data / "olm500.mtx");
    const Eigensystem vibration("494_bus", network, {.right = true}), stability("olm500", flow, {.right = true});
    show("power network", network, vibration);
    show("flow model", flow, stability);
    write(pictures / "vibration-modes.svg", slowest_modes(vibration));
    write(pictures / "flow-spectrum.svg", spectrum(stability, "Eigenvalues of the Olmstead flow model"));
    fmt::print("\n");
}
