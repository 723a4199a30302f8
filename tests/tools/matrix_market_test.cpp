// Matrix Market files: what is read, what is refused and where, and that written files read back the same.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "matrix_market/matrix_market.hpp"
#include "support/folder.hpp"

namespace tools {
namespace {

using qrv::test::content;
using qrv::test::Folder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

const std::vector<float>& real(const MatrixFile& file) {
    return std::get<Matrix<float>>(file.matrix).values;
}
const std::vector<SingleComplex>& complex(const MatrixFile& file) {
    return std::get<Matrix<SingleComplex>>(file.matrix).values;
}
MatrixFile parse(const std::string& text) {
    return parse_matrix_market("name", text);
}

TEST(MatrixMarket, ReadsFormatsAndFields) {
    EXPECT_THAT(real(parse("%%MatrixMarket matrix array real general\n2 3\n1\n-2\n+.5\n4e2\n5D-1\n1d+2\n")),
                ElementsAre(1, -2, 0.5F, 400, 0.5F, 100));
    EXPECT_THAT(real(parse("%%MatrixMarket matrix coordinate integer general\n2 2 3\n2 1 -7\n1 2 8\n1 1 +9\n")),
                ElementsAre(9, -7, 8, 0));
    EXPECT_THAT(complex(parse("%%MatrixMarket matrix array complex general\n1 2\n1 2\n3 -4\n")),
                ElementsAre(SingleComplex(1, 2), SingleComplex(3, -4)));
    // Case, comments, blank lines, line ends, no line end at the end; entries of one element; too small for a float.
    const MatrixFile file = parse("%%matrixmarket MATRIX Coordinate Real General\r\n% note\n\n%more\n 2  2\t4 \r\n\n"
                                  "1 1 1.5\r\n% between\n1 1 2\n2 2 -1\n2 1 1e-400\n\n%last");
    EXPECT_THAT(real(file), ElementsAre(3.5F, 0, 0, -1));
    EXPECT_EQ(file.format, Format::coordinate);
    EXPECT_EQ(file.entries, 4);
}

TEST(MatrixMarket, FillsTheOtherTriangle) {
    const std::string coordinate = "%%MatrixMarket matrix coordinate ", array = "%%MatrixMarket matrix array ";
    EXPECT_THAT(real(parse(coordinate + "real symmetric\n2 2 2\n1 1 1\n2 1 5\n")), ElementsAre(1, 5, 5, 0));
    EXPECT_THAT(real(parse(array + "integer symmetric\n2 2\n1\n2\n3\n")), ElementsAre(1, 2, 2, 3));
    EXPECT_THAT(real(parse(coordinate + "real skew-symmetric\n2 2 1\n2 1 5\n")), ElementsAre(0, 5, -5, 0));
    EXPECT_THAT(real(parse(array + "real skew-symmetric\n3 3\n1\n2\n3\n")), ElementsAre(0, 1, 2, -1, 0, 3, -2, -3, 0));
    EXPECT_THAT(complex(parse(coordinate + "complex hermitian\n2 2 2\n2 1 1 2\n2 2 3 0\n")),
                ElementsAre(SingleComplex(), SingleComplex(1, 2), SingleComplex(1, -2), SingleComplex(3, 0)));
    EXPECT_THAT(complex(parse(coordinate + "complex symmetric\n2 2 1\n2 1 1 2\n")),
                ElementsAre(SingleComplex(), SingleComplex(1, 2), SingleComplex(1, 2), SingleComplex()));
    EXPECT_THAT(complex(parse(coordinate + "complex skew-symmetric\n2 2 1\n2 1 1 2\n")),
                ElementsAre(SingleComplex(), SingleComplex(1, 2), SingleComplex(-1, -2), SingleComplex()));
}

TEST(MatrixMarket, RefusesWithTheLine) {
    const std::string real = "%%MatrixMarket matrix coordinate real general\n", array = "%%MatrixMarket matrix array ";
    const struct {
        std::string text;
        int line;
        const char* what;
    } cases[] = {
        {"", 1, "empty"},
        {"1 1 1\n", 1, "does not begin with %%MatrixMarket"},
        {"%%MatrixMarket vector array real general\n", 1, "not a matrix"},
        {"%%MatrixMarket matrix dense real general\n", 1, "unknown format 'dense'"},
        {"%%MatrixMarket matrix coordinate pattern general\n", 1, "unknown field 'pattern'"},
        {"%%MatrixMarket matrix coordinate real\n", 1, "unknown symmetry ''"},
        {"%%MatrixMarket matrix coordinate real general x\n", 1, "unexpected 'x'"},
        {"%%MatrixMarket matrix coordinate real hermitian\n", 1, "must be complex"},
        {real, 1, "ends before the line of sizes"},
        {real + "% only a comment\n", 2, "ends before the line of sizes"},
        {real + "2 2\n", 2, "number of entries is missing"},
        {real + "2 x 1\n", 2, "number of columns 'x' is no integer"},
        {real + "0 2 1\n", 2, "number of rows '0' is out of range"},
        {real + "2 4294967298 1\n", 2, "'4294967298' is out of range"},
        {real + "2 99999999999999999999 1\n", 2, "is out of range"},
        {real + "2 2 -1\n", 2, "negative"},
        {real + "2 2 1 1\n", 2, "unexpected '1'"},
        {real + "2147483647 2147483647 1\n1 1 1\n", 2, "this machine has"},
        {array + "real symmetric\n2 3\n", 2, "only a square matrix"},
        {real + "2 2 2\n1 1 1\n", 3, "ends after 1 of 2 entries"},
        {real + "2 2 1\n1 1 1\n\n% fine\n2 2 1\n", 6, "more than the 1 entries"},
        {real + "2 2 1\n3 1 1\n", 3, "row 3 is not between 1 and 2"},
        {real + "2 2 1\n1 0 1\n", 3, "column 0 is not between 1 and 2"},
        {real + "2 2 1\n1 1\n", 3, "value is missing"},
        {real + "2 2 1\n1 1 one\n", 3, "value 'one' is no finite number"},
        {real + "2 2 1\n1 1 1.0x\n", 3, "is no finite number"},
        {real + "2 2 1\n1 1 nan\n", 3, "is no finite number"},
        {real + "2 2 1\n1 1 -inf\n", 3, "is no finite number"},
        {real + "2 2 1\n1 1 1 1\n", 3, "unexpected '1' after the entry"},
        {real + "2 2 1\n1 1 4e38\n", 3, "does not fit single precision"},
        {real + "2 2 1\n1 1 1e400\n", 3, "does not fit single precision"},
        {real + "2 2 2\n1 1 3e38\n1 1 3e38\n", 4, "does not fit single precision"},
        {array + "integer general\n1 1\n1.5\n", 3, "'1.5' is no integer"},
        {array + "complex general\n1 1\n1\n", 3, "imaginary part is missing"},
        {array + "complex general\n1 1\n1 1e39\n", 3, "does not fit single precision"},
        {"%%MatrixMarket matrix coordinate real symmetric\n2 2 1\n1 2 1\n", 3, "above the diagonal"},
        {"%%MatrixMarket matrix coordinate real skew-symmetric\n2 2 1\n1 1 1\n", 3, "on the diagonal"},
        {array + "complex hermitian\n1 1\n1 1\n", 3, "imaginary part on the diagonal"},
        {real + "2 2 1\n1 1 \x1b[31m" + std::string(100, 'y') + "\n", 3, "'?[31myyy"},
    };
    for (const auto& [text, line, what] : cases) {
        try {
            parse(text);
            ADD_FAILURE() << "taken: " << text;
        } catch (const InputError& error) {
            EXPECT_THAT(error.what(), StartsWith("name:" + std::to_string(line) + ": ")) << text;
            EXPECT_THAT(error.what(), HasSubstr(what)) << text;
            EXPECT_LT(std::string(error.what()).size(), 160U);
        }
    }
}

// Ordinary files end at so many bytes, as on a disk without room.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, SIG_DFL);
    }

private:
    rlimit before{};
};

TEST(MatrixMarket, WritesWhatReadsBackTheSame) {
    const Folder folder;
    const std::string path = folder.file("x.mtx");
    Matrix<float> a(2, 3);
    a.values = {0, 1.0F / 3, -0x1p-149F, 0x1.fffffep127F, 16777216, 0};
    Matrix<SingleComplex> c(1, 2);
    c.values = {{0, 0}, {-1.1F, 1e-30F}};
    for (const Format format : {Format::array, Format::coordinate}) {
        write_matrix_market(path, a, format, "two\nlines");
        const MatrixFile read = read_matrix_market(path);
        EXPECT_EQ(real(read), a.values);
        EXPECT_EQ(read.entries, format == Format::array ? 6 : 4);
        EXPECT_EQ(std::get<Matrix<float>>(read.matrix).rows, 2);
        write_matrix_market(path, c, format, "");
        EXPECT_EQ(complex(read_matrix_market(path)), c.values);
    }
    EXPECT_EQ(folder.count(), 1); // no temporary
    EXPECT_THROW(read_matrix_market(folder.file("none")), InputError);
    EXPECT_THROW(read_matrix_market(folder.file("")), InputError); // the folder
}

TEST(MatrixMarket, ReplacesAFileWholeOrNotAtAll) {
    const Folder folder;
    const std::string path = folder.file("x.mtx"), link = folder.file("link");
    Matrix<float> a(1, 1);
    std::ofstream(path) << "before";
    std::filesystem::permissions(path, std::filesystem::perms(0640));
    std::filesystem::create_symlink(path, link);
    write_matrix_market(link, a, Format::array, "");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_THAT(content(path), StartsWith("%%MatrixMarket matrix array real general\n1 1\n0\n"));
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0640));

    EXPECT_THROW(write_matrix_market(folder.file("none/x"), a, Format::array, ""), OutputError);
    EXPECT_THROW(write_matrix_market(folder.file(""), a, Format::array, ""), OutputError);
    // A full disk, with little in the stream's buffer until it is closed, and with more than it holds.
    EXPECT_THROW(write_matrix_market("/dev/full", a, Format::array, ""), OutputError);
    EXPECT_THROW(write_matrix_market("/dev/full", Matrix<float>(300, 300), Format::array, ""), OutputError);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
    {
        const FileSizeLimit limit(100);
        EXPECT_THROW(write_matrix_market(path, Matrix<float>(300, 300), Format::array, ""), OutputError);
        EXPECT_THROW(write_matrix_market(path, Matrix<float>(30, 30), Format::array, ""), OutputError);
        EXPECT_THROW(write_matrix_market(folder.file("new"), Matrix<float>(30, 30), Format::array, ""), OutputError);
    }
    EXPECT_THAT(content(path), HasSubstr("1 1\n0\n"));
    EXPECT_EQ(folder.count(), 2);
}

} // namespace
} // namespace tools
