#include "systems.hpp"

#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <stdexcept>
#include <variant>

#include "matrix_file/matrix_file.hpp"
#include "qrv/linear_system.hpp"
#include "support/timer.hpp"

namespace {

using Matrix = tools::Matrix<float>;

struct Model {
    const char* file;
    const char* what;
};
constexpr Model models[] = {
    {"494_bus.mtx", "power network"}, {"west0479.mtx", "chemical plant"}, {"olm500.mtx", "flow model"}};

void show(const Model& model, const std::filesystem::path& folder) {
    const std::string path = (folder / model.file).string();
    const Matrix a = std::get<Matrix>(tools::read_matrix(path).matrix);
    Matrix ones(a.columns, 1);
    ones.values.assign(ones.values.size(), 1);
    const Matrix b = product(a, ones);

    tools::LinearSystem<float>(path, a, tools::Method::automatic); // the first call pays for one-time work
    tools::LinearSystem<float> system(path, a, tools::Method::automatic);
    const support::Timer timer;
    const Matrix x = system.solve(b);
    const double solveTime = 1e3 * timer.seconds();

    const double error = backward_error(a, x, b).normwise;
    fmt::print("  {:<15} {:4} x {:<4} {:<9} {:7.2f} ms {:7.2f} ms {:14.1e} {:13.1e} {:13.1e}\n", model.what, a.rows,
               a.columns, system.method(), 1e3 * system.factor_seconds(), solveTime, error, system.condition(),
               relative_difference(x, ones));
    // Each method is off by a few roundings; a fault is off by far more.
    const double allowed = a.rows * static_cast<double>(std::numeric_limits<float>::epsilon());
    if (!(error <= allowed))
        throw std::runtime_error(
            fmt::format("the solution for {} is wrong: backward error {:.1e}, allowed {:.1e}", path, error, allowed));
}

} // namespace

void show_systems(const std::filesystem::path& folder) {
    fmt::print("Linear systems with the solution (1, 1, ..., 1), in single precision, each by the method that\n"
               "its symmetry and its zeros allow\n");
    fmt::print("  {:<15} {:<11} {:<9} {:>10} {:>10} {:>14} {:>13} {:>13}\n", "", "", "method", "factors", "solve",
               "backward error", "condition", "error of x");
    for (const Model& model : models)
        show(model, folder);
    fmt::print(
        "The condition number tells how much larger the error of x may be than the backward error, which is that\n"
        "of the method.\n\n");
}
