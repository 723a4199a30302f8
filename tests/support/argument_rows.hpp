// Bad arguments of all routines with a row (src/routines), through their entries: a table tells calls that are good and
// what breaks them, written from the published lists and not from the checks of the rows.
//
// A call is its arguments as words: a letter for an option ('~' an empty one), a number for an int or a real scalar,
// '.' for an array of ones, 'v' for one whose elements go down, 'w' for a work array whose first element may be stored
// although an argument is bad. 'm' is a matrix that is large on its diagonal, with the leading dimension that follows,
// and 'b' with a number one in band storage, with the diagonal in that row. info is left out.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qrv/native.h"

namespace qrv::test {

struct Fault {
    const char* changes; // of the first good call: "position=word ..."
    int reported;
};

struct ArgumentRow {
    const char* names;
    std::vector<const char*> good; // calls that pass, at the limits
    const char* singles;           // changes of the first of them: each alone is reported at its position, and of two
                                   // the one that is told first
    std::vector<Fault> faults;     // what more than one argument decides, or is reported at another position
};

inline std::vector<std::string> words_of(const std::string& text) {
    std::istringstream in(text);
    return {std::istream_iterator<std::string>(in), {}};
}

// ---- A call -------------------------------------------------------------------------------------------------------

// One argument: what its word stands for, in memory of its own.
class Argument {
public:
    explicit Argument(const std::string& word, const std::string& next = "") : word_(word), next_(next) {}

    template <class T>
    T* address(T*) {
        using Element = std::remove_const_t<T>;
        if constexpr (std::is_same_v<Element, char>) {
            return word_ == "~" ? "" : word_.c_str();
        } else if (is_array()) {
            fill<Element>();
            return reinterpret_cast<T*>(memory_.data());
        } else {
            const double value = std::stod(word_);
            memory_.resize(sizeof(Element));
            if constexpr (std::is_same_v<Element, qrv_complex>)
                new (memory_.data()) Element{static_cast<float>(value), 0};
            else
                new (memory_.data()) Element(static_cast<Element>(value));
            return reinterpret_cast<T*>(memory_.data());
        }
    }
    bool touched() const {
        const std::size_t first = word_ == "w" ? sizeof(qrv_complex) : 0;
        return is_array() && std::memcmp(memory_.data() + first, before_.data() + first, before_.size() - first) != 0;
    }
    int value() const {
        int x;
        std::memcpy(&x, memory_.data(), sizeof x);
        return x;
    }

private:
    bool is_matrix() const { return word_[0] == 'm' || (word_[0] == 'b' && word_.size() > 1); }
    bool is_array() const { return word_ == "." || word_ == "v" || word_ == "w" || is_matrix(); }

    // Ones: matrices, vectors and pivots that any routine can work on.
    template <class Element>
    void fill() {
        constexpr bool isReal = !std::is_same_v<Element, qrv_complex>;
        const auto whole = [](float x) {
            if constexpr (isReal)
                return static_cast<Element>(x);
            else
                return Element{x, 0};
        };
        const long next = std::strtol(next_.c_str(), nullptr, 10); // a leading dimension, or the length of a work array
        std::vector<Element> elements(std::max<std::size_t>(512, word_ == "w" ? std::max(next, 0L) : 0), whole(1));
        if constexpr (isReal)
            if (word_ == "v")
                std::iota(elements.rbegin(), elements.rend(), Element(1));
        if (is_matrix()) {
            const auto ld = static_cast<std::size_t>(std::abs(next));
            std::minstd_rand random;
            const auto any = [&] { return static_cast<float>(random() % 255) / 127 - 1; };
            elements.resize(2 * ld * ld + 512);
            for (std::size_t k = 0; k < elements.size(); ++k)
                if (k % ld == (word_[0] == 'm' ? k / ld : std::stoul(word_.substr(1))))
                    elements[k] = whole(static_cast<float>(3 * ld));
                else if constexpr (isReal)
                    elements[k] = static_cast<Element>(any());
                else
                    elements[k] = {any(), any()};
        }
        memory_.resize(elements.size() * sizeof(Element));
        std::memcpy(memory_.data(), elements.data(), memory_.size());
        before_ = memory_;
    }

    std::string word_, next_;
    std::vector<unsigned char> memory_, before_;
};

struct Outcome {
    int result;          // info, or what a BLAS entry returns
    std::string printed; // on standard output
    bool touched;        // any array
};

struct Routine {
    std::function<Outcome(const std::string& call)> run;
    std::function<std::set<int>(const std::string& call)> positions; // that the row checks
};
using Routines = std::map<std::string, Routine>;

template <class... P>
std::vector<Argument> arguments_of(const std::string& call) {
    auto words = words_of(call);
    EXPECT_EQ(words.size(), sizeof...(P)) << call;
    words.resize(sizeof...(P) + 1, ".");
    std::vector<Argument> arguments;
    for (std::size_t i = 0; i < sizeof...(P); ++i)
        arguments.emplace_back(words[i], words[i + 1]);
    return arguments;
}

template <class Result, class... P>
Result apply(Result (*function)(P...), std::vector<Argument>& arguments) {
    return [&]<std::size_t... I>(std::index_sequence<I...>) {
        return function(arguments[I].address(P())...);
    }
    (std::index_sequence_for<P...>());
}

// Enters a routine: of LAPACK, with info as its last argument or without one, or of BLAS with a result.
template <class Result, class... P>
bool enroll(Routines& routines, const char* name, Result (*entry)(P...), std::set<int> (*positions)(P...)) {
    constexpr bool hasInfo = std::is_same_v<int*, typename decltype((std::type_identity<P>(), ...))::type>;
    const auto complete = [](const std::string& call) { return hasInfo ? call + " -99" : call; };
    const auto run = [=](const std::string& call) {
        auto arguments = arguments_of<P...>(complete(call));
        testing::internal::CaptureStdout();
        Outcome outcome{};
        if constexpr (hasInfo) {
            apply(entry, arguments);
            outcome.result = arguments.back().value();
        } else if constexpr (!std::is_void_v<Result>) {
            outcome.result = apply(entry, arguments);
        } else {
            apply(entry, arguments);
        }
        outcome.printed = testing::internal::GetCapturedStdout();
        if (!hasInfo && std::is_void_v<Result>)
            outcome.result = outcome.printed != "";
        outcome.touched =
            std::any_of(arguments.begin(), arguments.end(), [](const Argument& a) { return a.touched(); });
        return outcome;
    };
    const auto checked = [=](const std::string& call) {
        auto arguments = arguments_of<P...>(complete(call));
        return apply(positions, arguments);
    };
    return routines.insert({name, {run, checked}}).second;
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
template <class Rows>
void expect_bad_arguments_reported(const Rows& rows, const Routines& routines) {
    std::map<std::string, std::set<int>> told, checked;
    for (const ArgumentRow& row : rows)
        for (const std::string& name : words_of(row.names)) {
            const auto found = routines.find(name);
            ASSERT_NE(found, routines.end()) << name << " has no row in src/routines";
            const Routine& routine = found->second;
            for (const char* good : row.good) {
                const Outcome outcome = routine.run(good);
                EXPECT_EQ(outcome.printed, "") << name << ' ' << good;
                EXPECT_GE(outcome.result, 0) << name << ' ' << good;
            }
            const std::string good = row.good[0];
            const auto singles = words_of(row.singles);
            for (auto first = singles.begin(); first != singles.end(); ++first) {
                const int position = std::stoi(*first);
                expect_reported(name, routine, changed(good, *first), position);
                for (auto second = first + 1; second != singles.end(); ++second)
                    if (std::stoi(*second) != position)
                        expect_reported(name, routine, changed(good, *first + ' ' + *second), position);
                told[name].insert(position);
            }
            for (const Fault& fault : row.faults) {
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
