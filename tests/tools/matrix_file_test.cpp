// Matrix Market and NumPy files: what is read, what is refused and where, and that written files read back the same.
#include <cmath>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "matrix_file/matrix_file.hpp"
#include "matrix_file/memory_limit.hpp"
#include "support/folder.hpp"
#include "support/npy.hpp"

namespace tools {
namespace {

using qrv::test::content, qrv::test::Folder, qrv::test::npy, qrv::test::npy_header;
using testing::HasSubstr, testing::StartsWith;

std::string with_banner(const std::string& text) {
    return (text.starts_with("%%") || text.starts_with("\x93") ? "" : "%%MatrixMarket matrix ") + text;
}
MatrixFile parse(const std::string& text) {
    return parse_matrix("name", with_banner(text));
}

using Meaning = std::pair<std::string, std::vector<SingleComplex>>; // a text and its elements, column by column

TEST(MatrixMarket, ReadsWhatTheFileMeans) {
    const Meaning cases[] = {
        {"array real general\n2 3\n1\n-2\n+.5\n4e2\n5D-1\n1d+2\n", {1, -2, 0.5F, 400, 0.5F, 100}},
        {"coordinate integer general\n2 2 3\n2 1 -7\n1 2 8\n1 1 +9\n", {9, -7, 8, 0}},
        {"array complex general\n1 2\n1 2\n3 -4\n", {{1, 2}, {3, -4}}},
        // Case, comments, blank lines, line ends, none at the end; entries of one element; too small for a float.
        {"Coordinate Real GENERAL\r\n% note\n\n%more\n 2  2\t4 \r\n\n1 1 1.5\r\n% between\n1 1 2\n2 2 -1\n2 1 "
         "1e-400\n%last",
         {3.5F, 0, 0, -1}},
        {"array real general\n%" + std::string(50'000, '-') + "\n%" + std::string(50'000, '-') + "\n1 1\n2\n", {2}},
        // The other triangle.
        {"coordinate real symmetric\n2 2 2\n1 1 1\n2 1 5\n", {1, 5, 5, 0}},
        {"coordinate real skew-symmetric\n2 2 1\n2 1 5\n", {0, 5, -5, 0}},
        {"array real skew-symmetric\n3 3\n1\n2\n3\n", {0, 1, 2, -1, 0, 3, -2, -3, 0}},
        {"coordinate complex hermitian\n2 2 2\n2 1 1 2\n2 2 3 0\n", {0, {1, 2}, {1, -2}, 3}},
    };
    for (const auto& [text, elements] : cases)
        EXPECT_EQ(to_complex(parse(text).matrix).values, elements) << text;
    EXPECT_EQ(parse("coordinate real general\n2 2 2\n1 1 1\n1 1 2\n").entries, 2);
}

// For what is told of a line, or of the file.
void expect_refused(const std::string& name, const std::string& text, const char* what, int line = 0) {
    try {
        parse_matrix(name, text);
        ADD_FAILURE() << "taken: " << text;
    } catch (const InputError& error) {
        EXPECT_THAT(error.what(), StartsWith(name + (line > 0 ? ':' + std::to_string(line) : "") + ": ")) << text;
        EXPECT_THAT(error.what(), HasSubstr(what)) << text;
        EXPECT_LT(std::string(error.what()).size(), 160U);
    }
}

TEST(MatrixMarket, RefusesWithTheLine) {
    const std::string real = "coordinate real general\n";
    const struct {
        std::string text;
        int line;
        const char* what;
    } cases[] = {
        {"%%MatrixMarket vector array real general\n", 1, "not a matrix"},
        {"dense real general\n", 1, "unknown format 'dense'"},
        {"coordinate pattern general\n", 1, "unknown field 'pattern'"},
        {"coordinate real\n", 1, "unknown symmetry ''"},
        {"coordinate real general x\n", 1, "unexpected 'x'"},
        {"coordinate real hermitian\n", 1, "must be complex"},
        {real, 1, "ends before the line of sizes"},
        {real + "2 2\n", 2, "number of entries is missing"},
        {real + "2 x 1\n", 2, "number of columns 'x' is no integer"},
        {real + "0 2 1\n", 2, "number of rows '0' is out of range"},
        {real + "2 4294967298 1\n", 2, "'4294967298' is out of range"},
        {real + "2 2 -1\n", 2, "negative"},
        {real + "2 2 1 1\n", 2, "unexpected '1'"},
        {real + "2147483647 2147483647 1\n1 1 1\n", 2, "this process may use"},
        {"array real symmetric\n2 3\n", 2, "only a square matrix"},
        {real + "2 2 2\n1 1 1\n", 3, "ends after 1 of 2 entries"},
        {real + "2 2 1\n1 1 1\n\n% fine\n2 2 1\n", 6, "more than the 1 entries"},
        {real + "2 2 1\n3 1 1\n", 3, "row 3 is not between 1 and 2"},
        {real + "2 2 1\n1 1\n", 3, "value is missing"},
        {real + "2 2 1\n1 1 one\n", 3, "value 'one' is no finite number"},
        {real + "2 2 1\n1 1 +-2\n", 3, "'+-2' is no finite number"},
        {real + "2 2 1\n%" + std::string(70'000, '-') + "\n1 1 1\n", 3, "more than 65536 characters"},
        {real + "2 2 1\n1 1 nan\n", 3, "is no finite number"},
        {real + "2 2 1\n1 1 1 1\n", 3, "unexpected '1' after the entry"},
        {real + "2 2 1\n1 1 1e400\n", 3, "does not fit single precision"},
        {real + "2 2 2\n1 1 3e38\n1 1 3e38\n", 4, "does not fit single precision"},
        {"array integer general\n1 1\n1.5\n", 3, "'1.5' is no integer"},
        {"array complex general\n1 1\n1\n", 3, "imaginary part is missing"},
        {"coordinate real symmetric\n2 2 1\n1 2 1\n", 3, "above the diagonal"},
        {"coordinate real skew-symmetric\n2 2 1\n1 1 1\n", 3, "on the diagonal"},
        {"array complex hermitian\n1 1\n1 1\n", 3, "imaginary part on the diagonal"},
        {real + "2 2 1\n1 1 \x1b[31m" + std::string(100, 'y') + "\n", 3, "'?[31myyy"},
    };
    for (const auto& [text, line, what] : cases)
        expect_refused("name", with_banner(text), what, line);
}

TEST(Npy, ReadsWhatTheFileMeans) {
    const Meaning cases[] = {
        {npy(npy_header("<f4", "(2, 3)") + "   \n", {1, 2, 3, 4, 5, 6}), {1, 4, 2, 5, 3, 6}},
        {npy(npy_header("<f4", "(2, 3)", true), {1, 2, 3, 4, 5, 6}, 2), {1, 2, 3, 4, 5, 6}},
        {npy(npy_header("<c8", "(2, 2)"), {1, 2, 3, 4, 5, 6, 7, 8}), {{1, 2}, {5, 6}, {3, 4}, {7, 8}}},
        {npy<double>(npy_header("<c16", "(2,)"), {1.0, -2.0, 1e-60, 4.0}, 3), {{1, -2}, {0, 4}}},
        {npy<double>("{\"shape\":(2),\"fortran_order\":True,\"descr\":\"<f8\"}", {0.1, -3.0}), {0.1F, -3}},
    };
    for (const auto& [file, elements] : cases) {
        const MatrixFile read = parse(file);
        EXPECT_EQ(to_complex(read.matrix).values, elements) << file;
        EXPECT_EQ(read.format, Format::npy);
    }
    EXPECT_EQ(to_complex(parse(cases[3].first).matrix).columns, 1);
    Matrix<float> tall(5000, 3); // more than is read at a time
    std::string text = npy(npy_header("<f4", "(5000, 3)", true), {});
    for (std::size_t k = 0; k < tall.values.size(); ++k)
        tall.values[k] = static_cast<float>(k);
    text.append(reinterpret_cast<const char*>(tall.values.data()), 4 * tall.values.size());
    EXPECT_EQ(std::get<Matrix<float>>(parse_matrix("name", text).matrix).values, tall.values);
}

TEST(Npy, RefusesWithALine) {
    const auto header = [](const std::string& text) { return npy(text, {}); };
    const std::string good = npy(npy_header("<f4", "(1, 2)"), {1, 2});
    const std::pair<std::string, const char*> cases[] = {
        {"", "the file is empty"},
        {"\x93NUMPX" + good.substr(6), "does not begin with"},
        {"%%MatrixMarket matrix array real general\n1 1\n1\n", "no file of NumPy"},
        {good.substr(0, 9), "ends within its first bytes"},
        {good.substr(0, 30), "ends within its header"},
        {npy("", {}, 4), "version 4.0 of the format"},
        {"\x93NUMPY\x02" + std::string(1, '\0') + "\xff\xff\xff\xff", "4294967295 bytes"},
        {header(""), "should have '{'"},
        {header("{'descr': '<f4'"), "should have '}'"},
        {header("{'descr': '<f4', 'shape': (1,)}"), "lacks one of"},
        {header("{'descr': '<f4', 'fortran_order': 1, 'shape': (1,)}"), "True or False"},
        {header("{'descr' '<f4'}"), "should have ':'"},
        {header("{'descr': [('a', '<f4')], }"), "in one word"},
        {header("{'order': 1}"), "unknown name 'order'"},
        {header("{\x1b[31m': 1}"), "a name at '?[31m"},
        {header(npy_header("<i4", "(1, 2)")), "'<i4'"},
        {header(npy_header("<f4", "(1, 1, 1, 1)")), "4 dimensions"},
        {header(npy_header("<f4", "(0, 1)")), "size '0'"},
        {header(npy_header("<f4", "(2147483648, 1)")), "out of range"},
        {header(npy_header("<f4", "(one, 1)")), "a number at 'one"},
        {header(npy_header("<f4", "(1 1)")), "should have ')'"},
        {header(npy_header("<f4", "(2147483647, 2147483647)")), "this process may use"},
        {header(npy_header("<f4", "(1, 2)") + "x"), "nothing more"},
        {good.substr(0, good.size() - 1), "ends after 1 of 2 elements"},
        {good + " ", "more than the 2 elements"},
        {npy(npy_header("<f4", "(2, 2)"), {1, NAN, 3, 4}), "row 1, column 2 is no finite number"},
        {npy(npy_header("<f4", "(2, 2)", true), {1, INFINITY, 3, 4}), "row 2, column 1 is no finite number"},
        {npy<double>(npy_header("<c16", "(1,)"), {1.0, -4e38}), "row 1, column 1 does not fit"},
    };
    for (const auto& [content, what] : cases)
        expect_refused("name.npy", content, what);
}

void write(const std::string& path, const AnyMatrix& matrix, Format format = Format::array) {
    OutputFile file(path);
    write_matrix(file, matrix, format, "two\nlines");
}

TEST(MatrixMarket, WritesWhatReadsBackTheSame) {
    const Folder folder;
    const std::string path = folder.file("x.mtx");
    Matrix<float> a(2, 3);
    a.values = {0, 1.0F / 3, -0x1p-149F, 0x1.fffffep127F, 16777216, 0};
    Matrix<SingleComplex> c(1, 2);
    c.values = {{0, 0}, {-1.1F, 1e-30F}};
    for (const Format format : {Format::array, Format::coordinate, Format::npy}) {
        write(path, a, format);
        const MatrixFile read = read_matrix(path);
        EXPECT_EQ(std::get<Matrix<float>>(read.matrix).values, a.values);
        EXPECT_EQ(std::get<Matrix<float>>(read.matrix).rows, 2);
        EXPECT_EQ(read.entries, format == Format::coordinate ? 4 : 6);
        write(path, c, format);
        EXPECT_EQ(std::get<Matrix<SingleComplex>>(read_matrix(path).matrix).values, c.values);
    }
    EXPECT_EQ(folder.count(), 1); // no temporary

    // Elements of NumPy's file begin at a multiple of 64 bytes; one column is a vector.
    Matrix<float> column(2, 1);
    column.values = {1, -2};
    write(path, column, Format::npy);
    const std::string header = npy_header("<f4", "(2,)");
    EXPECT_EQ(content(path), npy(header + std::string(128 - 10 - 1 - header.size(), ' ') + "\n", {1, -2}));
}

TEST(OutputFile, AppearsWholeOrNotAtAll) {
    const Folder folder;
    const std::string path = folder.file("x.mtx"), link = folder.file("link"), later = folder.file("later");
    const Matrix<float> one(1, 1), large(300, 300);
    std::ofstream(path) << "before";
    std::filesystem::permissions(path, std::filesystem::perms(0640));
    std::filesystem::create_symlink("x.mtx", link);
    std::filesystem::create_symlink("link-to-come", later);
    std::filesystem::create_symlink("new", folder.file("link-to-come"));
    for (const std::string& name : {link, later}) {
        write(name, one);
        EXPECT_TRUE(std::filesystem::is_symlink(name));
        EXPECT_THAT(content(name), StartsWith("%%MatrixMarket matrix array real general\n% two\n% lines\n1 1\n0\n"));
    }
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0640));
    EXPECT_EQ(folder.count(), 5);

    std::filesystem::create_symlink("round", folder.file("round"));
    for (const char* name : {"none/x", "", "round"})
        EXPECT_THROW(OutputFile(folder.file(name)), OutputError) << name;
    // A full disk, with little in the stream's buffer until it is closed, and with more than it holds.
    EXPECT_THROW(write("/dev/full", one), OutputError);
    EXPECT_THROW(write("/dev/full", large), OutputError);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
    {
        OutputFile unused(path);
        unused.reserve(1 << 20);
        unused.write("unused");
    }
    EXPECT_THAT(content(path), HasSubstr("1 1\n0\n"));
    OutputFile reserved(path);
    reserved.reserve(1 << 20);
    reserved.write("short");
    reserved.commit();
    EXPECT_EQ(content(path), "short");
    EXPECT_EQ(folder.count(), 6);
}

TEST(MemoryLimit, IsTheLeastOfTheMachineAndTheGroups) {
    const struct {
        const char *groups, *file, *text;
        double limit; // infinity: that of the machine
    } cases[] = {
        {"0::/a/b\n", "memory.max", "max\n", INFINITY},
        {"0::/a/b\n", "a/memory.max", "1048576\n", 1048576}, // of a group that holds ours
        {"0::/\n", "memory.max", "4096\n", 4096},
        {"12:cpu,cpuacct:/a\n4:memory:/a\n", "memory/a/memory.limit_in_bytes", "8192\n", 8192},
        {"12:cpu,cpuacct:/a\n", "memory/a/memory.limit_in_bytes", "8192\n", INFINITY},
        {"4:memory:/a\n", "memory/memory.limit_in_bytes", "9223372036854771712\n", INFINITY},
        {"torn", "memory.max", "4096", INFINITY},
    };
    const double machine = memory_limit("/nowhere");
    EXPECT_GT(machine, 1e8);
    for (const auto& [groups, file, text, limit] : cases) {
        const Folder root;
        const std::filesystem::path limits = root.file(std::string("sys/fs/cgroup/") + file);
        std::filesystem::create_directories(limits.parent_path());
        std::filesystem::create_directories(root.file("proc/self"));
        std::ofstream(root.file("proc/self/cgroup")) << groups;
        std::ofstream(limits) << text;
        EXPECT_EQ(memory_limit(root.file("")), std::min(limit, machine)) << groups << file;
    }
    // What a matrix is held in addition counts: this one takes 400 bytes.
    const Folder folder;
    write(folder.file("x"), Matrix<float>(10, 10));
    EXPECT_NO_THROW(read_matrix(folder.file("x"), machine / 1e6));
    EXPECT_THROW(read_matrix(folder.file("x"), machine / 100), InputError);
}

} // namespace
} // namespace tools
