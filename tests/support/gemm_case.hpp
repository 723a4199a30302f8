// One GEMM problem with its operands, run by any routine that has the kernel's arguments.
#pragma once

#include <algorithm>
#include <ostream>

#include "blas/kernel/kernels.hpp"
#include "support/matrices.hpp"
#include "support/page_matrix.hpp"

namespace qrv::test {

using Sgemm = void(QRV_GEMM_PARAMETERS(float));

constexpr char transposeOptions[] = {'N', 'T'};

struct GemmShape {
    char transa = 'N', transb = 'N';
    int m = 1, n = 1, k = 1;
    float alpha = 1, beta = 0;
    int extraA = 0, extraB = 0, extraC = 0; // leading dimensions beyond the least
    int startA = 0, startB = 0, startC = 0; // floats past a 64-byte boundary
};

inline std::ostream& operator<<(std::ostream& out, const GemmShape& p) {
    return out << p.transa << p.transb << " m=" << p.m << " n=" << p.n << " k=" << p.k << " alpha=" << p.alpha
               << " beta=" << p.beta << " ld+" << p.extraA << ',' << p.extraB << ',' << p.extraC << " start "
               << p.startA << ',' << p.startB << ',' << p.startC;
}

struct GemmOperands {
    GuardedMatrix a, b, c;

    explicit GemmOperands(const GemmShape& p)
        : a(rows(p.transa, p.m, p.k), rows(p.transa, p.k, p.m), ld(p.transa, p.m, p.k) + p.extraA, p.startA),
          b(rows(p.transb, p.k, p.n), rows(p.transb, p.n, p.k), ld(p.transb, p.k, p.n) + p.extraB, p.startB),
          c(p.m, p.n, std::max(1, p.m) + p.extraC, p.startC) {
        std::mt19937 random(static_cast<unsigned>(p.m + 1000 * p.n + 1000000 * p.k));
        a.fill_random(random);
        b.fill_random(random);
        c.fill_random(random);
    }

private:
    static int rows(char option, int plain, int transposed) { return is_transposed(option) ? transposed : plain; }
    static int ld(char option, int plain, int transposed) { return std::max(1, rows(option, plain, transposed)); }
};

// Runs the routine on operands of any matrix type.
template <class A, class B, class C>
void run(Sgemm* sgemm, const GemmShape& p, A& a, B& b, C& c) {
    const int lda = a.ld(), ldb = b.ld(), ldc = c.ld();
    sgemm(&p.transa, &p.transb, &p.m, &p.n, &p.k, &p.alpha, a.data(), &lda, b.data(), &ldb, &p.beta, c.data(), &ldc);
}

// Runs the problem on random operands, C full of NaN if beta is 0. Whether the result is right and nothing
// around C was written.
inline testing::AssertionResult computes(Sgemm* sgemm, const GemmShape& p) {
    GemmOperands x(p);
    if (p.beta == 0)
        x.c.fill(std::numeric_limits<float>::quiet_NaN());
    const GuardedMatrix before = x.c;
    run(sgemm, p, x.a, x.b, x.c);
    const double error = gemm_error(p.transa, p.transb, p.k, p.alpha, x.a, x.b, p.beta, before, x.c);
    if (!(error <= 1))
        return testing::AssertionFailure() << p << ": error " << error;
    if (!x.c.guards_intact())
        return testing::AssertionFailure() << p << ": written outside C";
    return testing::AssertionSuccess();
}

// The problem with every operand against a guarded page: in front of it and then behind it. A
// read or write past an operand stops the program.
inline testing::AssertionResult stays_inside(Sgemm* sgemm, const GemmShape& p) {
    GemmOperands x(p);
    for (const bool atFront : {false, true}) {
        PageMatrix a(x.a.rows(), x.a.columns(), x.a.ld(), atFront), b(x.b.rows(), x.b.columns(), x.b.ld(), atFront);
        PageMatrix c(p.m, p.n, x.c.ld(), atFront);
        a = x.a;
        b = x.b;
        c = x.c;
        run(sgemm, p, a, b, c);
        GuardedMatrix result = x.c;
        for (int j = 0; j < p.n; ++j)
            for (int i = 0; i < p.m; ++i)
                result(i, j) = c(i, j);
        const double error = gemm_error(p.transa, p.transb, p.k, p.alpha, x.a, x.b, p.beta, x.c, result);
        if (!(error <= 1))
            return testing::AssertionFailure() << p << ": error " << error << " at a guarded page";
    }
    return testing::AssertionSuccess();
}

} // namespace qrv::test
