#include "low_rank.hpp"

#include <fmt/core.h>
#include <stdexcept>

#include "qrv/singular_values.hpp"
#include "support/picture.hpp"

void show_low_rank(const std::string& image, const std::filesystem::path& pictures) {
    const support::Picture original = support::read_png(image);
    const tools::SingularValues svd(image, original, true);
    const double residual = svd.residual(original);
    fmt::print("Low rank by singular values\n  {:<15} {:4} x {:<4} {:<10} {:8.2f} ms   residual {:.1e}\n", "photograph",
               original.rows, original.columns, "Sgesdd", 1e3 * svd.seconds(), residual);
    if (!(residual <= svd.rounding_tolerance()))
        throw std::runtime_error(fmt::format("the vectors of the photograph are wrong: residual {:.1e}", residual));
    std::vector<support::Picture> shown;
    for (const int rank : {5, 20, 80})
        if (rank <= svd.count()) {
            shown.push_back(nearest_of_rank(svd, rank));
            fmt::print("  rank {:<4}       {:5.1f} % of the numbers, relative error {:.3f}\n", rank,
                       100.0 * rank * (1 + original.rows + original.columns) / (1.0 * original.rows * original.columns),
                       svd.distance(rank));
        }
    shown.push_back(original);
    const std::filesystem::path together = pictures / "rank-5-20-80-original.png";
    support::write_png(together.string(), support::beside(shown));
    fmt::print("  {}\n\n", together.string());
}
