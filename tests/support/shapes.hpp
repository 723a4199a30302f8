// Sizes around the edges of vectors, groups and blocks, and everything else that a case may vary.
#pragma once

#include "support/problem.hpp"

namespace qrv::test {

// Chooses for one case after the other: all choices meet all others sooner or later, the same ones in every run.
class Turns {
public:
    template <class Choices>
    auto pick(const Choices& choices) {
        return std::data(choices)[next() % std::size(choices)];
    }
    template <class X>
    X pick(std::initializer_list<X> choices) {
        return choices.begin()[next() % choices.size()];
    }
    bool one_in(unsigned count) { return next() % count == 0; }

    Layout layout() {
        return {pick({0, 1, 2, 3, 4, 16}), pick({0, 1, 2, 3, 5, 6, 7, 9, 11, 12}),
                pick({Guard::canaries, Guard::pageBehind, Guard::pageInFront, Guard::heap})};
    }

    // Scalars, layouts and letter case of a shape. `large` ones come too rarely to be spent on leaving products out.
    Shape vary(Shape p, bool large = false) {
        p.alpha = large ? pick({1.0F, -0.75F, 2.0F}) : pick({1.0F, -0.75F, 2.0F, 1.0F, 0.5F, 0.0F});
        p.beta = large ? pick({1.0F, 0.0F, 0.5F, -2.0F}) : pick({1.0F, 0.0F, 0.5F, -2.0F, 0.0F, 1.0F, 0.5F, nan});
        p.incx = pick({1, -2, 1, 3, -1});
        p.incy = pick({1, -2, 1, 3, -1});
        p.a = layout(), p.b = layout(), p.c = layout();
        for (char* option : {&p.side, &p.uplo, &p.trans, &p.transb, &p.diag})
            if (one_in(3))
                *option += 'a' - 'A';
        return p;
    }

private:
    unsigned next() { return static_cast<unsigned>(random_() >> 7); }
    std::minstd_rand random_;
};

// Every combination of the options that a routine has.
template <class T>
std::vector<Shape> every_option(const Operation& o) {
    using namespace std::string_view_literals;
    const bool product = o.what == What::product, general = o.kind == Form::general;
    const bool sided = !o.vectors && !general && !o.updates(), gemm = product && general && !o.vectors;
    const std::string_view all = "NTC";
    std::string_view trans = "N";
    if (o.triangular() || (product && general))
        trans = all;
    else if (o.updates() && !o.vectors)
        trans = !isComplex<T> ? all : o.kind == Form::hermitian ? "NC"sv : "NT"sv;
    std::vector<Shape> list;
    for (const char side : sided ? "LR"sv : "L"sv)
        for (const char uplo : general ? "U"sv : "UL"sv)
            for (const char option : trans)
                for (const char transb : gemm ? all : "N"sv)
                    for (const char diag : o.triangular() ? "NU"sv : "N"sv)
                        list.push_back({side, uplo, option, transb, diag});
    return list;
}

} // namespace qrv::test
