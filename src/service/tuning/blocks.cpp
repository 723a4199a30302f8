// Block sizes: how many columns a blocked routine takes at a time.
#include "service/tuning/tables.hpp"

namespace qrv::tuning {
namespace {

// Right-hand sides of a banded solve with kd diagonals in blocks: only where bands and blocks are wide enough to feed
// GEMM, or the matrix has left the cache.
constexpr int banded_solve_block(int n, int kd, int nrhs) {
    const int block = product(std::min(nrhs, 128), n) <= 768'000 ? 128 : 64;
    const bool narrow = kd < 12 || nrhs < 8;
    const bool unblockedSuffices = product(n, kd) <= 131'072 || nrhs >= 8 || nrhs < 3;
    return narrow && unblockedSuffices ? 1 : std::min(block, kd);
}

// Plane rotations are kept back for so many sweeps; n2 is the number of threads.
constexpr int buffered_sweeps(const Sizes& n) {
    return n.n2 == 1 ? by_size(n.n1, {{210, 4}, {260, 100}, {450, 120}, {1000, 140}, {2200, 160}, {4000, 180}}, 200)
                     : by_size(n.n1, {{210, 4}, {630, 100}, {1100, 140}, {2500, 160}, {6200, 180}}, 200);
}

// With n2 threads, n3 tells which: the columns of a tile, the inner steps that a task may take (-2), or the columns of
// the leading block, at most (-3). The coarse grain that the last two leave is 1.3 to 2.1 times as fast on two threads,
// at n = 512 to 1024, as steps and blocks of one tile.
constexpr int cholesky_block(const Sizes& n) {
    if (n.n2 != -1 && n.n3 == -2)
        return 32;
    if (n.n2 != -1 && n.n3 == -3)
        return 256;
    return n.n2 == -1 ? by_size(n.n1,
                                {{128, 128},
                                 {450, 24},
                                 {700, 32},
                                 {900, 56},
                                 {1050, 96},
                                 {1400, 128},
                                 {1800, 192},
                                 {2000, 256},
                                 {3000, 384}},
                                512)
                      : by_size(n.n1, {{128, 128}, {571, 16}, {699, 24}, {899, 8}, {1949, 16}}, 12);
}

// `opts` B asks for the blocks in one job of a team of n3.
constexpr int qr_block(std::string_view opts, const Sizes& n) {
    if (n.n3 > 0 && !opts.empty() && same_letter(opts[0], 'B'))
        return 2;
    return by_size(n.n2, {{300, 16}, {350, 24}, {800, 48}, {1150, 64}, {3400, 96}}, 128);
}

constexpr int orthogonal_factor_block(int size) {
    return by_size(size, {{64, 16}, {255, 32}, {1499, 64}}, 128);
}

constexpr int tridiagonal_block(const Sizes& n) { // n2 threads
    return n.n2 == -1 ? by_size(n.n1, {{1399, 20}}, 24) : 12;
}

constexpr int complex_bidiagonal_block(const Sizes& n) {
    if (n.n2 > 127 && n.n1 < n.n2)
        return 8;
    return by_size(n.n2, {{127, 128}, {2499, 8}, {4000, 16}}, 32);
}

// A thread's share of the panel, whole as long as the matrix fits the cache.
constexpr int bidiagonal_panel_share(const Sizes& n) {
    return product(n.n1, n.n2) <= 512'000 ? n.n1 : 32;
}

constexpr int banded_factor_block(int diagonals) {
    return by_size(diagonals, {{64, 1}}, 32);
}

constexpr int reflector_block(const Sizes& n) {
    return n.n2 <= 64 || n.n1 >= 15'000 ? 16 : 32;
}

} // namespace

int block_size_of(std::uint64_t name, std::string_view opts, const Sizes& n) {
    switch (name) {
    case key("SGETRF"):
    case key("CGETRF"):
    case key("SGETRI"):
    case key("CGETRI"):
    case key("STRTRI"):
    case key("CTRTRI"):
    case key("SLAUUM"):
    case key("CLAUUM"):
        return 64;
    case key("SGEHRD"):
    case key("SGELQF"):
    case key("CGELQF"):
    case key("CUNGQR"):
    case key("CUNGLQ"):
    case key("CUNGBR"):
    case key("CUNMQR"):
    case key("CUNMLQ"):
    case key("CUNMBR"):
    case key("SLAQPS"):
    case key("SLATRD"):
        return 32;
    case key("SGEBRD"):
        return 16;
    case key("SGBTRF"): // n4 diagonals above the main one
        return banded_factor_block(n.n4);
    case key("SGEQRF"):
    case key("CGEQRF"):
        return qr_block(opts, n);
    case key("SORGQR"):
    case key("SORGLQ"):
    case key("SORGHR"):
    case key("SORMQR"):
    case key("SORMLQ"):
    case key("SORMQL"):
    case key("SORMBR"):
    case key("SORMTR"):
        return orthogonal_factor_block(smaller_set(n.n1, n.n2));
    case key("SPOTRF"):
    case key("CPOTRF"):
        return cholesky_block(n);
    case key("SSYTRD"):
        return tridiagonal_block(n);
    case key("SPBTRF"): // n2 diagonals
        return banded_factor_block(n.n2);
    case key("SGBTRS"):
        return banded_solve_block(n.n1, n.n2, n.n3);
    case key("CGEBRD"):
        return complex_bidiagonal_block(n);
    case key("SLABRD"):
    case key("CLABRD"):
        return bidiagonal_panel_share(n);
    case key("SBDSQR"):
    case key("SSTEQR"):
        return buffered_sweeps(n);
    case key("SLARFT"):
    case key("CLARFT"):
        return reflector_block(n);
    case key("SLAQRF"):
    case key("CLAQRF"):
        return n.n1 <= 350 ? n.n2 : 16;
    }
    return 1;
}

} // namespace qrv::tuning
