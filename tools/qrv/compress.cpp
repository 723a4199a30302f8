// qrv compress: a picture by a matrix of low rank.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>

#include "command.hpp"
#include "report.hpp"
#include "singular_values.hpp"
#include "support/picture.hpp"

namespace tools {
namespace {

struct Request {
    std::string picture, out;
    std::optional<int> rank;
    std::optional<double> error;
    bool wantsJson = false;
};

// "photo.png" becomes "photo-rank20.png".
std::string name_beside(const std::string& picture, int rank) {
    if (picture == "-")
        return "-";
    const std::filesystem::path path(picture);
    return (path.parent_path() / fmt::format("{}-rank{}.png", path.stem().string(), rank)).string();
}

// The difference of what is in the file, rounded to whole levels.
double root_mean_square(const support::Picture& x, const support::Picture& y) {
    double sum = 0;
    for (std::size_t p = 0; p < x.values.size(); ++p) {
        const double difference = std::round(std::clamp(y.values[p], 0.0F, 255.0F)) - x.values[p];
        sum += difference * difference;
    }
    return std::sqrt(sum / static_cast<double>(x.values.size()));
}

support::Planes read(const std::string& picture) {
    try {
        return support::read_planes(picture);
    } catch (const support::PictureError& error) {
        throw InputError(error.what());
    }
}

void run(const Request& request) {
    const support::Planes original = read(request.picture);
    const support::Picture& a = original.all;
    const SingularValues svd(request.picture, a, true);
    const int rank = request.rank ? *request.rank : svd.rank_within(*request.error);
    if (rank > svd.count())
        throw InputError(fmt::format("{} has {} singular values, fewer than {}", request.picture, svd.count(), rank));
    const std::string out = request.out.empty() ? name_beside(request.picture, rank) : request.out;
    if (out != "-")
        require_different({request.picture, out});
    const support::Planes low{nearest_of_rank(svd, rank), original.count};
    const std::string content = support::png(low);
    OutputFile file(out);
    file.write(content);
    file.commit();

    const double all = 1.0 * a.rows * a.columns, kept = rank * (1.0 + a.rows + a.columns);
    Report report(request.wantsJson, {out});
    report.print("{}: {} x {} pixels, {}\n", figure("file", request.picture), figure("columns", original.columns()),
                 figure("rows", a.rows), original.count == 3 ? "red, green and blue beside each other" : "gray");
    report.add("planes", original.count);
    report.print("  rank              {} of {}  ({:.2f} ms)\n", figure("rank", rank), svd.count(),
                 figure("milliseconds", 1e3 * svd.seconds()));
    report.print("  numbers           {:.0f} instead of {:.0f}: {:.1f} %\n", figure("numbers_kept", kept),
                 figure("numbers", all), 100 * kept / all);
    report.print("  error             {:.4f} of the picture; {:.2f} levels of 255 in the mean\n",
                 figure("error", static_cast<double>(svd.distance(rank))),
                 figure("levels_in_the_mean", root_mean_square(a, low.all)));
    report.print("  file              {} bytes", figure("bytes", content.size()));
    std::error_code none; // a stream has no size
    if (const auto before = std::filesystem::file_size(request.picture, none); !none)
        report.print(", before {}", figure("bytes_before", before));
    report.print("\n  picture           {}\n", figure("picture_file", file.name()));
    report.close();
}

} // namespace

void add_compress(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("compress", "Approximates a picture, gray or in colour, by a matrix of low rank");
    const auto request = std::make_shared<Request>();
    command->add_option("PICTURE", request->picture, "PNG file")->required()->check(file_name());
    command
        ->add_option("-o,--out", request->out,
                     "PNG file for the result (PICTURE-rankK.png without; standard output if PICTURE is)")
        ->check(file_name());
    CLI::Option_group* const choice = command->add_option_group("how much of it");
    choice->add_option("--rank", request->rank, "so many singular values are kept")->check(CLI::Range(1, 1'000'000));
    choice->add_option("--error", request->error, "as few as keep the relative error of the picture within this")
        ->check(CLI::Range(0.0, 1.0));
    choice->require_option(1);
    add_json(*command, request->wantsJson);
    command->callback([request] { run(*request); });
}

} // namespace tools
