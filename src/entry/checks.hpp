// What the rows of routines say about their arguments, and what makes a routine of a row.
//
// The checks of a row are done in the order in which they stand there, which is that of the published routine: the
// first that fails decides, and what comes behind it is not done. Each names the position of its argument, counted
// from 1, and the condition in terms of the others' values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "qrv/native.h"
#include "service/options.hpp"
#include "service/reporter.hpp"

namespace qrv::entry {

// ---- Checks -------------------------------------------------------------------------------------------------------

struct Check {
    int position;
    bool fails;
    constexpr bool ends_call() const { return fails; }
};

constexpr bool is(char option, char letter) {
    return same_letter(option, letter);
}

// For what the others have no word for.
constexpr Check must(int position, bool condition) {
    return {position, !condition};
}
// One of the letters, in either case. No loop: of constant letters nothing is left but comparisons.
template <std::size_t N>
[[gnu::always_inline]] constexpr Check option(int position, char given, const char (&letters)[N]) {
    return [&]<std::size_t... I>(std::index_sequence<I...>) {
        return Check{position, !(is(given, letters[I]) || ...)};
    }
    (std::make_index_sequence<N - 1>());
}
constexpr Check at_least(int position, std::int64_t value, std::int64_t least) {
    return {position, value < least};
}
constexpr Check size(int position, int value) {
    return {position, value < 0};
}
// A leading dimension of a matrix with so many rows.
constexpr Check leading(int position, int value, int rows) {
    return {position, value < (rows > 1 ? rows : 1)};
}
// The rows of a matrix in band storage.
constexpr Check band(int position, int value, int below, int above = 0) {
    return at_least(position, value, std::int64_t{below} + above + 1);
}
// The first and the last of the rows and columns, counted from 1, that a step works on: ilo and ihi.
constexpr Check first_active(int position, int ilo, int n) {
    return {position, ilo < 1 || ilo > (n > 1 ? n : 1)};
}
constexpr Check last_active(int position, int ihi, int ilo, int n) {
    return {position, ihi < (ilo < n ? ilo : n) || ihi > n};
}
constexpr Check increment(int position, int value) {
    return {position, value == 0};
}
// The length of a work array, of which so much is needed at least; -1 asks for the length to give.
constexpr int workQuery = -1;
constexpr Check work_length(int position, int value, std::int64_t least) {
    return {position, value < (least > 1 ? least : 1) && value != workQuery};
}

// ---- Steps between checks: the published routines differ in when they do these ------------------------------------

// Stores the length of work for full speed in its first element. Behind a check it is left undone if that fails.
template <class T>
struct Answer {
    static constexpr int position = 0;
    T* work;
    T length;
    bool ends_call() const {
        *work = length;
        return false;
    }
};
template <class T>
constexpr Answer<T> answer(T* work, T length) {
    return {work, length};
}

// The length that only a call with a bad argument sees, as a step behind stores another one: found by tell() then.
template <class T, class Tell>
struct AnswerToBad {
    static constexpr int position = 0;
    T* work;
    Tell tell;
    constexpr bool ends_call() const { return false; }
};
template <class T, class Tell>
constexpr AnswerToBad<T, Tell> answer_to_bad(T* work, Tell tell) {
    return {work, tell};
}

// A call that only asks for the length ends here.
struct Query {
    static constexpr int position = 0;
    bool asked;
    constexpr bool ends_call() const { return asked; }
};
constexpr Query query(int lwork) {
    return {lwork == workQuery};
}

// ---- What runs ----------------------------------------------------------------------------------------------------

constexpr int goOn = -1;

template <class Step>
constexpr void tell_bad(const Step&) {}
template <class T, class Tell>
void tell_bad(const AnswerToBad<T, Tell>& step) {
    *step.work = step.tell();
}

// Does the steps in order: goOn after the last one; else the position of the bad argument, or 0 for a query.
template <class... Steps>
[[gnu::always_inline]] inline int first_end(const Steps&... steps) {
    int end = goOn;
    (void)((steps.ends_call() && (end = steps.position, true)) || ...);
    if (end > 0)
        (tell_bad(steps), ...);
    return end;
}

// The report of a bad argument; names shorter than six letters are filled with blanks.
void report_to_xerbla(std::string_view name, int position);
void report_through_slot(std::string_view name, int position);

// BLAS, used as Guard{"SGEMM"}(steps...): whether the call goes on. If not, a bad argument was reported.
struct Guard {
    std::string_view name;

    template <class... Steps>
    [[gnu::always_inline]] bool operator()(const Steps&... steps) const {
        const int end = first_end(steps...);
        if (end != goOn)
            report_to_xerbla(name, end);
        return end == goOn;
    }
};

// LAPACK, used as Arguments{"SGETRS", info}(steps...): the same; *info is 0 or, for a bad argument, its negative
// position.
struct Arguments {
    std::string_view name;
    int* info;

    template <class... Steps>
    [[gnu::always_inline]] bool operator()(const Steps&... steps) const {
        const int end = first_end(steps...);
        *info = end == goOn ? 0 : -end;
        if (end > 0)
            report_through_slot(name, end);
        return end == goOn;
    }
};

// LAPACK entries begin so: both service slots hold their defaults, of which a program may have set that of progress.
inline void install_default_services() {
    qrv_serv_set_xerbla(XERBLA);
    qrv_serv_set_progress(default_progress());
}

} // namespace qrv::entry
