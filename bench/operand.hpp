// Vectors and matrices that the routines work on.
#pragma once

#include <algorithm>
#include <complex>
#include <cstddef>
#include <memory>
#include <new>
#include <random>
#include <type_traits>

namespace bench {

using Complex = std::complex<float>;
using Wide = std::complex<double>; // results are judged in it, real ones too

template <class T>
inline constexpr bool isComplex = std::is_same_v<T, Complex>;

// Bytes past the begin of a cache line where all operands begin, below 64. Set once, before the first operand.
inline std::size_t operandOffset = 0;

struct AlignedDelete {
    void operator()(void* data) const {
        operator delete (static_cast<std::byte*>(data) - operandOffset, std::align_val_t{64});
    }
};

// Column-major and dense (leading dimension = rows), each part uniform in [-0.5, 0.5).
template <class T>
struct Operand {
    Operand(int rows_, int columns, unsigned seed_)
        : rows(rows_), count(std::size_t(rows_) * std::size_t(columns)), seed(seed_),
          data(reinterpret_cast<T*>(
              static_cast<std::byte*>(operator new (count * sizeof(T) + operandOffset, std::align_val_t{64})) +
              operandOffset)) {
        std::uninitialized_value_construct_n(data.get(), count);
        fill();
    }

    // The same content each time: how an operand that was written becomes what it was.
    void fill() {
        std::minstd_rand generator(seed);
        std::uniform_real_distribution<float> uniform(-0.5F, 0.5F);
        std::generate_n(data.get(), count, [&]() -> T {
            const float re = uniform(generator);
            if constexpr (isComplex<T>)
                return {re, uniform(generator)};
            else
                return re;
        });
    }

    // What another of the same size holds: for operands that a call consumes.
    void restore(const Operand& from) { std::copy_n(from.data.get(), count, data.get()); }

    const T& operator()(int i, int j) const { return data[std::size_t(i) + std::size_t(j) * std::size_t(rows)]; }
    T& operator()(int i, int j) { return data[std::size_t(i) + std::size_t(j) * std::size_t(rows)]; }

    int rows;
    std::size_t count;
    unsigned seed;
    std::unique_ptr<T[], AlignedDelete> data;
};

} // namespace bench
