// The program qrv as a whole: what a command line gives, says and leaves behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

#include "matrix_file/matrix_file.hpp"
#include "qrv/linear_system.hpp"
#include "support/child.hpp"
#include "support/folder.hpp"
#include "support/npy.hpp"
#include "support/picture.hpp"
#include "support/sample.hpp"

namespace tools {
namespace {

using qrv::test::ChildResult, qrv::test::content, qrv::test::Folder, qrv::test::run_program;
using qrv::test::npy, qrv::test::npy_header;
using testing::HasSubstr, testing::StartsWith;

#ifdef QRV_CHECKED
constexpr const char* limit = ""; // the sanitizer keeps a shadow of all addresses
#else
constexpr const char* limit = "ulimit -v 8000000 && ";
#endif

struct Case {
    std::string command; // of qrv, or a script in which it stands
    const char* says;
    int exitStatus = 0;
};

// A folder with matrices, in which the program runs.
class Program : public testing::Test {
protected:
    Program() {
        write("hermitian", "coordinate complex hermitian\n2 2 3\n1 1 2 0\n2 1 0 1\n2 2 3 0\n"); // [2 -i; i 3]
        write("right", "array complex general\n2 2\n2 0\n0 1\n0 -1\n3 0\n");                    // its columns
        write("real", "array integer general\n2 2\n3\n-4\n0\n1\n");
        write("singular", "array real general\n2 2\n1\n2\n2\n4\n");
        write("nearly_singular", "array real general\n2 2\n1\n1\n1\n1.0000001\n");
        write("overflow", "array real general\n2 2\n3e38\n3e38\n-3e38\n3e38\n"); // condition 2, but u(2, 2) is 6e38
        write("beyond", "array real general\n2 2\n3e38\n3e38\n3e38\n3e38\n");    // 6e38 and 0
        // Elimination with row exchanges makes the last column 1.9 times as large in each step, until nothing of A is
        // left.
        write_square("growth", 60, [](int i, int j) { return i == j || j == 59 ? 1 : i > j ? -0.9F : 0; });
        write_square("diagonal", 40, unit);
        write("indefinite", "array real general\n2 2\n1\n2\n2\n1\n");
        write_square("band", 60, [](int i, int j) { // with a link further up
            return i == j ? 3 : i == j + 1 ? -1 : j == i + 1 ? 1 : i == 0 && j == 2 ? 0.5F : 0;
        });
        write("rotation", "array real general\n2 2\n1\n2\n-2\n1\n"); // 1 + 2i and its conjugate
        write("wide", "array real general\n1 2\n1\n2\n");
        write("short", "array real general\n2 2\n1\n2\n");
        write("line", "array integer general\n4 2\n1\n1\n1\n1\n0\n1\n2\n3\n"); // 1, t
        write("observed", "array integer general\n4 1\n2\n2\n4\n8\n");         // 1 + 2 t, and (1, -1, -1, 1)
        write("dependent", "array integer general\n4 3\n1\n1\n1\n1\n0\n1\n2\n3\n1\n2\n3\n4\n");
        write("tiny", "array real general\n1 1\n1e-30\n");
        write("huge", "array real general\n1 1\n1e30\n");
        std::ofstream(folder.file("matrix.npy")) << npy(npy_header("<f4", "(2, 2)"), {3, 0, -4, 1}); // that of real
        std::ofstream(folder.file("wrong.npy")) << "%%MatrixMarket matrix array real general\n1 1\n1\n";
        support::write_png(folder.file("gray.png"), of_rank_one(1));
        support::write_planes(folder.file("color.png"), {of_rank_one(3), 3});
        files = folder.count();
    }

    // A script in this folder, for which qrv is the program; a command of qrv. What eats memory must not take it all.
    ChildResult run_script(const std::string& script) const {
        const std::string path = std::filesystem::path(QRV_TOOL).parent_path().string() + ":/usr/bin:/bin";
        return run_program("/bin/sh", {"-c", "cd '" + folder.file("") + "' && " + limit + script},
                           {{"OMP_WAIT_POLICY", "passive"}, {"PATH", path}});
    }
    ChildResult run(const std::string& command) const { return run_script("qrv " + command); }
    // What fails says one line and leaves nothing behind.
    ChildResult answer(const Case& c) const {
        const auto filesBefore = folder.count();
        const ChildResult result = c.command.find("qrv ") == std::string::npos ? run(c.command) : run_script(c.command);
        const bool fails = c.exitStatus != 0;
        EXPECT_EQ(result.exitStatus, c.exitStatus) << c.command << '\n' << result.err;
        EXPECT_THAT(fails ? result.err : result.out, HasSubstr(c.says)) << c.command;
        EXPECT_EQ(result.err.substr(0, 5), fails ? "qrv: " : "") << c.command;
        EXPECT_EQ(result.err.find('\n') + 1, result.err.size()) << c.command << '\n' << result.err;
        EXPECT_TRUE(!fails || folder.count() == filesBefore) << c.command << " left a file behind";
        return result;
    }

    void write(const std::string& name, const std::string& text) {
        std::ofstream(folder.file(name)) << "%%MatrixMarket matrix " << text;
    }

    Folder folder;
    std::ptrdiff_t files = 0;

    // Red, green and blue differ.
    static support::Picture of_rank_one(int planes) {
        support::Picture picture(20, 30 * planes);
        for (int j = 0; j < picture.columns; ++j)
            for (int i = 0; i < picture.rows; ++i)
                picture(i, j) = static_cast<float>((i + 1) * ((j + j / 30) % 10 + 1));
        return picture;
    }

    static float unit(int i, int j) { return i == j; }
    template <class Element>
    void write_square(const std::string& name, int n, const Element& element) {
        Matrix<float> a(n, n);
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i)
                a(i, j) = element(i, j);
        OutputFile file(folder.file(name));
        write_matrix(file, a, Format::array, "");
    }
};

TEST_F(Program, AnswersWhatItCannotDoWithOneLine) {
    const Case cases[] = {
        {"", "command", 2},
        {"slove real", "slove", 2},
        {"solve", "A is required", 2},
        {"solve --fast real", "--fast", 2},
        {"solve ''", "A: the name of the file is empty", 2}, // a shell variable that is not set
        {"invert real -o ''", "--out: the name of the file is empty", 2},
        {"solve real -o x --picture ./x", "./x would take two results", 2},
        {"bench --sizes 0", "--sizes", 2},
        {"norm none", "cannot read none: No such file", 2},
        {"norm .", "cannot read .: Is a directory", 2},
        {"norm \"$(printf 'no\\033[2J\\n\\302\\233such\\303\\251\\377\\177')\"", "cannot read no?[2J??such\u00e9??: No",
         2},
        {"norm /dev/zero", "/dev/zero:1: no Matrix Market file: it does not begin", 2},
        {"solve wide -o x", "wide is 1 x 2", 2},
        {"solve real tiny -o x", "tiny has 1 rows; the matrix real has 2", 2},
        {"solve singular -o x", "singular is singular: pivot 2 of 2 is 0", 1},
        {"solve overflow -o x", "overflow: its factors are beyond the range", 1},
        {"solve growth -o x", "growth: the elimination failed", 1},
        {"solve real --method qr", "--method", 2},
        {"solve real --method cholesky -o x", "real is not for Cholesky: it is not symmetric or Hermitian", 1},
        {"solve indefinite --method cholesky -o x", "indefinite is not positive definite: Cholesky ends at column 2",
         1},
        {"solve hermitian --method band -o x", "hermitian: the band routines are for real systems", 2},
        {"solve band right --method band -o x", "right has 2 rows", 2},
        {"solve real right --method band -o x", "real: the band routines are for real systems", 2},
        {"solve singular --method band -o x", "singular is singular: pivot 2 of 2 is 0", 1},
        {"solve tiny huge -o x", "the result is beyond the range", 1},
        {"eig wide -o x", "wide is 1 x 2", 2},
        {"eig real -o x --left ./x", "./x would take two results", 2},
        {"eig real --right y --picture y", "y would take two results", 2},
        {"eig right -o x", "right is complex; the library has no complex nonsymmetric eigenvalue solver", 2},
        {"eig hermitian -o x", "hermitian is complex; the library has no complex Hermitian eigenvalue solver", 2},
        {"eig beyond -o x", "beyond: its eigenvalues are beyond the range", 1},
        {"svd beyond -o x", "beyond: its singular values are beyond the range", 1},
        {"svd real --tolerance 2", "--tolerance", 2},
        {"svd real --left x --right ./x", "./x would take two results", 2},
        {"compress real --rank 1 -o x", "cannot read the picture real", 2},
        {"compress gray.png -o x", "Exactly 1 option from [--rank,--error]", 2},
        {"compress gray.png --rank 21 -o x", "gray.png has 20 singular values, fewer than 21", 2},
        {"compress gray.png --rank 1 -o ./gray.png", "./gray.png would take two results", 2},
        {"compress gray.png --rank 1 -o none/x", "cannot write none/x", 1},
        {"fit line", "b is required", 2},
        {"fit line real -o x", "real has 2 rows; the matrix line has 4", 2},
        {"fit line observed --over 3 -o x", "line has no column 3", 2},
        {"fit wide tiny -o x", "wide has more columns than rows; which of them to use, --pivot finds", 2},
        {"fit dependent observed -o x", "dependent has columns that depend on others; pivoting finds them", 1},
        {"fit tiny huge -o x", "tiny: the result is beyond the range", 1},
        {"fit line observed -o x --picture ./x", "./x would take two results", 2},
        {"qr line -q x -r x", "x would take two results", 2},
        {"qr line -p x", "--pivot", 2},
        {"qr beyond -q x", "beyond: its factors are beyond the range", 1},
        {"solve real -o /dev/full", "cannot write /dev/full: No space left", 1},
        {"solve short --picture none/x", "cannot write none/x: No such file", 1}, // before anything is read
        {"invert short -o .", "cannot write .: Is a directory", 1},
        {"norm wrong.npy", "wrong.npy: no file of NumPy", 2},
        {"solve matrix.npy -o ./x.npy --coordinate", "./x.npy, have all elements", 2},
        {"solve - - < real", "standard input holds one matrix", 2},
        {"norm - < short", "standard input:4: the file ends after 2 of 4 entries", 2},
        {"norm - <&-", "cannot read -: Bad file descriptor", 2},
        {"solve real -o - --picture /dev/stdout", "/dev/stdout would take two results", 2},
        {"solve singular -o - --json", "singular is singular", 1},
        {"solve short -o - >&-", "cannot write standard output: Bad file descriptor", 1},
        {"norm real --json > /dev/full", "standard output: No space left", 1},
        {"--help > /dev/full", "standard output: No space left", 1},
        {"cat real /dev/zero | qrv norm /dev/stdin", "/dev/stdin:7: the line has more than", 2}, // and has no end
        {"ulimit -f 1 && qrv invert growth -o x", "cannot write x: File too large", 1},          // before the work
    };
    for (const Case& c : cases)
        answer(c);
    // A file that is there stays as it is.
    EXPECT_EQ(run("solve singular -o singular").exitStatus, 1);
    EXPECT_THAT(content(folder.file("singular")), HasSubstr("1\n2\n2\n4\n"));

    // Ended while it waits for its matrix: the file for the result is there already, and goes.
    const ChildResult ended =
        run_script("mkfifo pipe && { qrv solve pipe -o x & } && until ls x.part*; do sleep 0.01; done "
                   "&& kill -TERM $! && { wait $!; rm pipe; ls x* >&2; }");
    EXPECT_THAT(ended.err, HasSubstr("cannot access 'x*'"));
    // A signal that who started it wants ignored does not end it.
    EXPECT_EQ(
        run_script("trap '' HUP && mkfifo pipe && { qrv solve pipe -o x & } && until ls x.part*; do sleep 0.01; done "
                   "&& kill -HUP $! && cat real > pipe && wait $! && rm pipe x")
            .exitStatus,
        0);
    EXPECT_EQ(folder.count(), files);
}

// Whenever it ends: the file that was there, or the whole result, and nothing else.
TEST_F(Program, LeavesNoTornFileWhenASignalEndsIt) {
    write_square("large", 90, unit);
    const ChildResult ended = run_script("cases=" + std::to_string(qrv::test::Sample::of_many(20, 4'000)) + R"(
            qrv invert large -o new && echo old > old
            for k in $(seq $cases); do
              for signal in TERM HUP XCPU; do
                cp old out
                qrv invert large -o out > said 2>&1 &
                sleep 0.0$((k % 20 / 10))$((k % 10))
                { kill -$signal $!; wait $!; } 2> said
                cmp -s out old || cmp -s out new || echo torn by $signal >&2
                ls *.part* >&2 2> said
              done
              qrv invert large -o - 2> said | head -c $((k * 50)) > said
            done)");
    EXPECT_EQ(ended.err, "");
    // A process of the same number was killed before it could remove its file.
    EXPECT_EQ(run_script("sh -c 'echo > x.part$$ && exec qrv invert real -o x' && ls x").exitStatus, 0);
}

TEST_F(Program, WritesStraightToStandardStreams) {
    for (const char* command : {"invert real -o /dev/stdout >> log", "invert real -o log >> log",
                                "solve real -o /dev/stderr 2>> log", "solve real --picture /dev/fd/3 3>> log"}) {
        std::ofstream(folder.file("log")) << "before\n";
        EXPECT_EQ(run(command).exitStatus, 0) << command;
        const std::string log = content(folder.file("log"));
        EXPECT_THAT(log, StartsWith("before\n")) << command;
        EXPECT_GT(log.size(), 60U) << command;
        if (const std::size_t report = log.find("A: real"); report != std::string::npos) { // in the order of the work
            EXPECT_LT(report, log.find("%%MatrixMarket")) << command;
        }
    }
    // One that is only read is no place to write: its file is replaced.
    EXPECT_EQ(run_script("qrv invert real -o x && cp real y && qrv invert - -o y < y && cmp x y").exitStatus, 0);
}

TEST_F(Program, PassesMatricesThroughStandardStreams) {
    const ChildResult numpy = run("invert - -o - < matrix.npy"), text = run("invert - -o - < real");
    EXPECT_EQ(run("invert matrix.npy -o x.npy").exitStatus, 0);
    EXPECT_EQ(numpy.out, content(folder.file("x.npy")));
    EXPECT_THAT(numpy.err, HasSubstr("\n  X                 standard output\n"));
    EXPECT_THAT(text.out, StartsWith("%%MatrixMarket matrix array real general\n% Inverse by qrv\n2 2\n"));
    Matrix<SingleComplex> inverse(2, 2);
    inverse.values = {1.0F / 3, 4.0F / 3, 0, 1};
    for (const std::string& file : {numpy.out, text.out})
        EXPECT_LT(relative_difference(to_complex(parse_matrix("X", file).matrix), inverse), 1e-6);
    EXPECT_THAT(run("invert matrix.npy -o - --coordinate").out, HasSubstr("coordinate real"));
    EXPECT_THAT(run("solve - right --picture - < real").out, StartsWith("<svg"));
    EXPECT_THAT(run("solve - --picture - --json < real").err, StartsWith("{\"A\": {\"file\": \"-\""));
    EXPECT_THAT(run("compress - --rank 1 < gray.png").out, StartsWith("\x89PNG"));
}

TEST_F(Program, TellsFiguresAndResultsAsJson) {
    EXPECT_EQ(
        run("norm real --json").out,
        "{\"A\": {\"file\": \"real\", \"rows\": 2, \"columns\": 2, \"complex\": false, \"symmetry\": \"general\", "
        "\"entries\": 4}, \"largest_element\": 4, \"one_norm\": 7, \"infinity_norm\": 5, \"frobenius_norm\": "
        "5.0990195}\n");
    const Case cases[] = {
        {"info", "\"processor_class\": \""},
        {"bench --sizes 4 8 --seconds 0.001", "\"n\": [4, 8], \"Sgemm\": ["},
        {"solve real", "\"x\": [1, 1]"},
        {"solve real -o x.npy", "\"x_file\": \"x.npy\""},
        {"solve band", "\"diagonals_below\": 1"},
        {"invert nearly_singular", "\"singular_to_working_precision\": true"},
        {"qr line --pivot", "\"p\": [[0, 1], [1, 0]]"},
        {"eig rotation --vectors both", "\"eigenvalues\": [[1, 2], [1, -2]]"},
        {"svd diagonal --picture decay.svg", "\"picture_file\": \"decay.svg\""},
        {"compress color.png --rank 1", "\"planes\": 3"},
        {"norm 'odd \"\\\n\xc3\xa4 \xff'", R"("odd \"\\\u000a)"
                                           "\xc3\xa4 \\ufffd\""},
    };
    std::filesystem::copy(folder.file("real"), folder.file("odd \"\\\n\xc3\xa4 \xff"));
    EXPECT_THAT(run("norm 'odd \"\\\n\xc3\xa4 \xff'").out, StartsWith("A: odd \"\\?\xc3\xa4 ?, 2 x 2"));
    const bool hasParser = run_script("command -v python3").exitStatus == 0;
    for (const auto& [command, says, exitStatus] : cases) {
        answer({command + " --json" + (hasParser ? " | tee json" : ""), says});
        EXPECT_TRUE(!hasParser || run_script("python3 -m json.tool json").exitStatus == 0) << command;
    }
}

// The manual page and the completion of shells have what the help of each command tells.
TEST_F(Program, TellsShellsWhatItTakes) {
    EXPECT_EQ(run_script("qrv manual > qrv.1; qrv completion bash > qrv.bash; qrv completion zsh > _qrv").exitStatus,
              0);
    const std::string page = content(folder.file("qrv.1"));
    for (const char* command : {"info", "norm", "solve", "invert", "fit", "qr", "eig", "svd", "compress", "bench"}) {
        EXPECT_THAT(run("--help").out, HasSubstr(std::string("\n  ") + command + " "));
        const std::size_t section = page.find(std::string("qrv ") + command + " ");
        ASSERT_NE(section, std::string::npos) << command;
        std::istringstream help(run(std::string(command) + " --help").out);
        for (std::string word; help >> word;)
            if (word.starts_with("--")) {
                const std::string name = word.substr(2, word.find_first_of(",;", 2) - 2);
                EXPECT_NE(page.find("\\-\\-" + name, section), std::string::npos) << command << ' ' << word;
                EXPECT_THAT(content(folder.file("_qrv")), HasSubstr("'--" + name + "[")) << command;
            }
    }
    EXPECT_EQ(
        run_script("! command -v man || test -z \"$(man --warnings -E UTF-8 -l -Tutf8 ./qrv.1 2>&1 > /dev/null)\"").err,
        "");
    EXPECT_EQ(run_script("! command -v zsh || zsh -n _qrv").exitStatus, 0);
    // Lines, and what their last words become.
    const std::pair<const char*, const char*> cases[] = {{"qrv so", "solve"},
                                                         {"qrv solve --me", "--method"},
                                                         {"qrv solve --method ch", "cholesky"},
                                                         {"qrv compress --ra", "--rank"},
                                                         {"qrv norm matrix.n", "matrix.npy"}};
    for (const auto& [line, words] : cases)
        EXPECT_EQ(run_script(std::string("bash -c '. ./qrv.bash; COMP_WORDS=(") + line +
                             "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _qrv; echo ${COMPREPLY[*]}'")
                      .out,
                  std::string(words) + "\n")
            << line;
}

TEST_F(Program, ReportsAndWritesResults) {
    const Case cases[] = {
        {"--help", "solve"},
        {"--version", "."},
        {"info", "processor class"},
        {"norm real", "largest element  4\n  1-norm           7\n  infinity-norm    5\n  Frobenius norm   5.09901"},
        {"norm hermitian", "Hermitian, 3 entries\n  largest element  3\n  1-norm           4"},
        {"bench --sizes 8 --seconds 0.001", "Sgetrf"},
        {"solve real", "in truth"},
        {"solve hermitian right -o x --picture x.svg", "condition number"},
        {"solve hermitian", "\n  Cholesky   "},
        {"solve indefinite", "ended at column 2: A is not positive definite\n  LU   "},
        {"solve band", "1 + 2 diagonals beside the main one: 0.083 of the numbers of a full matrix, 0.0025 of the op"},
        {"solve diagonal", "\n  band Cholesky   "},
        {"solve real --method band", "\n  band LU   "},
        {"solve indefinite --method band", "ended at column 2: A is not positive definite\n  band LU   "},
        {"solve real right -o y --coordinate", "backward error"}, // one complex side makes both so
        {"invert hermitian -o inverse", "condition number  3.2 (1-norm), 3.2"},
        {"invert nearly_singular", "A is singular to working precision: no digit of X is sure"},
        {"solve nearly_singular", "A is singular to working precision: no digit of x is sure"},
        {"fit line observed -o fitted --picture fit.svg --over 2", "2 in the 2-norm, 0.21 of b\n"},
        {"fit line observed --pivot", "\n  pivoted QR   "},
        {"fit dependent observed --pivot -o dependent_x", "rank              2 of 3"},
        {"fit wide tiny --pivot", "rank              1 of 2"},
        {"fit real right -o fitted_square --picture complex.svg", "error of x        at most"},
        {"qr line -q q -r r", "rank              2 of 2"},
        {"qr hermitian --pivot -q complex_q -r complex_r -p p", "|A P - Q R|"},
        {"qr wide", "condition number  1,"},
        {"eig rotation", "2: 0 real, 1 conjugate pairs; the largest has size 2.23607"},
        {"eig rotation --vectors both", "residual, left"},
        {"eig indefinite --vectors left", "orthogonality"},
        {"eig diagonal", "    1\n    ... 20 more; -o gives all\n    1\n"},
        {"eig rotation -o values --left left --right right_vectors", "Right vectors     right_vectors"},
        {"eig indefinite -o real_values --right real_vectors --picture real.svg", "2, from -1 to 3"},
        {"eig rotation --picture plane.svg", "trace of A by 0 of |A|\n    1 +2i\n    1 -2i\n"},
        {"svd indefinite", "2, from 3 to 1 "},
        {"svd diagonal", "    1\n    ... 20 more; -o gives all\n    1\n"},
        {"svd indefinite --tolerance 0.5", "rank              1: values above 0.5"},
        {"svd singular", "A is singular to working precision"},
        {"svd wide --vectors", "1, from 2.23607 to 2.23607"},
        {"svd right -o sizes --left u --right v --picture decay.svg", "orthogonality"},
        {"compress gray.png --rank 1",
         "51 instead of 600: 8.5 %\n  error             0.0000 of the picture; 0.00 levels"},
        {"compress color.png --error 0.01 -o low.png", "rank              1 of 20"},
    };
    for (const Case& c : cases)
        answer(c);
    EXPECT_EQ(folder.count(), files + 27);
    const std::string picture = content(folder.file("x.svg")); // the unit matrix: two columns, two parts each
    EXPECT_THAT(picture, StartsWith("<svg"));
    EXPECT_THAT(picture, HasSubstr("points='80.0,50.0 690.0,420.0 '"));
    EXPECT_THAT(picture, HasSubstr("points='80.0,420.0 690.0,50.0 '"));

    const auto read = [&](const char* name) { return to_complex(read_matrix(folder.file(name)).matrix); };
    const auto expect_near = [](const Matrix<SingleComplex>& found, const Matrix<SingleComplex>& expected) {
        EXPECT_LT(relative_difference(found, expected), 1e-6);
    };
    Matrix<SingleComplex> identity(2, 2), coefficients(2, 1);
    identity(0, 0) = identity(1, 1) = 1;
    coefficients(0, 0) = 1, coefficients(1, 0) = 2;
    expect_near(read("x"), identity);
    expect_near(product(read("real"), read("y")), read("right"));
    expect_near(product(read("hermitian"), read("inverse")), identity);
    EXPECT_EQ(read_matrix(folder.file("y")).format, Format::coordinate);

    expect_near(read("fitted"), coefficients);
    expect_near(product(read("dependent"), read("dependent_x")), product(read("line"), coefficients));
    expect_near(product(read("real"), read("fitted_square")), read("right"));
    EXPECT_THAT(content(folder.file("fit.svg")), HasSubstr("b - A x"));
    EXPECT_THAT(content(folder.file("fit.svg")), HasSubstr("column 2 of A"));
    EXPECT_THAT(content(folder.file("complex.svg")), HasSubstr("Im A x"));
    expect_near(product(read("q"), read("r")), read("line"));
    expect_near(product(read("complex_q"), read("complex_r")), product(read("hermitian"), read("p")));
    EXPECT_EQ(read("r")(1, 0), SingleComplex(0));

    EXPECT_THAT(content(folder.file("real.svg")), HasSubstr("cy='420.0'"));  // -1 of -1 and 3
    EXPECT_THAT(content(folder.file("plane.svg")), HasSubstr("cy='420.0'")); // 1 - 2i
    EXPECT_THAT(content(folder.file("plane.svg")), HasSubstr("imaginary part"));
    // Column k of the vectors times value k.
    const auto scaled = [&](const char* vectors, const char* values, bool conjugated = false) {
        Matrix<SingleComplex> v = read(vectors);
        for (int k = 0; k < 2; ++k)
            for (int i = 0; i < 2; ++i) {
                const auto value = wide(read(values)(k, 0));
                v(i, k) = narrow(wide(v(i, k)) * (conjugated ? std::conj(value) : value));
            }
        return v;
    };
    Matrix<SingleComplex> transposed = read("rotation");
    std::swap(transposed(0, 1), transposed(1, 0));
    expect_near(product(read("rotation"), read("right_vectors")), scaled("right_vectors", "values"));
    expect_near(product(transposed, read("left")), scaled("left", "values", true));
    expect_near(product(read("indefinite"), read("real_vectors")), scaled("real_vectors", "real_values"));
    EXPECT_TRUE(std::holds_alternative<Matrix<float>>(read_matrix(folder.file("real_vectors")).matrix));

    expect_near(product(read("right"), read("v")), scaled("u", "sizes"));
    EXPECT_THAT(content(folder.file("decay.svg")), HasSubstr("tolerance of the rank"));
    EXPECT_EQ(support::read_png(folder.file("gray-rank1.png")).values, of_rank_one(1).values);
    EXPECT_EQ(support::read_planes(folder.file("low.png")).all.values, of_rank_one(3).values);
}

} // namespace
} // namespace tools
