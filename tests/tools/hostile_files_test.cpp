// Matrix files with random faults, read as they are and by the program: a matrix, or one line that tells why not.
#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

#include "matrix_file/matrix_file.hpp"
#include "support/child.hpp"
#include "support/folder.hpp"
#include "support/npy.hpp"
#include "support/sample.hpp"
#include "support/teams.hpp"

#ifdef QRV_TOOL
#include "qrv/program.hpp"
#include "support/picture.hpp"
#endif

namespace tools {
namespace {

using qrv::test::Folder, qrv::test::npy, qrv::test::npy_header;
using testing::StartsWith;

const std::string sound[] = {
    "%%MatrixMarket matrix array real general\n% note\n2 2\n3\n-4.5\n0\n1e-3\n",
    "%%MatrixMarket matrix coordinate real symmetric\n3 3 4\n1 1 4\n2 2 5D0\n3 3 6\n3 1 -1\n",
    "%%MatrixMarket matrix coordinate complex hermitian\n2 2 3\n1 1 2 0\n2 1 0 1\n2 2 3 0\n",
    "%%MatrixMarket matrix array integer skew-symmetric\n3 3\n1\n2\n3\n",
    npy(npy_header("<f4", "(2, 2)") + "\n", {3, 0, -4.5F, 1e-3F}),
    npy<double>(npy_header("<c16", "(2,)", true) + "\n", {3.0, 1.0, -4.5, 1e-3}, 3),
#ifdef QRV_TOOL
    [] {
        support::Picture gray(2, 2);
        gray.values = {0, 255, 17, 4};
        return support::png({gray, 1});
    }(),
#endif
};
const char* const words[] = {"-",     "0",           "1",          "9",       "-1",        "nan",     "inf", "1e39",
                             "1e-50", "99999999999", "2147483647", ".",       "%",         "\n",      "\r",  " ",
                             "\t",    "complex",     "array",      "general", "hermitian", "\x1b[2J", "%%",  "e",
                             "+",     "{}",          "()",         "'",       "True",      "<f8",     "\x93"};

// One to four faults: a byte, a word more, a part twice, a part less, an early end.
std::string damaged(std::mt19937& random) {
    std::string text = sound[random() % std::size(sound)];
    for (unsigned faults = 1 + random() % 4; faults > 0 && !text.empty(); --faults) {
        const std::size_t at = random() % text.size(), length = 1 + random() % 12;
        switch (random() % 5) {
        case 0:
            text[at] = static_cast<char>(random());
            break;
        case 1:
            text.insert(at, words[random() % std::size(words)]);
            break;
        case 2:
            text.insert(at, text.substr(random() % text.size(), length));
            break;
        case 3:
            text.erase(at, length);
            break;
        case 4:
            text.resize(at);
        }
    }
    return text;
}

// A few digits more make a matrix that is sound, and whose work takes long.
bool is_large(const std::string& text) {
    const auto is_digit = [](char c, char) { return c >= '0' && c <= '9'; };
    return std::search_n(text.begin(), text.end(), 4, '0', is_digit) != text.end();
}

TEST(HostileFiles, AreReadOrRefusedWithALine) {
    std::mt19937 random(1);
    int read = 0;
    for (int k = qrv::test::Sample::of_many(5'000, 1'000'000); k > 0; --k) {
        const std::string text = damaged(random);
        try {
            const MatrixFile file = is_large(text) ? MatrixFile{} : parse_matrix("name", text);
            const Matrix<SingleComplex> matrix = to_complex(file.matrix);
            ASSERT_EQ(matrix.values.size(), static_cast<std::size_t>(matrix.rows) * matrix.columns) << text;
            for (const SingleComplex x : matrix.values)
                ASSERT_TRUE(std::isfinite(x.Re()) && std::isfinite(x.Im())) << text;
            ++read;
        } catch (const InputError& error) {
            const std::string line = error.what();
            ASSERT_THAT(line, StartsWith("name:")) << text;
            ASSERT_TRUE(std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' || c < 0; })) << text;
        }
    }
    EXPECT_GT(read, 100);
}

#ifdef QRV_TOOL
// What a command line says, run in this process.
qrv::test::ChildResult answer_of(std::vector<std::string> arguments) {
    char program[] = "qrv";
    std::vector<char*> pointers{program};
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int exitStatus = run_program(static_cast<int>(arguments.size()) + 1, pointers.data());
    return {exitStatus, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

TEST(HostileFiles, EndEveryCommandWithALine) {
    const qrv::test::ForcedTeam alone(1);
    const Folder folder;
    const std::string a = folder.file("a"), b = folder.file("b"), out = folder.file("out");
    const std::vector<std::string> commands[] = {{"norm", a},
                                                 {"solve", a, "-o", out},
                                                 {"solve", a, b, "--json"},
                                                 {"invert", a, "-o", out},
                                                 {"fit", a, b, "--pivot", "-o", out},
                                                 {"qr", a, "-r", out},
                                                 {"eig", a, "--vectors", "both"},
                                                 {"svd", a, "--vectors", "-o", out},
                                                 {"compress", a, "--rank", "1", "-o", out}};
    std::mt19937 random(2);
    for (int k = qrv::test::Sample::of_many(200, 100'000); k > 0; --k) {
        const std::string text = damaged(random);
        if (is_large(text))
            continue;
        std::ofstream(a, std::ios::binary) << text;
        std::ofstream(b, std::ios::binary) << damaged(random);
        for (const auto& command : commands) {
            const auto answer = answer_of(command);
            ASSERT_TRUE(answer.exitStatus >= 0 && answer.exitStatus <= 2) << command[0] << ' ' << text;
            ASSERT_EQ(answer.err.empty(), answer.exitStatus == 0) << command[0] << ' ' << text << answer.err;
            ASSERT_TRUE(answer.err.empty() || answer.err.find('\n') + 1 == answer.err.size()) << text << answer.err;
            ASSERT_EQ(std::filesystem::exists(out), answer.exitStatus == 0 && command.back() == out)
                << command[0] << ' ' << text;
            std::filesystem::remove(out);
        }
    }
}
#endif

} // namespace
} // namespace tools
