// Tuning values of the LAPACK routines: block sizes, crossovers and the parameters of the QR iteration, by value.
// ILAENV and IPARMQ give the same in the native calling form.
//
// Names are upper-case routine names of six letters. Sizes that a routine's rows do not look at may be left out; -1
// stands for a size that is not known. All are pure functions, but for two that ask for the processor class.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "service/tuning/names.hpp"

namespace qrv::tuning {

// The row of a routine in the tables. That of a name written out is found by the compiler.
struct Row {
    std::uint64_t key;

    template <std::size_t N>
    constexpr Row(const char (&name)[N]) : key(Name({name, N - 1}).row()) {}
    template <class Text>
    requires std::is_convertible_v<const Text&, std::string_view>
    constexpr Row(const Text& name) : key(Name(name).row()) {}
};

// Columns that a blocked routine takes at a time; 1: it does not block.
int block_size(Row row, int n1, int n2 = -1, int n3 = -1, int n4 = -1);
// The least block size that is worth blocking for.
int minimum_block_size(std::string_view name);
// The size below which the unblocked or serial form is faster.
int crossover(Row row, int n1, int n2 = -1, int n3 = -1, int n4 = -1);

// How the threaded LU shares out block columns of an n x n matrix: how many one thread owns side by side, and how many
// at the right end are free for any thread. 1 and 0 for other names than SGETRF and CGETRF.
int lu_span(std::string_view name, int n, int threads);
int lu_tail(std::string_view name, int n, int threads);

struct Sizes {
    int n1 = -1, n2 = -1, n3 = -1, n4 = -1;
};

// Any value by its ILAENV number.
int value(int ispec, std::string_view name, std::string_view opts, const Sizes& sizes);

// Parameters of the multishift QR iteration on rows ilo to ihi of a Hessenberg matrix, by their IPARMQ number.
int qr_iteration(int ispec, int ilo, int ihi);

} // namespace qrv::tuning
