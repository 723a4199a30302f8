// Checks of provider methods, driven by their signatures: a method must do what its native routine does with the same
// arguments in the native calling form, arrays at their offsets and options as texts.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace qrv::test {

using Corvex::Mathematics::SingleComplex;
using namespace Corvex::Mathematics::LinearAlgebra;
using namespace Corvex::Mathematics::LinearAlgebra::Providers;

template <class Action>
std::string printed(const Action& action) {
    testing::internal::CaptureStdout();
    action();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

template <class P>
concept Array = requires(P array) {
    array.Address();
};
template <Array P>
using ElementOf = std::remove_pointer_t<decltype(std::declval<P>().Address())>;

// The letters that native code must see for the values of an option, for the routine of that name; values beyond the
// host's enumerators are tried too.
template <class Option>
const char* letters_of(const std::string& routine) {
    if constexpr (std::is_same_v<Option, TransposeOperation>) {
        const bool complex = routine[0] == 'C' || (routine.ends_with("TRS") && routine[1] != 'P');
        return complex ? "NTC" : "NTTN";
    } else if constexpr (std::is_same_v<Option, MatrixTriangleMode>) {
        return routine.ends_with("LACPY") ? "ULBB" : "ULLL";
    } else {
        constexpr bool diagonal = std::is_same_v<Option, MatrixDiagonalMode>;
        return diagonal ? "NUUU" : std::is_same_v<Option, MatrixOperationSide> ? "LRRR" : "FOIM";
    }
}

// One parameter of a method, with the words that stand at its address. Host and native routine find it at the same one.
struct Parameter {
    enum Kind { array, offset, integer, scalar, reference, option, letter, info } kind{};
    std::vector<int> words{};
    std::size_t elementWords = 0;              // of an array
    const char* letters = nullptr;             // of an option
    enum { given, null, empty } state = given; // of an array
    bool operator==(const Parameter&) const = default;
};

// One method, with arguments to call it and its native routine.
class MethodCheck {
public:
    template <class Interface, class R, class... P>
    MethodCheck(const char* routine, Interface* object, R (Interface::*method)(P...))
        : name_(routine), hasResult_(!std::is_void_v<R>), hasComplexResult_(std::is_same_v<R, SingleComplex>) {
        (state_.parameters.push_back(parameter<P>()), ...);
        for (auto p = state_.parameters.begin(); p + 1 < state_.parameters.end(); ++p)
            if (p->kind == Parameter::info) // which is the last one
                p->kind = Parameter::reference;
        host_ = [=, this] {
            [&]<std::size_t... I>(std::index_sequence<I...>) {
                const auto call = [&] { return (object->*method)(host_argument<P>(state_.parameters[I])...); };
                if constexpr (std::is_void_v<R>)
                    call();
                else
                    store(call());
            }
            (std::index_sequence_for<P...>());
        };
    }
    MethodCheck(const MethodCheck&) = delete;

    // What the method brings itself are work arrays and their lengths, in front of info if there is one: here each is
    // larger than it need be.
    template <class R, class... N>
    void call_native(R (*native)(N...)) {
        std::vector<void*> arguments;
        if (hasComplexResult_)
            arguments.push_back(&state_.result);
        for (std::size_t i = 0; i < state_.parameters.size(); ++i) {
            Parameter& p = state_.parameters[i];
            if (p.kind == Parameter::option)
                arguments.push_back(const_cast<char*>(p.letters) + p.words[0]);
            else if (p.kind != Parameter::offset)
                arguments.push_back(p.words.data() + static_cast<std::size_t>(offset_of(i)) * p.elementWords);
        }
        const bool hasInfo = state_.parameters.back().kind == Parameter::info;
        ASSERT_LE(arguments.size(), sizeof...(N));
        arguments.insert(arguments.end() - hasInfo, sizeof...(N) - arguments.size(), nullptr);
        constexpr std::size_t space = 4000;
        constexpr bool isSize[] = {std::is_same_v<N, const int*>...};
        int length = 400;
        std::vector<float> brought(space * sizeof...(N));
        for (std::size_t i = 0; i < sizeof...(N); ++i)
            if (!arguments[i])
                arguments[i] = isSize[i] ? static_cast<void*>(&length) : &brought[space * i];
        [&]<std::size_t... I>(std::index_sequence<I...>) {
            if constexpr (std::is_void_v<R>)
                native(static_cast<N>(arguments[I])...);
            else if (const R result = native(static_cast<N>(arguments[I])...); hasResult_)
                store(result);
        }
        (std::index_sequence_for<N...>());
    }

    // Every option takes the values 0 to 3 and every letter five, neighbours different ones; the native routine may
    // reject what they stand for, in the same words.
    void agrees_with(const std::function<void()>& native) {
        const State before = state_;
        bool computed = false;
        for (int turn = 0; turn < 20; ++turn) {
            SCOPED_TRACE(turn);
            int option = turn;
            for (Parameter& p : state_.parameters)
                if (p.kind == Parameter::option || p.kind == Parameter::letter) {
                    p.words[0] = p.kind == Parameter::option ? option % 4 : "NVIAS"[option % 5];
                    option = option / 4 + turn;
                }
            const State given = state_;
            std::string failed;
            const std::string byHost = printed([&] { failed = failure(); });
            State afterHost = std::exchange(state_, given);
            EXPECT_EQ(byHost, printed(native));
            // Asked for the length of its work array, it rejects an option before it tells one: an array of nothing.
            const bool asks = name_ == "CUNMQR" || name_ == "SGEEV" || name_.ends_with("GESDD");
            EXPECT_EQ(failed, asks && !byHost.empty() ? "empty" : "");
            if (!failed.empty()) {
                EXPECT_TRUE(afterHost == given);
                state_ = before;
                continue;
            }
            if (!byHost.empty())
                for (std::size_t i = 0; i < state_.parameters.size(); ++i)
                    if (given.parameters[i].kind == Parameter::reference) { // a result that there is not
                        EXPECT_EQ(afterHost.parameters[i].words[0], 0);
                        afterHost.parameters[i] = state_.parameters[i];
                    }
            EXPECT_TRUE(afterHost == state_);
            computed = computed || !(state_ == given);
            if (state_.parameters.back().kind == Parameter::info)
                state_.parameters.back() = given.parameters.back();
            EXPECT_TRUE(byHost.empty() || state_ == given);
            state_ = before;
        }
        EXPECT_TRUE(computed) << "nothing was computed";
    }

    // Arrays with an offset are asked for first, then those without, whatever there is to do: each fails by itself, and
    // of two that would fail in different ways the first decides.
    void asks_for_arrays_in_order() {
        auto& parameters = state_.parameters;
        std::vector<Parameter*> order;
        for (const bool withOffset : {true, false})
            for (std::size_t i = 0; i < parameters.size(); ++i)
                if (parameters[i].kind == Parameter::array && (offset_of(i) > 0) == withOffset)
                    order.push_back(&parameters[i]);
        if (name_ == "SSYEVR") { // it brings its last one itself
            order.back()->state = Parameter::null;
            order.pop_back();
        }
        const State kept = state_;
        for (std::size_t i = 0; i < order.size(); ++i)
            for (const bool nothingToDo : {false, true})
                for (const bool null : {false, true}) {
                    order[i]->state = null ? Parameter::null : Parameter::empty;
                    if (i + 1 < order.size())
                        order[i + 1]->state = null ? Parameter::empty : Parameter::null;
                    for (Parameter& p : parameters)
                        if (nothingToDo && p.kind == Parameter::integer)
                            p.words[0] = 0;
                    const State before = state_;
                    const bool quickReturn = nothingToDo && (name_ == "SGEQP3" || name_ == "CGESDD");
                    const char* const expected = quickReturn ? "" : null ? "null" : "empty";
                    EXPECT_EQ(failure(), expected)
                        << "array " << i + 1 << " in the order of asking, nothing to do: " << nothingToDo;
                    EXPECT_TRUE(state_ == before);
                    state_ = kept;
                }
    }

private:
    // What calls may write, and what they are given.
    struct State {
        std::vector<Parameter> parameters;
        std::array<int, 2> result{};
        bool operator==(const State&) const = default;
    };

    // The next parameter, of type P. Ints are sizes, in front of all arrays; behind an array an offset, and then its
    // leading dimension or increment, no two of them the same. An array of ints gets row numbers, from 1, that are
    // pivots of a matrix of three rows and more.
    template <class P>
    Parameter parameter() {
        const auto any = [&] { return std::bit_cast<int>(static_cast<float>(random_() % (1 << 24)) / (1 << 23) - 1); };
        if constexpr (Array<P>) {
            using Element = std::remove_const_t<ElementOf<P>>;
            ++arrays_;
            Parameter array{Parameter::array, std::vector<int>(1200), sizeof(Element) / sizeof(int)};
            for (int k = 1; int& word : array.words)
                word = std::is_same_v<Element, int> ? std::max(3, k++) : any();
            return array;
        } else if constexpr (std::is_same_v<P, int>) {
            constexpr int sizes[] = {9, 7, 2, 1};
            const bool mayHaveOffset = arrays_ == 1 || !(name_.ends_with("GESDD") || name_ == "SGEEV");
            if (arrays_ == 0)
                return {Parameter::integer, {sizes[sizes_++]}};
            if (state_.parameters.back().kind == Parameter::array && mayHaveOffset)
                return {Parameter::offset, {2 * arrays_ + 1}};
            return {Parameter::integer, {20 + static_cast<int>(state_.parameters.size())}};
        } else if constexpr (std::is_enum_v<P>) {
            return {Parameter::option, {0}, 0, letters_of<P>(name_)};
        } else if constexpr (std::is_same_v<P, char16_t>) {
            return {Parameter::letter, {'N'}};
        } else if constexpr (std::is_same_v<P, int&>) {
            return {Parameter::info, {777}};
        } else {
            return {std::is_same_v<P, float&> ? Parameter::reference : Parameter::scalar, {any(), any()}};
        }
    }

    // In elements; 0 of an array without one.
    int offset_of(std::size_t array) const {
        const auto& rows = state_.parameters;
        return array + 1 < rows.size() && rows[array + 1].kind == Parameter::offset ? rows[array + 1].words[0] : 0;
    }

    std::string failure() {
        try {
            host_();
        } catch (const NullReferenceError&) {
            return "null";
        } catch (const IndexOutOfRangeError&) {
            return "empty";
        }
        return "";
    }

    template <class P>
    static P host_argument(Parameter& p) {
        auto* const floats = reinterpret_cast<float*>(p.words.data());
        if constexpr (Array<P>) {
            auto* data = reinterpret_cast<ElementOf<P>*>(p.words.data());
            const std::size_t count = p.state == Parameter::empty ? 0 : p.words.size() / p.elementWords;
            return p.state == Parameter::null ? P() : P(data, count);
        } else if constexpr (std::is_same_v<P, int> || std::is_enum_v<P>) {
            return P{p.words[0]};
        } else if constexpr (std::is_same_v<P, char16_t>) {
            return static_cast<char16_t>(p.words[0] | 0x4E00); // native code looks at the low byte
        } else if constexpr (std::is_same_v<P, SingleComplex>) {
            return {floats[0], floats[1]};
        } else if constexpr (std::is_same_v<P, int&>) {
            return p.words[0];
        } else {
            return *floats; // by value or as a reference
        }
    }

    template <class Result>
    void store(Result result) {
        std::memcpy(&state_.result, &result, sizeof result);
    }

    const std::string name_; // as reports show it
    const bool hasResult_, hasComplexResult_;
    std::minstd_rand random_;
    int arrays_ = 0, sizes_ = 0; // parameters so far
    State state_;
    std::function<void()> host_;
};

// Checks methods of one class, each told with the routine's name and its native form. They are all there are, in the
// order of the virtual table.
template <class Interface, class... Rows>
void check_methods(Interface* object, const Rows&... rows) {
    std::size_t last = 0;
    const auto check = [&](const char* routine, auto method, auto native) {
        SCOPED_TRACE(routine);
        std::uintptr_t word = 0; // a pointer to a virtual member begins with 1 plus its offset in the table
        std::memcpy(&word, &method, sizeof word);
        const std::size_t slot = word / sizeof word;
        EXPECT_TRUE(last == 0 || slot == last + 1) << "not where the virtual table has it";
        last = slot;
        MethodCheck one(routine, object, method);
        one.asks_for_arrays_in_order();
        one.agrees_with([&] { one.call_native(native); });
    };
    (std::apply(check, rows), ...);
}
#define METHOD(ROUTINE, method) std::make_tuple(#ROUTINE, &Class::method, ROUTINE)

} // namespace qrv::test
