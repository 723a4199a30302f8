// A linear system, eigenvalues or singular values on several processes: ScaLAPACK over MPI, with this library's BLAS
// and LAPACK in each of them.
#include <CLI/CLI.hpp>
#include <cmath>
#include <fmt/core.h>
#include <mpi.h>
#include <random>

#include "matrix_file/matrix_file.hpp"
#include "scalapack.hpp"
#include "support/flops.hpp"
#include "support/judge.hpp"
#include "support/timer.hpp"

namespace {

using namespace cluster;
using support::Matrix;

struct Request {
    std::string job, a, b, out;
    int order = 0, block = 64;
};

// What fails on process 0 ends all.
struct Failed : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Process 0 holds the whole matrices; the others know their sizes.
struct World {
    int process = 0, processes = 1;

    bool is_first() const { return process == 0; }
    int from_first(int value) const {
        MPI_Bcast(&value, 1, MPI_INT, 0, MPI_COMM_WORLD);
        return value;
    }
    // Seconds of work that all do together.
    template <class Work>
    double seconds(Work work) const {
        MPI_Barrier(MPI_COMM_WORLD);
        const support::Timer timer;
        work();
        MPI_Barrier(MPI_COMM_WORLD);
        return timer.seconds();
    }
};

const int one = 1;

Matrix<float> random_matrix(int rows, int columns) {
    Matrix<float> a(rows, columns);
    std::minstd_rand generator(1);
    std::uniform_real_distribution<float> element(-1, 1);
    for (float& value : a.values)
        value = element(generator);
    return a;
}

// A random matrix is positive definite for the jobs that ask for symmetry.
Matrix<float> input(const Request& request) {
    if (request.order == 0) {
        const tools::MatrixFile file = tools::read_matrix(request.a, 4);
        if (const auto* real = std::get_if<Matrix<float>>(&file.matrix))
            return *real;
        throw Failed(request.a + " is complex");
    }
    Matrix<float> a = random_matrix(request.order, request.order);
    if (request.job == "cholesky" || request.job == "eig")
        for (int j = 0; j < a.columns; ++j) {
            for (int i = 0; i < j; ++i)
                a(i, j) = a(j, i);
            a(j, j) += static_cast<float>(2 * a.rows);
        }
    return a;
}

void check(const Request& request, const Matrix<float>& a, const Matrix<float>& b) {
    if (request.job != "svd" && a.rows != a.columns)
        throw Failed(fmt::format("{} is {} x {}; this needs a square matrix", request.a, a.rows, a.columns));
    if (b.rows != a.rows && (request.job == "lu" || request.job == "cholesky"))
        throw Failed(fmt::format("{} has {} rows; the matrix has {}", request.b, b.rows, a.rows));
    if ((request.job == "cholesky" || request.job == "eig") && !is_symmetric(a))
        throw Failed("the matrix is not symmetric");
}

void print_rate(const World& world, double operations, double seconds) {
    fmt::print("  {:.1f} ms, {:.1f} GFLOP/s, {:.1f} a process\n", 1e3 * seconds, operations / seconds * 1e-9,
               operations / seconds * 1e-9 / world.processes);
}

void write(const Request& request, const Matrix<float>& result) {
    if (request.out.empty())
        return;
    tools::OutputFile file(request.out);
    tools::write_matrix(file, result, tools::is_npy_name(request.out) ? tools::Format::npy : tools::Format::array, "");
    fmt::print("  {}\n", request.out);
}

void solve(const Request& request, const World& world, const Grid& grid, const Matrix<float>& a,
           const Matrix<float>& b) {
    const int n = world.from_first(a.rows), columns = world.from_first(b.columns);
    Dealt left(grid, n, n, request.block), right(grid, n, columns, request.block);
    left.deal(a.values.data());
    right.deal(b.values.data());
    std::vector<int> pivots(static_cast<std::size_t>(left.rows() + request.block));
    int info = 0;
    const double seconds = world.seconds([&] {
        if (request.job == "lu")
            psgesv_(&n, &columns, left.data(), &one, &one, left.desc(), pivots.data(), right.data(), &one, &one,
                    right.desc(), &info);
        else
            psposv_("L", &n, &columns, left.data(), &one, &one, left.desc(), right.data(), &one, &one, right.desc(),
                    &info);
    });
    Matrix<float> x(world.is_first() ? n : 0, columns);
    right.collect(x.values.data());
    if (!world.is_first())
        return;
    if (info != 0)
        throw Failed(fmt::format("the factorization failed at column {}", info));
    const double size = n;
    print_rate(world, (request.job == "lu" ? 2.0 : 1.0) / 3 * size * size * size + 2 * size * size * columns, seconds);
    const support::BackwardError error = support::backward_error(a, x, b);
    fmt::print("  backward error {:.2g} componentwise, {:.2g} normwise\n", error.componentwise, error.normwise);
    if (!(error.normwise < 1e-4))
        throw Failed("this is no solution");
    write(request, x);
}

// How far A is from U S V', by their products with a vector of random elements.
double distance(const Matrix<float>& a, const Matrix<float>& u, const std::vector<float>& s, const Matrix<float>& vt) {
    const Matrix<float> v = random_matrix(a.columns, 1);
    Matrix<float> y = support::product(vt, v);
    for (std::size_t k = 0; k < s.size(); ++k)
        y.values[k] *= s[k];
    return support::relative_difference(support::product(u, y), support::product(a, v));
}

Matrix<float> transposed(const Matrix<float>& a) {
    Matrix<float> result(a.columns, a.rows);
    for (int j = 0; j < a.columns; ++j)
        for (int i = 0; i < a.rows; ++i)
            result(j, i) = a(i, j);
    return result;
}

// Eigenvalues and vectors of a symmetric matrix, or singular values and vectors, by one pattern: the length of the work
// array is asked for first.
void decompose(const Request& request, const World& world, const Grid& grid, const Matrix<float>& a) {
    const bool isSymmetric = request.job == "eig";
    const int m = world.from_first(a.rows), n = world.from_first(a.columns), k = std::min(m, n);
    Dealt matrix(grid, m, n, request.block), u(grid, m, k, request.block), vt(grid, k, n, request.block);
    matrix.deal(a.values.data());
    std::vector<float> values(static_cast<std::size_t>(k)), work(1);
    int info = 0;
    const auto call = [&](int lwork) {
        if (isSymmetric)
            pssyev_("V", "L", &n, matrix.data(), &one, &one, matrix.desc(), values.data(), u.data(), &one, &one,
                    u.desc(), work.data(), &lwork, &info);
        else
            psgesvd_("V", "V", &m, &n, matrix.data(), &one, &one, matrix.desc(), values.data(), u.data(), &one, &one,
                     u.desc(), vt.data(), &one, &one, vt.desc(), work.data(), &lwork, &info);
    };
    call(-1);
    work.resize(static_cast<std::size_t>(work[0] * 1.01F) + 1000); // a float may round the length down
    const double seconds = world.seconds([&] { call(static_cast<int>(work.size())); });
    Matrix<float> left(world.is_first() ? m : 0, k), right(world.is_first() ? k : 0, n);
    u.collect(left.values.data());
    if (!isSymmetric)
        vt.collect(right.values.data());
    if (!world.is_first())
        return;
    if (info != 0)
        throw Failed(fmt::format("the iteration failed: info is {}", info));
    fmt::print("  {:.1f} ms; {} values, from {:.6g} to {:.6g}\n", 1e3 * seconds, k, values.front(), values.back());
    const double error = distance(a, left, values, isSymmetric ? transposed(left) : right);
    fmt::print("  relative difference {:.2g} of A and the product of its factors, on a random vector\n", error);
    if (!(error < 1e-3))
        throw Failed("these are not its factors");
    Matrix<float> result(k, 1);
    result.values = values;
    write(request, result);
}

void run(const Request& request, const World& world) {
    const Grid grid(world.processes);
    Matrix<float> a, b;
    if (world.is_first()) {
        a = input(request);
        b = request.b.empty() ? random_matrix(a.rows, 1)
                              : std::get<Matrix<float>>(tools::read_matrix(request.b).matrix);
        check(request, a, b);
        fmt::print("{} of {} x {}, {} process{} as {} x {}, blocks of {}\n", request.job, a.rows, a.columns,
                   world.processes, world.processes == 1 ? "" : "es", grid.rows(), grid.columns(), request.block);
    }
    if (request.job == "lu" || request.job == "cholesky")
        solve(request, world, grid, a, b);
    else
        decompose(request, world, grid, a);
}

} // namespace

int main(int argc, char** argv) {
    int threads = 0;
    MPI_Init_thread(&argc, &argv, MPI_THREAD_FUNNELED, &threads);
    World world;
    MPI_Comm_rank(MPI_COMM_WORLD, &world.process);
    MPI_Comm_size(MPI_COMM_WORLD, &world.processes);

    CLI::App app{"A linear system, eigenvalues or singular values on several processes."};
    Request request;
    app.add_option("job", request.job,
                   "lu or cholesky: solve A x = b; eig: eigenvalues and vectors of a symmetric matrix; "
                   "svd: singular values and vectors")
        ->required()
        ->check(CLI::IsMember({"lu", "cholesky", "eig", "svd"}));
    auto* const file = app.add_option("A", request.a, "Matrix Market or .npy file, which process 0 reads");
    app.add_option("b", request.b, "file of right-hand sides; random ones without");
    app.add_option("--random", request.order, "order of a random matrix in place of a file")
        ->check(CLI::Range(1, 100'000))
        ->excludes(file);
    app.add_option("-o,--out", request.out, "file for the solution or the values");
    app.add_option("--block", request.block, "order of the blocks that are dealt out")
        ->check(CLI::Range(1, 1024))
        ->capture_default_str();
    try {
        app.parse(argc, argv);
        if (request.a.empty() && request.order == 0)
            throw CLI::RequiredError("A or --random");
        run(request, world);
    } catch (const CLI::ParseError& error) {
        const int status = world.is_first() ? app.exit(error) : 0;
        MPI_Finalize();
        return error.get_exit_code() == 0 ? status : 2;
    } catch (const std::exception& error) {
        fmt::print(stderr, "qrv_cluster: {}\n", error.what());
        MPI_Abort(MPI_COMM_WORLD, 1);
    }
    MPI_Finalize();
    return 0;
}
