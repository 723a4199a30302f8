#include "fit.hpp"

#include <cmath>
#include <fmt/core.h>
#include <limits>
#include <stdexcept>

#include "qrv/qr_factors.hpp"

namespace {

using Matrix = tools::Matrix<float>;

constexpr int degree = 7; // in each direction

// Chebyshev polynomials of degree 0 to `degree` at n places from -1 to 1, a column each: well conditioned as a basis.
Matrix chebyshev(int n) {
    Matrix t(n, degree + 1);
    for (int i = 0; i < n; ++i) {
        const float x = 2 * static_cast<float>(i) / static_cast<float>(n - 1) - 1;
        t(i, 0) = 1;
        t(i, 1) = x;
        for (int d = 2; d <= degree; ++d)
            t(i, d) = 2 * x * t(i, d - 1) - t(i, d - 2);
    }
    return t;
}

// A row for each pixel, a column for each product of two polynomials.
Matrix model(const support::Picture& picture) {
    const Matrix down = chebyshev(picture.rows), across = chebyshev(picture.columns);
    Matrix a(picture.rows * picture.columns, (degree + 1) * (degree + 1));
    for (int q = 0; q <= degree; ++q)
        for (int p = 0; p <= degree; ++p)
            for (int j = 0; j < picture.columns; ++j)
                for (int i = 0; i < picture.rows; ++i)
                    a(i + picture.rows * j, p + (degree + 1) * q) = down(i, p) * across(j, q);
    return a;
}

} // namespace

void show_fit(const support::Picture& original, const std::filesystem::path& folder) {
    const Matrix a = model(original);
    Matrix b(a.rows, 1);
    b.values = original.values;
    const tools::QrFactors<float> factors("the model", a, false);
    const Matrix x = factors.solve(b);
    const tools::FitQuality quality = factors.quality(a, x, b);
    const double pixels = a.rows;
    fmt::print(
        "The shading of the picture: a polynomial of degree {} in both directions, {} coefficients from {} pixels, "
        "by QR\n  factors    {:8.2f} ms  {:7.1f} GFLOP/s   condition {:.0f}, backward error {:.1e}\n"
        "  residual   {:8.1f} gray values a pixel, {:.0f} % of the picture\n",
        degree, a.columns, a.rows, 1e3 * factors.factor_seconds(), factors.gflops(), factors.condition(),
        quality.backwardError, quality.residual / std::sqrt(pixels), 100 * quality.share);
    // Sums over all pixels may be off by about as many roundings as the root of their number; a fault is off by far
    // more.
    const double allowed = 4 * std::sqrt(pixels) * static_cast<double>(std::numeric_limits<float>::epsilon());
    if (!(quality.backwardError <= allowed))
        throw std::runtime_error(
            fmt::format("the fit is wrong: backward error {:.1e}, allowed {:.1e}", quality.backwardError, allowed));

    constexpr float middle = 128;
    support::Picture fitted = original, rest = original;
    fitted.values = product(a, x).values;
    for (std::size_t p = 0; p < rest.values.size(); ++p)
        rest.values[p] += middle - fitted.values[p];
    const std::filesystem::path together = folder / "original-shading-rest.png";
    support::write_png(together.string(), support::beside({original, fitted, rest}));
    fmt::print("\nPicture: {}\n\n", together.string());
}
