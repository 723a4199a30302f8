// Vectors in double whose elements know the size of the terms that they are sums of: how far off a result may be.
#pragma once

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "operand.hpp"

namespace bench {

struct Sized {
    Wide value = 0;
    double size = 0;

    Sized() = default;
    Sized(Wide x) : value(x), size(std::abs(x)) {}
    Sized& operator+=(const Sized& x) {
        value += x.value;
        size += x.size;
        return *this;
    }
    friend Sized operator*(const Sized& x, const Sized& y) {
        Sized product;
        product.value = x.value * y.value;
        product.size = x.size * y.size;
        return product;
    }
};
using SizedVector = std::vector<Sized>;

template <class T>
SizedVector column(const Operand<T>& a, int j) {
    SizedVector x(std::size_t(a.rows));
    for (int i = 0; i < a.rows; ++i)
        x[std::size_t(i)] = Wide(a(i, j));
    return x;
}

// Whether both are the same but for `roundings` of each element's terms.
inline bool agree(const SizedVector& x, const SizedVector& y, double roundings) {
    bool good = x.size() == y.size();
    for (std::size_t i = 0; i < x.size() && good; ++i)
        good = std::abs(x[i].value - y[i].value) <=
               roundings * double(std::numeric_limits<float>::epsilon()) * (x[i].size + y[i].size);
    return good;
}

} // namespace bench
