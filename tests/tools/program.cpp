// The program qrv as a whole: what a command line gives, says and leaves behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "matrix_market/matrix_market.hpp"
#include "qrv/linear_system.hpp"
#include "support/child.hpp"
#include "support/folder.hpp"

namespace tools {
namespace {

using qrv::test::ChildResult;
using qrv::test::content;
using qrv::test::Folder;
using qrv::test::run_program;
using testing::HasSubstr;
using testing::StartsWith;

// A folder with matrices, in which the program runs.
class Program : public testing::Test {
protected:
    Program() {
        write("hermitian", "coordinate complex hermitian\n2 2 3\n1 1 2 0\n2 1 0 1\n2 2 3 0\n"); // [2 -i; i 3]
        write("right", "array complex general\n2 2\n2 0\n0 1\n0 -1\n3 0\n");                    // its columns
        write("real", "array integer general\n2 2\n3\n-4\n0\n1\n");
        write("singular", "array real general\n2 2\n1\n2\n2\n4\n");
        write("wide", "array real general\n1 2\n1\n2\n");
        write("short", "array real general\n2 2\n1\n2\n");
        write("tiny", "array real general\n1 1\n1e-30\n");
        write("huge", "array real general\n1 1\n1e30\n");
        files = folder.count();
    }

    ChildResult run(const std::string& command) const {
        return run_program("/bin/sh", {"-c", "cd '" + folder.file("") + "' && '" QRV_TOOL "' " + command},
                           {{"OMP_WAIT_POLICY", "passive"}});
    }

    Folder folder;
    std::ptrdiff_t files = 0;

private:
    void write(const std::string& name, const std::string& text) {
        std::ofstream(folder.file(name)) << "%%MatrixMarket matrix " << text;
    }
};

TEST_F(Program, AnswersWhatItCannotDoWithOneLine) {
    const struct {
        const char* command;
        int exitStatus;
        const char* says;
    } cases[] = {
        {"", 2, "command"},
        {"slove real", 2, "slove"},
        {"solve", 2, "A is required"},
        {"solve --fast real", 2, "--fast"},
        {"solve real real real", 2, "not expected"},
        {"bench --sizes 0", 2, "--sizes"},
        {"norm none", 2, "cannot read none: No such file"},
        {"norm .", 2, "cannot read .: Is a directory"},
        {"norm short", 2, "short:4: the file ends after 2 of 4 entries"},
        {"solve wide -o x", 2, "wide is 1 x 2"},
        {"invert wide -o x", 2, "wide is 1 x 2"},
        {"solve real tiny -o x", 2, "tiny has 1 rows; the matrix real has 2"},
        {"solve real short -o x", 2, "short:4"},
        {"solve singular -o x", 1, "singular is singular: pivot 2 of 2 is 0"},
        {"invert singular -o x", 1, "pivot 2 of 2"},
        {"solve tiny huge -o x", 1, "beyond the range"},
        {"solve real -o /dev/full", 1, "cannot write /dev/full: No space left"},
        {"solve real --picture none/x", 1, "cannot write none/x: No such file"},
        {"solve real -o none/x", 1, "cannot write none/x: No such file"},
        {"invert real -o .", 1, "cannot write .: Is a directory"},
        {"info > /dev/full", 1, "standard output: No space left"},
        {"norm real > /dev/full", 1, "standard output: No space left"},
        {"--help > /dev/full", 1, "standard output: No space left"},
    };
    for (const auto& [command, exitStatus, says] : cases) {
        const ChildResult result = run(command);
        EXPECT_EQ(result.exitStatus, exitStatus) << command << '\n' << result.err;
        EXPECT_THAT(result.err, StartsWith("qrv: ")) << command;
        EXPECT_THAT(result.err, HasSubstr(says)) << command;
        EXPECT_EQ(result.err.find('\n') + 1, result.err.size()) << command << '\n' << result.err;
        EXPECT_EQ(folder.count(), files) << command << " left a file behind";
    }
    // A file that is there stays as it is.
    EXPECT_EQ(run("solve singular -o singular").exitStatus, 1);
    EXPECT_THAT(content(folder.file("singular")), HasSubstr("1\n2\n2\n4\n"));
}

TEST_F(Program, ReportsAndWritesResults) {
    const struct {
        const char* command;
        const char* says;
    } cases[] = {
        {"--help", "solve"},
        {"--version", "."},
        {"info", "processor class"},
        {"norm real", "largest element  4\n  1-norm           7\n  infinity-norm    5\n  Frobenius norm   5.09901"},
        {"norm hermitian", "Hermitian, 3 entries\n  largest element  3\n  1-norm           4"},
        {"bench --sizes 8 --seconds 0.001", "Sgetrf"},
        {"solve real", "in truth"},
        {"solve hermitian right -o x --picture x.svg", "condition number"},
        {"solve real right -o y --coordinate", "backward error"}, // one complex side makes both so
        {"invert hermitian -o inverse", "condition number  3.2 (1-norm), 3.2"},
    };
    for (const auto& [command, says] : cases) {
        const ChildResult result = run(command);
        EXPECT_EQ(result.exitStatus, 0) << command;
        EXPECT_EQ(result.err, "") << command;
        EXPECT_THAT(result.out, HasSubstr(says)) << command;
    }
    EXPECT_EQ(folder.count(), files + 4);
    const std::string picture = content(folder.file("x.svg")); // the unit matrix: two columns, two parts each
    EXPECT_THAT(picture, StartsWith("<svg"));
    EXPECT_THAT(picture, HasSubstr("points='90.0,40.0 880.0,360.0 '"));
    EXPECT_THAT(picture, HasSubstr("points='90.0,360.0 880.0,40.0 '"));

    const auto read = [&](const char* name) { return to_complex(read_matrix_market(folder.file(name)).matrix); };
    Matrix<SingleComplex> unit(2, 2);
    unit(0, 0) = unit(1, 1) = 1;
    EXPECT_LT(relative_difference(read("x"), unit), 1e-6);
    EXPECT_LT(relative_difference(product(read("real"), read("y")), read("right")), 1e-6);
    EXPECT_LT(relative_difference(product(read("hermitian"), read("inverse")), unit), 1e-6);
    EXPECT_EQ(read_matrix_market(folder.file("y")).format, Format::coordinate);
}

} // namespace
} // namespace tools
