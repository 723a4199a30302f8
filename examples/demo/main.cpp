// The library at work on a photograph: blurs and sharpens it as products with banded Toeplitz matrices through the
// provider's Sgemm, checks them in double precision, and writes the pictures; fits a model to it by QR (Sgeqrf, Sormqr,
// Strtrs). Then on matrices from practice: solves linear systems with them by LU (Sgetrf, Sgetrs), Cholesky (Spotrf,
// Spotrs) and band LU (Sgbtrf, Sgbtrs), and tells how good the solutions are; draws spectra and modes of vibration
// (Ssyevr, Sgeev); and approximates the photograph by matrices of low rank (Sgesdd).
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fmt/core.h>
#include <numeric>
#include <qrv/providers.hpp>
#include <qrv/service.h>

#include "eigenvalues.hpp"
#include "fit.hpp"
#include "low_rank.hpp"
#include "support/picture.hpp"
#include "systems.hpp"
#include "toeplitz.hpp"

namespace {

using support::Picture, support::PictureError;

constexpr double blurSigma = 4;    // pixels
constexpr double sharpenSigma = 2; // pixels

// Largest difference from the double-precision result, relative to the largest value there.
double relative_error(const Picture& picture, const std::vector<double>& expected) {
    double difference = 0, largest = 0;
    for (std::size_t p = 0; p < expected.size(); ++p) {
        difference = std::max(difference, std::abs(picture.values[p] - expected[p]));
        largest = std::max(largest, std::abs(expected[p]));
    }
    return difference / largest;
}

std::string configuration() {
    std::string text(static_cast<std::size_t>(qrv_serv_get_configuration(nullptr, 0)) + 1, '\0');
    qrv_serv_get_configuration(text.data(), static_cast<int>(text.size()));
    text.pop_back();
    return text;
}

// Filters, checks, reports one line and writes the picture. Result: the filtered picture.
Picture show(const char* name, const Picture& original, const std::vector<float>& taps, float level,
             const std::filesystem::path& folder) {
    const Corvex::Mathematics::LinearAlgebra::Providers::ParallelX86SingleLinearAlgebraProvider provider;
    filter(*provider.BlasLevel3(), original, taps, level); // the first call pays for one-time work
    const Filtered filtered = filter(*provider.BlasLevel3(), original, taps, level);
    const double error = relative_error(filtered.picture, filter_oracle(original, taps, level));
    // A sum of n products in single precision may be off by n roundings; a fault is off by far more.
    const double allowed = std::max(original.rows, original.columns) * 6e-8;
    fmt::print("  {:<10} {:8.2f} ms  {:7.1f} GFLOP/s   largest relative error {:.1e}\n", name, 1e3 * filtered.seconds,
               filtered.flops / filtered.seconds / 1e9, error);
    if (!(error <= allowed))
        throw std::runtime_error(
            fmt::format("the {} picture is wrong: relative error {:.1e}, allowed {:.1e}", name, error, allowed));
    support::write_png((folder / (std::string(name) + ".png")).string(), filtered.picture);
    return filtered.picture;
}

void show_pictures(const std::string& image, const std::filesystem::path& folder) {
    const Picture original = support::read_png(image);
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure)
        throw PictureError("cannot make the folder " + folder.string() + ": " + failure.message());
    const float level = std::accumulate(original.values.begin(), original.values.end(), 0.0F) /
                        static_cast<float>(original.values.size());

    fmt::print("{}: {} x {} pixels, filtered as G A G' with banded Toeplitz matrices through Sgemm\n", image,
               original.columns, original.rows);
    const Picture blurred = show("blurred", original, blur_taps(blurSigma), level, folder);
    const Picture sharpened = show("sharpened", original, sharpen_taps(sharpenSigma), level, folder);
    const std::filesystem::path together = folder / "original-blurred-sharpened.png";
    support::write_png(together.string(), support::beside({original, blurred, sharpened}));
    fmt::print("\nPictures: {}\n          {} (beside each other)\n\n", folder.string(), together.string());
    show_fit(original, folder);
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app{"Blurs and sharpens a picture, solves linear systems and draws spectra, through the provider."};
    std::string image, folder = "demo-output", data = "examples/data";
    app.add_option("image", image, "PNG picture to read")->required();
    app.add_option("--out", folder, "folder for the pictures")->capture_default_str();
    app.add_option("--data", data, "folder of the matrices")->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    try {
        show_pictures(image, folder);
        show_systems(data);
        show_eigenvalues(data, folder);
        show_low_rank(image, folder);
        fmt::print("{}", configuration());
    } catch (const std::exception& error) {
        fmt::print(stderr, "qrv_demo: {}\n", error.what());
        return 1;
    }
    return 0;
}
