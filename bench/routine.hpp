// Calls a routine of any family: since all arguments of BLAS routines are addresses, a list of them tells a call.
#pragma once

#include <array>
#include <benchmark/benchmark.h>
#include <cctype>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "library.hpp"
#include "operand.hpp"

namespace bench {

class Routine {
public:
    // `letters` has one character for each argument; T U D V are texts.
    Routine(const char* name, const std::string& letters, const std::map<char, const void*>& arguments) : name_(name) {
        for (char letter : letters)
            addresses_.push_back(const_cast<void*>(arguments.at(letter)));
        // The lengths of texts follow unseen: some compilers rely on them, and a C routine leaves surplus ones alone.
        for (char letter : letters)
            if (std::strchr("TUDV", letter))
                addresses_.push_back(reinterpret_cast<void*>(1));
    }

    // The published name: a Fortran compiler's symbol in peers, ours in capitals.
    void* entry(const Library& library) const {
        std::string symbol = name_;
        if (library.ours)
            std::transform(symbol.begin(), symbol.end(), symbol.begin(), [](char c) { return char(std::toupper(c)); });
        else
            symbol += '_';
        return library.find<void>(symbol.c_str());
    }

    // Hands over a callable to `use`: one call in this library.
    template <class Result, class Use>
    void bind(const Library& library, Use use) const {
        if constexpr (std::is_same_v<Result, Complex>) {
            // A complex result comes in a register by the x86-64 convention; ours goes to an address given first.
            static_assert(std::is_trivially_copyable_v<Complex>);
            if (library.ours) {
                Complex result;
                Routine ours = *this;
                ours.addresses_.insert(ours.addresses_.begin(), &result);
                return ours.bind_count<void>(
                    library, [&](auto call) { use([&] { return call(), result; }); }, counts);
            }
        }
        bind_count<Result>(library, use, counts);
    }

    // One call, after `restore`; false if the library has no such routine.
    template <class Restore>
    bool once(const Library& library, const Restore& restore) const {
        if (!entry(library))
            return false;
        restore();
        bind<void>(library, [](auto call) { call(); });
        return true;
    }

    template <class Result>
    void repeat(benchmark::State& state, const Library& library) const {
        bind<Result>(library, [&](auto call) {
            for (auto _ : state)
                call();
        });
    }

    // The same for a routine that consumes an operand: each call is timed with `restore` before it, as in all
    // libraries.
    template <class Restore>
    void repeat(benchmark::State& state, const Library& library, const Restore& restore) const {
        bind<void>(library, [&](auto call) {
            for (auto _ : state) {
                restore();
                call();
            }
        });
    }

private:
    template <std::size_t>
    using Address = void*;
    static constexpr std::size_t most = 25; // one more than the longest list, of addresses and lengths of texts
    static constexpr auto counts = std::make_index_sequence<most>{};

    template <class Result, class Use, std::size_t... Count>
    void bind_count(const Library& library, Use use, std::index_sequence<Count...>) const {
        ((addresses_.size() == Count ? bind_all<Result>(library, use, std::make_index_sequence<Count>{}) : void()),
         ...);
    }

    template <class Result, class Use, std::size_t... I>
    void bind_all(const Library& library, Use use, std::index_sequence<I...>) const {
        auto* routine = reinterpret_cast<Result (*)(Address<I>...)>(entry(library));
        const std::array<void*, sizeof...(I)> addresses{addresses_[I]...};
        use([=] { return routine(addresses[I]...); });
    }

    std::string name_;
    std::vector<void*> addresses_;
};

} // namespace bench
