// Every combination of what a case may vary, instead of loops within loops; a failure tells which one it was.
#pragma once

#include <array>
#include <gtest/gtest.h>
#include <numeric>
#include <sstream>
#include <string_view>
#include <tuple>
#include <vector>

namespace qrv::test {

// A choice as messages tell it: by its name, an option by its letter.
template <class X>
void tell(std::ostream& out, const X& x) {
    out << ' ';
    if constexpr (std::is_enum_v<X>)
        out << static_cast<std::underlying_type_t<X>>(x);
    else if constexpr (requires { out << x.name; })
        out << x.name;
    else if constexpr (requires { x.second; })
        tell(out, x.first), tell(out, x.second);
    else if constexpr (requires { out << x; })
        out << x;
    else
        out << testing::PrintToString(x);
}

template <class... X>
class Combinations {
public:
    explicit Combinations(std::vector<X>... lists) : lists_(std::move(lists)...) {}

    // The last list changes fastest.
    template <class Body, class... Chosen>
    void each(const Body& body, const Chosen&... chosen) const {
        if constexpr (sizeof...(Chosen) == sizeof...(X)) {
            std::ostringstream told;
            (tell(told, chosen), ...);
            SCOPED_TRACE(told.str());
            body(chosen...);
        } else {
            for (const auto& x : std::get<sizeof...(Chosen)>(lists_))
                each(body, chosen..., x);
        }
    }

private:
    std::tuple<std::vector<X>...> lists_;
};

template <class List>
auto listed(const List& list) {
    if constexpr (std::is_convertible_v<List, std::string_view>) {
        const std::string_view options = list; // a letter each
        return std::vector(options.begin(), options.end());
    } else {
        return std::vector(std::begin(list), std::end(list));
    }
}

inline std::vector<int> up_to(int first, int last) {
    std::vector<int> all(static_cast<std::size_t>(last - first + 1));
    std::iota(all.begin(), all.end(), first);
    return all;
}

// combine({1, 2}, "UL").each([](int n, char uplo) { ... }); lists in braces come first.
template <class List, class... Lists>
auto combine(const List& list, const Lists&... lists) {
    return Combinations(listed(list), listed(lists)...);
}
template <class... X>
auto combine(std::initializer_list<X>... lists) {
    return Combinations(std::vector(lists)...);
}
template <class X, class List, class... Lists>
auto combine(std::initializer_list<X> x, const List& list, const Lists&... lists) {
    return combine(std::vector(x), list, lists...);
}
template <class X, class Y, class List, class... Lists>
auto combine(std::initializer_list<X> x, std::initializer_list<Y> y, const List& list, const Lists&... lists) {
    return combine(std::vector(x), std::vector(y), list, lists...);
}
template <class X, class Y, class Z, class List, class... Lists>
auto combine(std::initializer_list<X> x, std::initializer_list<Y> y, std::initializer_list<Z> z, const List& list,
             const Lists&... lists) {
    return combine(std::vector(x), std::vector(y), std::vector(z), list, lists...);
}

} // namespace qrv::test
