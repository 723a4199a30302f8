// Bad arguments of all routines with a row (src/routines), through their entries: a table tells calls that are good and
// what breaks them, written from the published lists and not from the checks of the rows.
//
// A call is its arguments as words: a letter for an option ('~' an empty one), a number for an int or a real scalar,
// '.' for an array of ones, 'v' for one whose elements go down, 'w' for a work array, as long as the number that
// follows, whose first element may be stored although an argument is bad. 'm' is a matrix that is large on its
// diagonal, with the leading dimension that follows, and 'b' with a number one in band storage, with the diagonal in
// that row. info is left out. Arrays have room to spare, or the length that is told, and not an element more: '.40',
// 'v40', 'm30x20', 'b2x90'.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <new>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qrv/native.h"

namespace qrv::test {

inline std::vector<std::string> words_of(const std::string& text) {
    std::istringstream in(text);
    return {std::istream_iterator<std::string>(in), {}};
}
inline std::vector<std::string> parts_of(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream in(text);
    for (std::string part; std::getline(in, part, separator);)
        parts.push_back(part);
    return parts;
}

// A row of the table, "names | good, ... | singles | changes: reported, ...", of which the end may be left out; a line
// that begins with a blank goes on with the row before it. A change is "position=word".
struct ArgumentRow {
    std::vector<std::string> names;
    std::vector<std::string> good;    // calls that pass, at the limits
    std::vector<std::string> singles; // changes of the first of them: each alone is reported at its position, and of
                                      // two the one that is told first
    struct Fault {                    // what more than one argument decides, or is reported at another position
        std::string changes;
        int reported;
    };
    std::vector<Fault> faults;
};
inline std::vector<ArgumentRow> argument_rows(std::string table) {
    for (std::size_t end = 0; (end = table.find("\n ", end)) != std::string::npos;)
        table[end] = ' ';
    std::vector<ArgumentRow> rows;
    for (const std::string& line : parts_of(table, '\n')) {
        if (line.empty())
            continue;
        const auto parts = parts_of(line + "| | ", '|');
        rows.push_back({words_of(parts.at(0)), parts_of(parts.at(1), ','), words_of(parts.at(2)), {}});
        for (const std::string& fault : parts_of(parts.at(3), ','))
            if (const auto colon = fault.find(':'); colon != std::string::npos)
                rows.back().faults.push_back({fault.substr(0, colon), std::stoi(fault.substr(colon + 1))});
    }
    return rows;
}

// ---- A call -------------------------------------------------------------------------------------------------------

enum class Kind { text, whole, real, complex };

template <class Pointer>
constexpr Kind kind_of() {
    using Element = std::remove_const_t<std::remove_pointer_t<Pointer>>;
    constexpr bool isText = std::is_same_v<Element, char>, isReal = std::is_same_v<Element, float>;
    static_assert(isText || isReal || std::is_same_v<Element, int> || std::is_same_v<Element, qrv_complex>);
    return isText ? Kind::text : isReal ? Kind::real : std::is_same_v<Element, int> ? Kind::whole : Kind::complex;
}

// Memory from a line of the caches on: where arrays lie must not tell calls apart.
template <class T>
struct OnLines {
    using value_type = T;
    OnLines() = default;
    template <class U>
    OnLines(const OnLines<U>&) {}
    T* allocate(std::size_t n) { return static_cast<T*>(::operator new(n * sizeof(T), std::align_val_t(64))); }
    void deallocate(T* memory, std::size_t) { ::operator delete(memory, std::align_val_t(64)); }
    bool operator==(const OnLines&) const = default;
};

// One argument: what its word stands for, in memory of its own.
class Argument {
public:
    Argument(Kind kind, const std::string& word, const std::string& next) : kind_(kind), word_(word) {
        if (kind == Kind::text) {
            memory_.resize(word.size() / sizeof(int) + 1);
            if (word != "~")
                std::memcpy(memory_.data(), word.data(), word.size());
            return;
        }
        next_ = static_cast<std::size_t>(std::abs(std::strtol(next.c_str(), nullptr, 10)));
        if (is_array())
            fill();
        else
            store(0, std::stod(word));
        before_ = memory_;
    }

    void* address() { return memory_.data(); }
    const void* address() const { return memory_.data(); }
    bool touched() const {
        const auto first = static_cast<std::ptrdiff_t>(word_[0] == 'w' ? parts() : 0);
        return kind_ != Kind::text && is_array() &&
               !std::equal(memory_.begin() + first, memory_.end(), before_.begin() + first);
    }
    int value() const { return memory_[0]; }
    // Of a matrix: how far its elements are from those of another call, against the largest; and its norm from the
    // other's.
    struct Distance {
        double ofElements = 0, ofNorms = 0;
    };
    Distance distance(const Argument& other) const {
        double largest = 1e-30, distance = 0, squares = 0, otherSquares = 0;
        if (!is_floating() || !is_matrix())
            return {};
        for (std::size_t k = 0; k < memory_.size(); ++k) {
            const double x = std::bit_cast<float>(memory_[k]), y = std::bit_cast<float>(other.memory_[k]);
            largest = std::max({largest, std::abs(x), std::abs(y)});
            distance = std::max(distance, std::abs(x - y));
            squares += x * x;
            otherSquares += y * y;
        }
        const double nanIfAny = 0 * squares; // maxima pass over NaN
        return {distance / largest + nanIfAny, std::abs(std::sqrt(squares / otherSquares) - 1)};
    }
    bool is_finite() const {
        return std::all_of(memory_.begin(), memory_.end(),
                           [](int x) { return std::isfinite(std::bit_cast<float>(x)); });
    }
    bool same_bits(const Argument& other) const { return memory_ == other.memory_; }
    bool is_floating() const { return kind_ == Kind::real || kind_ == Kind::complex; }
    void store(std::size_t k, double value, double imaginary = 0) {
        const auto bits = [](double x) { return std::bit_cast<int>(static_cast<float>(x)); };
        memory_.resize(std::max(memory_.size(), (k + 1) * parts()));
        memory_[k * parts()] = kind_ == Kind::whole ? static_cast<int>(value) : bits(value);
        if (kind_ == Kind::complex)
            memory_[k * parts() + 1] = bits(imaginary);
    }

    // Every step-th element from `first` on.
    struct Place {
        std::size_t first, step;
    };
    // One element, a line of a matrix along or across, its diagonal, those beside it, and all there is.
    std::vector<Place> places() const {
        const std::size_t count = memory_.size() / parts();
        if (!is_floating() || count == 0)
            return {};
        std::vector<Place> places = {{0, count}, {count / 2, count}, {count - 1, count}, {0, 1}};
        if (is_matrix() && next_ > 1)
            places.insert(places.end(), {{1, next_}, {0, next_ + 1}, {1, next_ + 1}, {next_, next_ + 1}});
        return places;
    }
    void replace(const Place& place, float x) {
        for (std::size_t k = place.first; k < memory_.size() / parts(); k += place.step)
            store(k, x, x);
    }

    bool is_matrix() const { return word_[0] == 'm' || (word_[0] == 'b' && word_.size() > 1); }
    bool is_text() const { return kind_ == Kind::text; }
    std::size_t bytes() const { return memory_.size() * sizeof(int); }

private:
    std::size_t parts() const { return kind_ == Kind::complex ? 2 : 1; } // of an element
    bool is_array() const { return std::strchr(".vw", word_[0]) != nullptr || is_matrix(); }

    std::size_t length() const {
        unsigned long first = 0, columns = 0;
        const int told = std::sscanf(word_.c_str() + 1, "%lux%lu", &first, &columns);
        if (is_matrix() && told == 2)
            return next_ * (columns - 1) + first + (word_[0] == 'b');
        if (!is_matrix() && told == 1)
            return first;
        if (word_[0] == 'w' && next_ > 0)
            return next_;
        return 1024 + (is_matrix() ? 2 * next_ * next_ : 0);
    }

    // Ones: matrices, vectors and pivots that any routine can work on.
    void fill() {
        const std::size_t size = length(), ld = next_, diagonal = word_[0] == 'b' ? std::stoul(word_.substr(1)) : 0;
        memory_.reserve(size * parts());
        std::minstd_rand random;
        const auto any = [&] { return static_cast<double>(random() % 255) / 127 - 1; };
        for (std::size_t k = 0; k < size; ++k)
            if (!is_matrix())
                store(k, word_[0] == 'v' && kind_ != Kind::complex ? static_cast<double>(size - k) : 1);
            else if (k % ld == (word_[0] == 'm' ? k / ld : diagonal))
                store(k, static_cast<double>(3 * ld));
            else if (kind_ == Kind::complex)
                store(k, any(), any());
            else
                store(k, any());
    }

    Kind kind_;
    std::string word_;
    std::size_t next_ = 0; // of an array: its leading dimension, or the length of a work array
    std::vector<int, OnLines<int>> memory_, before_; // ints, bits of floats or a text
};

// A function whose arguments are all addresses. Its type is known here alone, for there are hundreds of them.
template <class Result>
struct Function {
    std::vector<Kind> kinds;
    bool hasInfo; // as its last argument
    bool hasResult;
    void (*function)();
    Result (*invoke)(void (*function)(), void* const* arguments);

    Result operator()(std::vector<Argument>& arguments) const {
        std::vector<void*> addresses;
        for (Argument& a : arguments)
            addresses.push_back(a.address());
        return invoke(function, addresses.data());
    }
};

// With its result, or 0 for one that is no Result.
template <class Result, class R, class... P>
Function<Result> function_of(R (*function)(P...)) {
    constexpr bool hasInfo = std::is_same_v<int*, typename decltype((std::type_identity<P>(), ...))::type>;
    const auto invoke = [](void (*f)(), void* const* arguments) {
        return [&]<std::size_t... I>(std::index_sequence<I...>) {
            const auto call = [&] { return reinterpret_cast<R (*)(P...)>(f)(static_cast<P>(arguments[I])...); };
            if constexpr (std::is_same_v<R, Result>)
                return call();
            else
                return static_cast<void>(call()), Result{};
        }
        (std::index_sequence_for<P...>());
    };
    return {{kind_of<P>()...}, hasInfo, !std::is_void_v<R>, reinterpret_cast<void (*)()>(function), invoke};
}

inline std::vector<Argument> arguments_of(const std::vector<Kind>& kinds, const std::string& call) {
    auto words = words_of(call);
    EXPECT_EQ(words.size(), kinds.size()) << call;
    words.resize(kinds.size() + 1, ".");
    std::vector<Argument> arguments;
    for (std::size_t i = 0; i < kinds.size(); ++i)
        arguments.emplace_back(kinds[i], words[i], words[i + 1]);
    return arguments;
}

struct Outcome {
    int result;          // info, or what a BLAS entry returns
    std::string printed; // on standard output
    bool touched;        // any array
};

// A routine of LAPACK, with info as its last argument or without one, or of BLAS with a result.
struct Routine {
    Function<int> entry;
    Function<std::set<int>> checked; // the positions that its row checks

    std::vector<Argument> arguments(const std::string& call) const {
        return arguments_of(entry.kinds, entry.hasInfo ? call + " -99" : call);
    }
    Outcome run(const std::string& call) const {
        auto given = arguments(call);
        testing::internal::CaptureStdout();
        const int result = entry(given);
        Outcome outcome{result, testing::internal::GetCapturedStdout(), false};
        if (entry.hasInfo)
            outcome.result = given.back().value();
        else if (!entry.hasResult)
            outcome.result = outcome.printed != "";
        outcome.touched = std::any_of(given.begin(), given.end(), [](const Argument& a) { return a.touched(); });
        return outcome;
    }
    std::set<int> positions(const std::string& call) const {
        auto given = arguments(call);
        return checked(given);
    }
};
using Routines = std::map<std::string, Routine>;

template <class Entry, class Positions>
bool enroll(Routines& routines, const char* name, Entry* entry, Positions* positions) {
    return routines.insert({name, {function_of<int>(entry), function_of<std::set<int>>(positions)}}).second;
}

// The positions of a row's checks: used as positions_of(checks...).
template <class... Steps>
std::set<int> positions_of(const Steps&... steps) {
    std::set<int> positions{steps.position...};
    positions.erase(0); // steps that are no checks
    return positions;
}

// ---- What is checked ----------------------------------------------------------------------------------------------

inline std::string changed(const std::string& line, const std::string& changes) {
    auto words = words_of(line);
    for (const std::string& change : words_of(changes))
        words[static_cast<std::size_t>(std::stoi(change) - 1)] = change.substr(change.find('=') + 1);
    std::string result;
    for (const std::string& word : words)
        result += word + ' ';
    return result;
}

inline void expect_reported(const std::string& name, const Routine& routine, const std::string& call, int position) {
    std::string reported = name.substr(0, name.find(':'));
    reported.resize(std::max<std::size_t>(reported.size(), 6), ' ');
    const Outcome outcome = routine.run(call);
    EXPECT_EQ(outcome.printed,
              "\nQRV ERROR: Parameter " + std::to_string(position) + " was incorrect on entry to " + reported + "\n")
        << call;
    EXPECT_EQ(outcome.result, outcome.result < 0 ? -position : 1) << name << ' ' << call;
    EXPECT_FALSE(outcome.touched) << name << ' ' << call;
}

// A routine is reported by its name up to a colon.
inline void expect_bad_arguments_reported(const std::string& table, const Routines& routines) {
    std::map<std::string, std::set<int>> told, checked;
    for (const ArgumentRow& row : argument_rows(table))
        for (const std::string& name : row.names) {
            const auto found = routines.find(name);
            ASSERT_NE(found, routines.end()) << name << " has no row in src/routines";
            const Routine& routine = found->second;
            for (const std::string& good : row.good) {
                const Outcome outcome = routine.run(good);
                EXPECT_EQ(outcome.printed, "") << name << ' ' << good;
                EXPECT_GE(outcome.result, 0) << name << ' ' << good;
            }
            const std::string& good = row.good.at(0);
            const auto& singles = row.singles;
            for (auto first = singles.begin(); first != singles.end(); ++first) {
                const int position = std::stoi(*first);
                expect_reported(name, routine, changed(good, *first), position);
                for (auto second = first + 1; second != singles.end(); ++second)
                    if (std::stoi(*second) != position)
                        expect_reported(name, routine, changed(good, *first + ' ' + *second), position);
                told[name].insert(position);
            }
            for (const auto& fault : row.faults) {
                expect_reported(name, routine, changed(good, fault.changes), fault.reported);
                told[name].insert(fault.reported);
            }
            checked[name] = routine.positions(good);
        }
    for (const auto& [name, routine] : routines)
        EXPECT_EQ(told[name], checked[name]) << name << ": positions told here, and in its row";
    EXPECT_EQ(told.size(), routines.size()) << "some rows have no bad arguments told";
}

} // namespace qrv::test
