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
#include <limits>
#include <string>
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

// The text of an option as native code must see it, for the routine of that name; values beyond the host's enumerators
// are tried too.
inline const char* option_text(TransposeOperation op, const std::string& routine) {
    constexpr const char *realRule[] = {"N", "T", "T", "N"}, *complexRule[] = {"N", "T", "C", ""};
    const bool complex =
        routine[0] == 'C' || routine == "SGETRS" || routine == "STRTRS" || routine == "SGBTRS" || routine == "STBTRS";
    return (complex ? complexRule : realRule)[static_cast<int>(op)];
}
inline const char* option_text(MatrixTriangleMode mode, const std::string& routine) {
    const int value = static_cast<int>(mode);
    return value == 0 ? "U" : value == 1 || routine.substr(1) != "LACPY" ? "L" : "B";
}
template <class Option>
const char* option_text(Option option, const std::string&) {
    constexpr bool diagonal = std::is_same_v<Option, MatrixDiagonalMode>,
                   side = std::is_same_v<Option, MatrixOperationSide>;
    constexpr const char *norms[] = {"F", "O", "I", "M"}, *diagonals[] = {"N", "U", "U", "U"},
                         *sides[] = {"L", "R", "R", "R"};
    return (diagonal ? diagonals : side ? sides : norms)[static_cast<int>(option)];
}

// One parameter of a method, with what stands at its address. Host and native routine find it at the same one.
struct Parameter {
    enum Kind { array, offset, integer, scalar, reference, option, letter, info } kind{};
    std::size_t elementFloats = 0; // of an array
    int value = 0;                 // of an offset, an integer, an option or a letter; what info holds
    std::vector<float> floats{};   // of an array, a scalar or a reference
    const char* (*text)(int, const std::string&) = nullptr;
    enum { given, null, empty } state = given; // of an array
    bool operator==(const Parameter&) const = default;
};

template <class P>
struct ElementOf {
    using Type = void;
};
template <class T>
struct ElementOf<ProviderArray<T>> {
    using Type = T;
};
template <class P>
inline constexpr bool isArray = !std::is_void_v<typename ElementOf<P>::Type>;

inline constexpr int at = std::numeric_limits<int>::min(); // stands for an offset in the ints of a method

// The row of a parameter of type P, the next int argument being the first of `ints`.
template <class P>
Parameter row_of(std::vector<int>& ints) {
    if constexpr (isArray<P>) {
        return {Parameter::array, sizeof(typename ElementOf<P>::Type) / sizeof(float), 0, std::vector<float>(1200)};
    } else if constexpr (std::is_same_v<P, int>) {
        const int value = ints.at(0);
        ints.erase(ints.begin());
        if (value == at)
            return {Parameter::offset};
        return {Parameter::integer, 0, value};
    } else if constexpr (std::is_enum_v<P>) {
        return {Parameter::option, 0, 0, {}, [](int v, const std::string& name) { return option_text(P{v}, name); }};
    } else if constexpr (std::is_same_v<P, char16_t>) {
        return {Parameter::letter, 0, 'N'};
    } else if constexpr (std::is_same_v<P, int&>) {
        return {Parameter::info, 0, 777};
    } else {
        return {std::is_same_v<P, float&> ? Parameter::reference : Parameter::scalar, 0, 0, std::vector<float>(2)};
    }
}

// One method and its native routine, with arguments to call both.
class MethodCheck {
public:
    // `native` may be null, for a routine that is still to come. `ints` are the method's int arguments, `at` for
    // offsets; `work` the positions of native arguments that the method brings itself.
    template <class Interface, class R, class... P, class NativeR, class... N>
    MethodCheck(const char* routine, Interface* object, R (Interface::*method)(P...), NativeR (*native)(N...),
                std::vector<int> ints, std::vector<int> work)
        : name_(routine), work_(std::move(work)) {
        auto& rows = state_.parameters;
        (rows.push_back(row_of<P>(ints)), ...);
        EXPECT_TRUE(ints.empty()) << name_;
        std::uint32_t random = 12345;
        int offset = 1;
        for (Parameter& row : rows) {
            if (row.kind == Parameter::offset) // different ones
                row.value = offset += 2;
            for (float& x : row.floats) {
                random = random * 1664525 + 1013904223;
                x = static_cast<float>(random >> 8) / (1 << 23) - 1;
            }
        }
        std::size_t next = 0;
        (fill_with_pivots<P>(rows[next++]), ...);
        returnsComplex_ = std::is_same_v<R, SingleComplex>;
        host_ = [=, this] { call_host(object, method, std::index_sequence_for<P...>()); };
        native_ = [=, this](const std::vector<const void*>& arguments) {
            return call_native<R>(native, arguments, std::index_sequence_for<N...>());
        };
    }
    MethodCheck(const MethodCheck&) = delete;

    // Every option takes the values 0 to 3 and every letter four, neighbours different ones; the native routine may
    // reject what they stand for, in the same words.
    void agrees_with_native() {
        const State before = state_;
        bool computed = false;
        for (int turn = 0; turn < 16; ++turn) {
            int option = turn;
            for (Parameter& row : state_.parameters)
                if (row.kind == Parameter::option || row.kind == Parameter::letter) {
                    row.value = row.kind == Parameter::option ? option % 4 : "NVAS"[option % 4];
                    option = option / 4 + turn;
                }
            const State given = state_;
            std::string failed;
            const std::string byHost = printed([&] { failed = failure(); });
            State afterHost = state_;
            state_ = given;
            const std::string byNative = printed([&] { native_(native_arguments()); });
            EXPECT_EQ(byHost, byNative) << "turn " << turn;
            // Asked for the length of its work array, it rejects an option before it tells one: an array of nothing.
            const bool asks = name_ == "CUNMQR" || name_ == "SGEEV" || name_.ends_with("GESDD");
            EXPECT_EQ(failed, asks && !byNative.empty() ? "empty" : "") << "turn " << turn;
            if (!failed.empty()) {
                EXPECT_TRUE(afterHost == given) << "turn " << turn;
                state_ = before;
                continue;
            }
            if (!byHost.empty())
                for (std::size_t i = 0; i < state_.parameters.size(); ++i)
                    if (given.parameters[i].kind == Parameter::reference) { // a result that there is not
                        EXPECT_EQ(afterHost.parameters[i].floats[0], 0) << "turn " << turn;
                        afterHost.parameters[i] = state_.parameters[i];
                    }
            EXPECT_TRUE(afterHost == state_) << "turn " << turn;
            computed = computed || !(state_ == given);
            EXPECT_TRUE(byHost.empty() || state_.same_but_for_info(given)) << "turn " << turn;
            state_ = before;
        }
        EXPECT_TRUE(computed) << "nothing was computed";
    }

    // Arrays with an offset are asked for first, then those without, whatever there is to do: each fails by itself, and
    // of two that would fail in different ways the first decides.
    void asks_for_arrays_in_order() {
        auto& rows = state_.parameters;
        std::vector<Parameter*> order;
        for (const bool withOffset : {true, false})
            for (std::size_t i = 0; i < rows.size(); ++i)
                if (rows[i].kind == Parameter::array && has_offset(i) == withOffset)
                    order.push_back(&rows[i]);
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
                    for (Parameter& row : rows)
                        row.value = nothingToDo && row.kind == Parameter::integer ? 0 : row.value;
                    const State before = state_;
                    const bool quickReturn = nothingToDo && (name_ == "SGEQP3" || name_ == "CGESDD");
                    EXPECT_EQ(failure(), quickReturn ? ""
                                         : null      ? "null"
                                                     : "empty")
                        << "array " << i + 1 << " in the order of asking, nothing to do: " << nothingToDo;
                    EXPECT_TRUE(state_ == before);
                    state_ = kept;
                }
    }

private:
    // What calls may write, and what they are given.
    struct State {
        std::vector<Parameter> parameters;
        std::array<float, 2> result{};
        bool operator==(const State&) const = default; // no NaN arises in what is computed here
        bool same_but_for_info(State other) const {
            if (other.parameters.back().kind == Parameter::info)
                other.parameters.back().value = parameters.back().value;
            return *this == other;
        }
    };

    bool has_offset(std::size_t i) const {
        return i + 1 < state_.parameters.size() && state_.parameters[i + 1].kind == Parameter::offset;
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

    // An array of ints gets row numbers, from 1, that are pivots of a matrix of three rows and more.
    template <class P>
    static void fill_with_pivots(Parameter& row) {
        if constexpr (std::is_same_v<std::remove_const_t<typename ElementOf<P>::Type>, int>)
            for (int k = 1; float& x : row.floats)
                x = std::bit_cast<float>(std::max(3, k++));
    }

    template <class P>
    static P host_argument(Parameter& row) {
        if constexpr (isArray<P>) {
            auto* data = reinterpret_cast<typename ElementOf<P>::Type*>(row.floats.data());
            const std::size_t count = row.state == Parameter::empty ? 0 : row.floats.size() / row.elementFloats;
            return row.state == Parameter::null ? P() : P(data, count);
        } else if constexpr (std::is_same_v<P, int> || std::is_enum_v<P>) {
            return P{row.value};
        } else if constexpr (std::is_same_v<P, char16_t>) {
            return static_cast<char16_t>(row.value | 0x4E00); // native code looks at the low byte
        } else if constexpr (std::is_same_v<P, SingleComplex>) {
            return {row.floats[0], row.floats[1]};
        } else if constexpr (std::is_same_v<P, int&>) {
            return row.value;
        } else {
            return row.floats[0]; // by value or as a reference
        }
    }

    template <class Interface, class R, class... P, std::size_t... I>
    void call_host(Interface* object, R (Interface::*method)(P...), std::index_sequence<I...>) {
        if constexpr (std::is_void_v<R>)
            (object->*method)(host_argument<P>(state_.parameters[I])...);
        else
            store((object->*method)(host_argument<P>(state_.parameters[I])...));
    }
    void store(float result) { state_.result = {result, 0}; }
    void store(int result) { state_.result = {static_cast<float>(result), 0}; }
    void store(SingleComplex result) { state_.result = {result.Re(), result.Im()}; }

    // The arguments in the native calling form; null where the method brings a work array.
    std::vector<const void*> native_arguments() const {
        std::vector<const void*> list;
        for (std::size_t i = 0; i < state_.parameters.size(); ++i) {
            const Parameter& row = state_.parameters[i];
            const std::size_t offset = has_offset(i) ? static_cast<std::size_t>(state_.parameters[i + 1].value) : 0;
            if (row.kind == Parameter::array)
                list.push_back(row.floats.data() + offset * row.elementFloats);
            else if (row.kind == Parameter::option)
                list.push_back(row.text(row.value, name_));
            else if (!row.floats.empty())
                list.push_back(row.floats.data());
            else if (row.kind != Parameter::offset)
                list.push_back(&row.value);
        }
        if (returnsComplex_)
            list.insert(list.begin(), state_.result.data());
        for (const int position : work_)
            list.insert(list.begin() + position - 1, nullptr);
        return list;
    }

    // Result: that of a guarded entry, else 0.
    template <class R, class NativeR, class... N, std::size_t... I>
    int call_native(NativeR (*native)(N...), const std::vector<const void*>& arguments, std::index_sequence<I...>) {
        EXPECT_EQ(arguments.size(), sizeof...(N)) << name_;
        std::vector<float> work(4000 * sizeof...(N)); // each array larger than it need be
        const int length = 400;
        const auto address = [&](std::size_t i, bool isSize) {
            return arguments.at(i) ? arguments[i] : isSize ? static_cast<const void*>(&length) : &work[4000 * i];
        };
        const auto call = [&] {
            return native(static_cast<N>(const_cast<void*>(address(I, std::is_same_v<N, const int*>)))...);
        };
        if constexpr (std::is_void_v<NativeR>)
            call();
        else if constexpr (std::is_void_v<R>)
            return call();
        else
            store(call());
        return 0;
    }

    const std::string name_; // as reports show it
    const std::vector<int> work_;
    State state_;
    bool returnsComplex_ = false;
    std::function<void()> host_;
    std::function<int(const std::vector<const void*>&)> native_;
};

// The methods of one class, in the order of its virtual table.
template <class Interface>
class MethodTable {
public:
    explicit MethodTable(Interface* object) : object_(object) {}

    template <class Method, class Native>
    void check(const char* routine, Method method, Native* native, std::vector<int> ints, std::vector<int> work = {}) {
        SCOPED_TRACE(routine);
        stands_in_order(method);
        MethodCheck check(routine, object_, method, native, std::move(ints), std::move(work));
        check.asks_for_arrays_in_order();
        check.agrees_with_native();
    }

    // A method that does not hand on all that it is given.
    template <class Method>
    void check_arrays(const char* routine, Method method, std::vector<int> ints) {
        SCOPED_TRACE(routine);
        stands_in_order(method);
        MethodCheck(routine, object_, method, static_cast<void (*)()>(nullptr), std::move(ints), {})
            .asks_for_arrays_in_order();
    }

private:
    // A pointer to a virtual member begins with 1 plus its offset in the table.
    template <class Method>
    void stands_in_order(Method method) {
        std::uintptr_t word = 0;
        std::memcpy(&word, &method, sizeof word);
        const std::size_t slot = word / sizeof word;
        EXPECT_TRUE(last_ == 0 || slot == last_ + 1) << "not where the virtual table has it";
        last_ = slot;
    }

    Interface* object_;
    std::size_t last_ = 0;
};

} // namespace qrv::test
