#include "service/tuning.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <limits>

#include "qrv/native.h"
#include "qrv/service.h"
#include "service/machine_constants.hpp"
#include "service/options.hpp"

namespace qrv::tuning {
namespace {

// ---- Names -------------------------------------------------------------------------------------------------------

// The first six characters of a name as one number, missing ones as blanks.
constexpr std::uint64_t key(std::string_view name) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < 6; ++i)
        number = number << 8 | static_cast<unsigned char>(i < name.size() ? name[i] : ' ');
    return number;
}

// Six letters, folded to upper case if the first one is lower case.
struct Name {
    char letters[6] = {' ', ' ', ' ', ' ', ' ', ' '};

    constexpr explicit Name(std::string_view given) {
        const bool fold = !given.empty() && given[0] >= 'a' && given[0] <= 'z';
        for (std::size_t i = 0; i < std::min<std::size_t>(given.size(), 6); ++i)
            letters[i] = fold ? static_cast<char>(fold_case(given[i])) : given[i];
    }
    constexpr std::string_view routine() const { return {letters, 6}; }
    constexpr std::string_view without_precision() const { return {letters + 1, 5}; }
    constexpr std::string_view operation() const { return {letters + 3, 3}; }

    // The row of the tables: those of S serve for D, those of C for Z. 0 if the first letter tells no precision.
    constexpr std::uint64_t row() const {
        const char first = letters[0];
        const char precision = first == 'S' || first == 'D' ? 'S' : first == 'C' || first == 'Z' ? 'C' : ' ';
        const char names[] = {precision, letters[1], letters[2], letters[3], letters[4], letters[5]};
        return precision == ' ' ? 0 : key({names, 6});
    }
};

// ---- Ladders -----------------------------------------------------------------------------------------------------

struct Step {
    int upTo; // inclusive
    int value;
};

constexpr int by_size(int size, std::initializer_list<Step> ladder, int above) {
    for (const Step& step : ladder)
        if (size <= step.upTo)
            return step.value;
    return above;
}

// Of two sizes of which -1 is unset.
constexpr int smaller_set(int n1, int n2) {
    return n1 == -1 ? n2 : n2 == -1 ? n1 : std::min(n1, n2);
}

constexpr std::int64_t product(int n1, int n2) {
    return std::int64_t{n1} * n2;
}

// ---- Block sizes ---------------------------------------------------------------------------------------------------

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

constexpr int cholesky_block(const Sizes& n) {
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

constexpr int block_size_of(std::uint64_t name, std::string_view opts, const Sizes& n) {
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
        return by_size(n.n4, {{64, 1}}, 32);
    case key("SGEQRF"):
    case key("CGEQRF"):
        if (n.n3 > 0 && !opts.empty() && same_letter(opts[0], 'B'))
            return 2; // blocks in one job of a team of n3
        return by_size(n.n2, {{300, 16}, {350, 24}, {800, 48}, {1150, 64}, {3400, 96}}, 128);
    case key("SORGQR"):
    case key("SORGLQ"):
    case key("SORGHR"):
    case key("SORMQR"):
    case key("SORMLQ"):
    case key("SORMQL"):
    case key("SORMBR"):
    case key("SORMTR"):
        return by_size(smaller_set(n.n1, n.n2), {{64, 16}, {255, 32}, {1499, 64}}, 128);
    case key("SPOTRF"):
    case key("CPOTRF"):
        return cholesky_block(n);
    case key("SSYTRD"):
        return n.n2 == -1 ? by_size(n.n1, {{1399, 20}}, 24) : 12;
    case key("SPBTRF"): // n2 diagonals
        return by_size(n.n2, {{64, 1}}, 32);
    case key("SGBTRS"):
        return banded_solve_block(n.n1, n.n2, n.n3);
    case key("CGEBRD"):
        if (n.n2 > 127 && n.n1 < n.n2)
            return 8;
        return by_size(n.n2, {{127, 128}, {2499, 8}, {4000, 16}}, 32);
    case key("SLABRD"): // a thread's share of the panel, whole as long as the matrix fits the cache
    case key("CLABRD"):
        return product(n.n1, n.n2) <= 512'000 ? n.n1 : 32;
    case key("SBDSQR"):
    case key("SSTEQR"):
        return buffered_sweeps(n);
    case key("SLARFT"):
    case key("CLARFT"):
        return n.n2 <= 64 || n.n1 >= 15'000 ? 16 : 32;
    case key("SLAQRF"):
    case key("CLAQRF"):
        return n.n1 <= 350 ? n.n2 : 16;
    }
    return 1;
}

// ---- Crossovers ----------------------------------------------------------------------------------------------------

// The blocked form does not pay for very narrow matrices, nor for n1 x n2 matrices of few elements. A team of n3 shares
// out all but small matrices, to the last column.
constexpr int qr_crossover(const Sizes& n, int elements, int crossover) {
    if (n.n3 > 0)
        return std::int64_t{n.n1} + n.n2 < 200 ? n.n1 + n.n2 : 0;
    if (n.n2 <= 8)
        return 128;
    return product(n.n1, n.n2) <= elements ? crossover : 8;
}

constexpr int crossover_of(std::uint64_t name, const Sizes& n) {
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
    case key("SSYTRD"): // n2 threads; without an order, the least one for a team
        return n.n1 == -1 ? 32 : n.n2 > 1 ? 600 : 250;
    case key("SGBTRS"):
        return by_size(n.n2, {{127, 4}}, 32);
    case key("SPBTRS"): // n3 right-hand sides
    case key("STBTRS"):
        return n.n3 == -1 ? 32 : by_size(n.n2, {{127, 4}}, 32);
    case key("SBDSQR"):
    case key("SSTEQR"):
        return 210;
    }
    return 0;
}

// ---- Threaded LU --------------------------------------------------------------------------------------------------

struct LuShares {
    int span, tail;
};

constexpr LuShares lu_shares(const Name& name, int n, int threads) {
    const bool real = name.routine() == "SGETRF";
    if ((!real && name.routine() != "CGETRF") || threads <= 1)
        return {1, 0};
    if (threads <= 4)
        return real ? LuShares{by_size(n, {{4000, 3}, {6000, 2}}, 1), by_size(n, {{4000, 4}}, 8)}
                    : LuShares{by_size(n, {{1300, 3}, {7000, 2}}, 3), by_size(n, {{7000, 4}}, 16)};
    if (threads <= 8)
        return real ? LuShares{by_size(n, {{3600, 2}, {4000, 1}}, 2), by_size(n, {{3600, 4}}, 8)}
                    : LuShares{by_size(n, {{2100, 2}, {3200, 1}, {6000, 2}}, 4),
                               by_size(n, {{1000, 0}, {2100, 4}, {3200, 16}, {6000, 8}}, 16)};
    return {1, n > 6500 ? 1'000'000 : threads == 12 ? 12 : 0};
}

// ---- QR iteration -------------------------------------------------------------------------------------------------

// Simultaneous shifts for nh active rows, an even number.
int shifts(int nh) {
    int count = 2;
    if (nh >= 6000)
        count = 256;
    else if (nh >= 3000)
        count = 128;
    else if (nh >= 590)
        count = 64;
    else if (nh >= 150)
        count = std::max(
            10, static_cast<int>(static_cast<float>(nh) / (std::log(static_cast<float>(nh)) / std::log(2.0F))));
    else if (nh >= 60)
        count = 10;
    else if (nh >= 30)
        count = 4;
    return std::max(2, count - count % 2);
}

// The least order for which the multishift iteration is used, or for QRF the block size of a panel by n2.
int iteration_minimum(const Name& name, std::string_view opts, const Sizes& n) {
    if (name.operation() == "TRF")
        return 16;
    if (name.operation() != "QRF")
        return qr_iteration(12, n.n2, n.n3);
    if (opts.empty() || opts[0] != 'P')
        return 16;
    return by_size(n.n2, {{400, 24}, {550, 32}, {800, 48}, {1350, 64}, {1900, 96}}, 128);
}

// Rows for which a tall matrix is better reduced to a triangle first.
int singular_value_crossover(const Sizes& n) {
    const float rows = 1.6F * static_cast<float>(std::min(n.n1, n.n2));
    return rows < 0x1p31F ? static_cast<int>(rows) : std::numeric_limits<int>::max();
}

} // namespace

int block_size(std::string_view name, int n1, int n2, int n3, int n4) {
    return value(1, name, " ", {n1, n2, n3, n4});
}
int minimum_block_size(std::string_view name) {
    return value(2, name, " ", {});
}
int crossover(std::string_view name, int n1, int n2, int n3, int n4) {
    return value(3, name, " ", {n1, n2, n3, n4});
}
int lu_span(std::string_view name, int n, int threads) {
    return lu_shares(Name(name), n, threads).span;
}
int lu_tail(std::string_view name, int n, int threads) {
    return lu_shares(Name(name), n, threads).tail;
}

int value(int ispec, std::string_view name, std::string_view opts, const Sizes& sizes) {
    const Name routine(name);
    if (ispec >= 1 && ispec <= 3 && routine.row() == 0)
        return 1;
    switch (ispec) {
    case 1:
        return block_size_of(routine.row(), opts, sizes);
    case 2:
        return 2;
    case 3:
        return crossover_of(routine.row(), sizes);
    case 4: // shifts of the classic QR iteration
        return 6;
    case 5: // least column dimension for blocking
        return 2;
    case 6:
        return singular_value_crossover(sizes);
    case 7: // processors; the QZ iteration has a value of its own
        if (routine.without_precision() != "HGEQZ")
            return 1;
        return qrv_serv_get_cpu_type() == 5 ? 32 : 2;
    case 8: // crossover to multishift QR
        return 50;
    case 9: // size of the smallest subproblems of divide and conquer
        return 25;
    case 10: // NaN and infinity can be trusted
    case 11:
        return 1;
    case 12:
        return iteration_minimum(routine, opts, sizes);
    case 13:
    case 14:
    case 15:
    case 16:
        return qr_iteration(ispec, sizes.n2, sizes.n3);
    case 17:
        return lu_span(name, sizes.n2, sizes.n3);
    case 18:
        return lu_tail(name, sizes.n2, sizes.n3);
    case 19:
        return qrv_serv_get_cpu_type();
    }
    return -1;
}

int qr_iteration(int ispec, int ilo, int ihi) {
    const int nh = ihi - ilo + 1;
    const int ns = shifts(nh);
    switch (ispec) {
    case 12: // least order for the multishift iteration
        return 75;
    case 13: // deflation window
        return nh <= 500 ? ns : 3 * ns / 2;
    case 14: // deflation window over active block in percent: below, a sweep is skipped
        return 14;
    case 15: // simultaneous shifts
        return ns;
    case 16: // reflectors are accumulated, with 2 their block structure is used
        return ns >= 14 ? 2 : 0;
    }
    return -1;
}

} // namespace qrv::tuning

// ---- The native entries -------------------------------------------------------------------------------------------

using namespace qrv;

namespace {

std::string_view text(const char* characters, int length) {
    return {characters, static_cast<std::size_t>(std::max(length, 0))};
}

struct MachineConstant {
    char letter;
    float value;
};

constexpr MachineConstant machineConstants[] = {
    {'E', machine::epsilon},
    {'S', machine::safeMinimum},
    {'U', machine::underflow},
    {'B', machine::base},
    {'P', machine::precision},
    {'N', machine::digits},
    {'R', machine::roundsToNearest},
    {'M', machine::minimumExponent},
    {'L', machine::maximumExponent},
    {'O', machine::overflow},
    // Limits for scaled sums of squares.
    {'A', 0x1p-42F},
    {'F', 0x1p-51F},
    {'I', 0x1p42F},
    {'X', 0x1p51F},
    {'T', 8},
};

} // namespace

int ILAENV(const int* ispec, const char* name, const char* opts, const int* n1, const int* n2, const int* n3,
           const int* n4, int name_length, int opts_length) {
    return tuning::value(*ispec, text(name, name_length), text(opts, opts_length), {*n1, *n2, *n3, *n4});
}

int IPARMQ(const int* ispec, const char*, const char*, const int*, const int* ilo, const int* ihi, const int*, int,
           int) {
    return tuning::qr_iteration(*ispec, *ilo, *ihi);
}

float SLAMCH(const char* cmach) {
    for (const MachineConstant& constant : machineConstants)
        if (same_letter(*cmach, constant.letter))
            return constant.value;
    return 0;
}
