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
inline const char* option_text(MatrixDiagonalMode mode, const std::string&) {
    return static_cast<int>(mode) == 0 ? "N" : "U";
}
inline const char* option_text(MatrixOperationSide value, const std::string&) {
    return static_cast<int>(value) == 0 ? "L" : "R";
}
inline const char* option_text(MatrixNorm norm, const std::string&) {
    constexpr const char* letters[] = {"F", "O", "I", "M"};
    return letters[static_cast<int>(norm)];
}

// One method and its native routine, with arguments to call both. What stands at a position of the parameter list is
// kept at that position, so both find their arrays at the same addresses.
class MethodCheck {
public:
    // `native` takes the arguments of the method without the offsets: it is the routine itself, or one that brings the
    // work arrays. `ints` are the method's int arguments without the offsets, which are chosen here. `positions` are
    // those that the native routine reports.
    template <class Interface, class R, class... P, class NativeR, class... N>
    MethodCheck(const char* routine, Interface* object, R (Interface::*method)(P...), NativeR (*native)(N...),
                std::vector<int> ints, std::vector<int> positions = {})
        : name_(routine), positions_(std::move(positions)) {
        describe<P...>(ints, std::index_sequence_for<P...>());
        host_ = [=, this] { call_host(object, method, std::index_sequence_for<P...>()); };
        native_ = [=, this](const std::vector<const void*>& arguments) {
            return call_native<R>(native, arguments, std::index_sequence_for<N...>());
        };
        if constexpr (std::is_same_v<R, SingleComplex>)
            EXPECT_EQ(sizeof...(N), arguments_.size() + 1) << name_;
        else
            EXPECT_EQ(sizeof...(N), arguments_.size()) << name_;
    }
    MethodCheck(const MethodCheck&) = delete;

    void run() {
        SCOPED_TRACE(name_);
        agrees_with_native();
        fails_on_bad_arrays();
        reports_bad_arguments();
    }

private:
    enum class Kind { array, offset, integer, scalar, reference, option, info };
    struct Parameter {
        Kind kind;
        std::size_t elementFloats = 0; // of an array
        int value = 0;                 // of an offset, an integer or an option
        enum { whole, null, empty } state = whole;
        std::function<const char*(int)> text{}; // of an option
        int valid = 0;                          // value of an option that the routine takes
    };
    // What calls may write.
    struct Values {
        std::array<std::array<float, 1200>, 18> arrays;
        std::array<std::array<float, 2>, 18> scalars;
        std::array<float, 2> result;
        int info = 777;
        bool operator==(const Values&) const = default; // no NaN arises in what is computed here
        bool same_but_for_info(const Values& other) const {
            Values copy = other;
            copy.info = info;
            return *this == copy;
        }
    };

    template <class P>
    struct Traits {
        static constexpr bool isArray = false;
    };
    template <class T>
    struct Traits<ProviderArray<T>> {
        static constexpr bool isArray = true;
        using Element = T;
    };

    template <class... P, std::size_t... I>
    void describe(const std::vector<int>& ints, std::index_sequence<I...>) {
        std::size_t next = 0;
        bool afterArray = false;
        const auto add = [&]<class T>(std::type_identity<T>, std::size_t position) {
            if constexpr (Traits<T>::isArray) {
                parameters_.push_back({Kind::array, sizeof(typename Traits<T>::Element) / sizeof(float)});
                arguments_.push_back(position);
            } else if constexpr (std::is_same_v<T, int>) {
                if (afterArray) {
                    parameters_.push_back({Kind::offset, 0, static_cast<int>(2 * position + 1)});
                } else {
                    parameters_.push_back({Kind::integer, 0, ints.at(next++)});
                    arguments_.push_back(position);
                }
            } else {
                if constexpr (std::is_enum_v<T>)
                    parameters_.push_back({Kind::option, 0, 0, Parameter::whole,
                                           [name = name_](int v) { return option_text(T{v}, name); },
                                           std::is_same_v<T, MatrixNorm> ? 1 : 0});
                else if constexpr (std::is_same_v<T, int&>)
                    parameters_.push_back({Kind::info});
                else
                    parameters_.push_back({std::is_same_v<T, float&> ? Kind::reference : Kind::scalar});
                arguments_.push_back(position);
            }
            afterArray = Traits<T>::isArray;
        };
        (add(std::type_identity<P>(), I), ...);
        EXPECT_EQ(next, ints.size()) << name_;
        std::uint32_t random = 12345;
        const auto uniform = [&] {
            random = random * 1664525 + 1013904223;
            return static_cast<float>(random >> 8) / (1 << 23) - 1;
        };
        for (auto& array : values_.arrays)
            for (float& x : array)
                x = uniform();
        for (auto& scalar : values_.scalars)
            scalar = {uniform(), uniform()};
        (fill_with_pivots<P>(I), ...);
        values_.result = {};
    }

    // An array of ints gets row numbers, from 1, that are pivots of a matrix of three rows and more.
    template <class P>
    void fill_with_pivots(std::size_t position) {
        if constexpr (Traits<P>::isArray)
            if constexpr (std::is_same_v<std::remove_const_t<typename Traits<P>::Element>, int>)
                for (int k = 1; float& x : values_.arrays[position])
                    x = std::bit_cast<float>(std::max(3, k++));
    }

    template <class P>
    P host_argument(std::size_t position) {
        const Parameter& parameter = parameters_[position];
        if constexpr (Traits<P>::isArray) {
            auto* data = reinterpret_cast<typename Traits<P>::Element*>(values_.arrays[position].data());
            const std::size_t count = values_.arrays[position].size() / parameter.elementFloats;
            return parameter.state == Parameter::null ? P() : P(data, parameter.state == Parameter::empty ? 0 : count);
        } else if constexpr (std::is_same_v<P, int> || std::is_enum_v<P>) {
            return P{parameter.value};
        } else if constexpr (std::is_same_v<P, SingleComplex>) {
            return {values_.scalars[position][0], values_.scalars[position][1]};
        } else if constexpr (std::is_same_v<P, int&>) {
            return values_.info;
        } else {
            return values_.scalars[position][0]; // by value or as a reference
        }
    }

    template <class Interface, class R, class... P, std::size_t... I>
    void call_host(Interface* object, R (Interface::*method)(P...), std::index_sequence<I...>) {
        if constexpr (std::is_void_v<R>)
            (object->*method)(host_argument<P>(I)...);
        else
            store((object->*method)(host_argument<P>(I)...));
    }
    void store(float result) { values_.result = {result, 0}; }
    void store(int result) { values_.result = {static_cast<float>(result), 0}; }
    void store(SingleComplex result) { values_.result = {result.Re(), result.Im()}; }

    // The arguments in the native calling form.
    std::vector<const void*> native_arguments() const {
        std::vector<const void*> list;
        for (const std::size_t position : arguments_) {
            const Parameter& p = parameters_[position];
            if (p.kind == Kind::array) {
                const bool hasOffset =
                    position + 1 < parameters_.size() && parameters_[position + 1].kind == Kind::offset;
                const std::size_t offset = hasOffset ? static_cast<std::size_t>(parameters_[position + 1].value) : 0;
                list.push_back(values_.arrays[position].data() + offset * p.elementFloats);
            } else if (p.kind == Kind::integer) {
                list.push_back(&p.value);
            } else if (p.kind == Kind::option) {
                list.push_back(p.text(p.value));
            } else if (p.kind == Kind::info) {
                list.push_back(&values_.info);
            } else {
                list.push_back(values_.scalars[position].data());
            }
        }
        return list;
    }

    bool reports_by_info() const { return parameters_.back().kind == Kind::info; }

    // Result: that of a guarded entry, else 0.
    template <class R, class NativeR, class... N, std::size_t... I>
    int call_native(NativeR (*native)(N...), std::vector<const void*> arguments, std::index_sequence<I...>) {
        if constexpr (std::is_same_v<R, SingleComplex>)
            arguments.insert(arguments.begin(), values_.result.data());
        const auto call = [&] { return native(static_cast<N>(const_cast<void*>(arguments.at(I)))...); };
        if constexpr (std::is_void_v<NativeR>) {
            call();
        } else if constexpr (std::is_void_v<R>) {
            return call();
        } else {
            store(call());
        }
        return 0;
    }

    // Every option takes the values 0 to 3, neighbours different ones; the native routine may reject what they stand
    // for, in the same words.
    void agrees_with_native() {
        const Values before = values_;
        bool computed = false;
        for (int turn = 0; turn < 16; ++turn) {
            int option = turn;
            for (Parameter& p : parameters_)
                if (p.kind == Kind::option) {
                    p.value = option % 4;
                    option = option / 4 + turn;
                }
            const std::string byHost = printed([&] { host_(); });
            Values afterHost = values_;
            values_ = before;
            const std::string byNative = printed([&] { native_(native_arguments()); });
            EXPECT_EQ(byHost, byNative) << "turn " << turn;
            if (!byHost.empty())
                for (std::size_t position = 0; position < parameters_.size(); ++position)
                    if (parameters_[position].kind == Kind::reference) { // a result that there is not
                        EXPECT_EQ(afterHost.scalars[position][0], 0) << "turn " << turn;
                        afterHost.scalars[position] = values_.scalars[position];
                    }
            EXPECT_TRUE(afterHost == values_) << "turn " << turn;
            computed = computed || !(values_ == before);
            EXPECT_TRUE(byHost.empty() || values_.same_but_for_info(before)) << "turn " << turn;
            values_ = before;
        }
        EXPECT_TRUE(computed) << "nothing was computed";
        for (Parameter& p : parameters_)
            if (p.kind == Kind::option)
                p.value = p.valid;
    }

    // Also where there is nothing to do.
    void fails_on_bad_arrays() {
        const Values before = values_;
        const std::vector<Parameter> kept = parameters_;
        for (const bool nothingToDo : {false, true})
            for (std::size_t position = 0; position < kept.size(); ++position)
                if (kept[position].kind == Kind::array) {
                    if (nothingToDo)
                        for (Parameter& p : parameters_)
                            p.value = p.kind == Kind::integer ? 0 : p.value;
                    parameters_[position].state = Parameter::null;
                    EXPECT_THROW(host_(), NullReferenceError) << "parameter " << position + 1;
                    parameters_[position].state = Parameter::empty;
                    EXPECT_THROW(host_(), IndexOutOfRangeError) << "parameter " << position + 1;
                    EXPECT_TRUE(values_ == before) << "parameter " << position + 1;
                    parameters_ = kept;
                }
    }

    // Each native argument that can be bad, alone: an unknown letter, -1, or an increment 0.
    void reports_bad_arguments() {
        const Values before = values_;
        const int minusOne = -1, zero = 0;
        std::vector<int> reported;
        const auto rejected = [&](std::size_t index, const void* bad) {
            std::vector<const void*> arguments = native_arguments();
            arguments[index] = bad;
            int result = 0;
            const std::string text = printed([&] { result = native_(arguments); });
            const std::string position = std::to_string(index + 1);
            if (text.empty()) {
                values_ = before;
                return false;
            }
            EXPECT_EQ(text, "\nQRV ERROR: Parameter " + position + " was incorrect on entry to " + name_ + "\n");
            EXPECT_EQ(reports_by_info() ? -values_.info : result, reports_by_info() ? index + 1 : 1)
                << "position " << position;
            EXPECT_TRUE(values_.same_but_for_info(before)) << "position " << position;
            values_ = before;
            return true;
        };
        for (std::size_t index = 0; index < arguments_.size(); ++index) {
            const Kind kind = parameters_[arguments_[index]].kind;
            if ((kind == Kind::option && rejected(index, "?")) ||
                (kind == Kind::integer && !positions_.empty() &&
                 (rejected(index, &minusOne) || rejected(index, &zero))))
                reported.push_back(static_cast<int>(index) + 1);
        }
        EXPECT_EQ(reported, positions_);
    }

    const std::string name_; // as reports show it
    const std::vector<int> positions_;
    std::vector<Parameter> parameters_;
    std::vector<std::size_t> arguments_; // position in the parameter list of each native argument
    Values values_;
    std::function<void()> host_;
    std::function<int(const std::vector<const void*>&)> native_;
};

// The methods of one class, in the order of its virtual table.
template <class Interface>
class MethodTable {
public:
    explicit MethodTable(Interface* object) : object_(object) {}

    template <class Method, class Native>
    void check(const char* routine, Method method, Native* native, std::vector<int> ints,
               std::vector<int> positions = {}) {
        const std::size_t slot = slot_of(method);
        EXPECT_TRUE(last_ == 0 || slot == last_ + 1) << routine << " is not where the virtual table has it";
        last_ = slot;
        MethodCheck(routine, object_, method, native, std::move(ints), std::move(positions)).run();
    }

private:
    // A pointer to a virtual member begins with 1 plus its offset in the table.
    template <class Method>
    static std::size_t slot_of(Method method) {
        std::uintptr_t word = 0;
        std::memcpy(&word, &method, sizeof word);
        return word / sizeof word;
    }

    Interface* object_;
    std::size_t last_ = 0;
};

} // namespace qrv::test
