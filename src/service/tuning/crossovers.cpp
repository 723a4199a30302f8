// Crossovers: the size below which the unblocked or serial form is faster.
#include "service/tuning/tables.hpp"

namespace qrv::tuning {
namespace {

// The blocked form does not pay for very narrow matrices, nor for n1 x n2 matrices of few elements. A team of n3 shares
// out all but small matrices, to the last column.
constexpr int qr_crossover(const Sizes& n, int elements, int crossover) {
    if (n.n3 > 0)
        return std::int64_t{n.n1} + n.n2 < 200 ? n.n1 + n.n2 : 0;
    if (n.n2 <= 8)
        return 128;
    return product(n.n1, n.n2) <= elements ? crossover : 8;
}

// n2 threads; without an order, the least one for a team.
constexpr int tridiagonal_crossover(const Sizes& n) {
    return n.n1 == -1 ? 32 : n.n2 > 1 ? 600 : 250;
}

constexpr int banded_solve_crossover(int diagonals) {
    return by_size(diagonals, {{127, 4}}, 32);
}

} // namespace

int crossover_of(std::uint64_t name, const Sizes& n) {
    switch (name) {
    case key("SGETRF"):
    case key("CGETRF"):
        return 64;
    case key("SGEHRD"):
    case key("SGELQF"):
    case key("CGELQF"):
    case key("CUNGQR"):
    case key("CUNGLQ"):
    case key("CUNGBR"):
    case key("SORGQR"):
    case key("SORGLQ"):
    case key("SORGHR"):
    case key("SGEBRD"):
    case key("CGEBRD"):
    case key("CLABRD"):
        return 32;
    case key("SLABRD"):
        return 250;
    case key("SLATRD"):
        return 100'000;
    case key("SSYTD2"):
        return 100;
    case key("SGEQRF"):
        return qr_crossover(n, 25'000, 256);
    case key("CGEQRF"):
        return qr_crossover(n, 12'500, 128);
    case key("SPOTRF"):
    case key("CPOTRF"):
        return 128;
    case key("SSYTRD"):
        return tridiagonal_crossover(n);
    case key("SGBTRS"):
        return banded_solve_crossover(n.n2);
    case key("SPBTRS"): // n3 right-hand sides
    case key("STBTRS"):
        return n.n3 == -1 ? 32 : banded_solve_crossover(n.n2);
    case key("SBDSQR"):
    case key("SSTEQR"):
        return 210;
    }
    return 0;
}

} // namespace qrv::tuning
