// A strip of right-hand sides out of B, in a small tile where those of one unknown lie next to each other as whole
// vectors: the form in which the unknowns of a triangle are computed, whichever way B holds them.
//
//   tile       unknown by unknown: its real parts for all right-hand sides of the strip,
//              then its imaginary parts; 64-byte aligned.
//              The order of the right-hand sides within it is the tile's own affair.
//   room       unknowns up to a multiple of the vector's lanes
//   width      vectors of right-hand sides; those that B does not have are zeros in the tile
//   reads      no element of B outside the strip; writes the same
#pragma once

#include <cstddef>

#include "blas/complex.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/pack.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// ---- What the vectors of a build give -------------------------------------------------------------------------------

// As many vectors as each has lanes, transposed.
template <class V, int lanes>
QRV_INLINE void transpose_square(V (&x)[lanes]) {
    static_assert(lanes == V::lanes);
    if constexpr (lanes == 4) {
        transpose(x[0], x[1], x[2], x[3]);
    } else if constexpr (lanes > 4) {
        QRV_UNROLL
        for (int i = 0; i < lanes; i += 4) {
            const V low01 = low_pairs(x[i], x[i + 1]), high01 = high_pairs(x[i], x[i + 1]);
            const V low23 = low_pairs(x[i + 2], x[i + 3]), high23 = high_pairs(x[i + 2], x[i + 3]);
            x[i] = low_halves(low01, low23);
            x[i + 1] = high_halves(low01, low23);
            x[i + 2] = low_halves(high01, high23);
            x[i + 3] = high_halves(high01, high23);
        }
        QRV_UNROLL
        for (int i = 0; i < 4; ++i) {
            V quad[lanes / 4];
            QRV_UNROLL
            for (int q = 0; q < lanes / 4; ++q)
                quad[q] = x[4 * q + i];
            transpose_quads(quad);
            QRV_UNROLL
            for (int q = 0; q < lanes / 4; ++q)
                x[4 * q + i] = quad[q];
        }
    }
}

// Two vectors of complex numbers as they lie in memory become their real and their imaginary parts, and back. Which
// lane gets which number does not matter, as long as it gets it back.
template <class V>
QRV_INLINE void separate(V& a, V& b) {
    if constexpr (V::lanes > 1) {
        const V re = unzip_even(a, b);
        b = unzip_odd(a, b);
        a = re;
    }
}
template <class V>
QRV_INLINE void join(V& re, V& im) {
    if constexpr (V::lanes == 4) {
        const V low = interleave_low(re, im);
        im = interleave_high(re, im);
        re = low;
    } else if constexpr (V::lanes > 4) {
        const V low = low_pairs(re, im);
        im = high_pairs(re, im);
        re = low;
    }
}

template <class V>
QRV_INLINE V negated(V x) {
    if constexpr (V::lanes == 1)
        return {-x.v};
    else
        return change_signs(x, V::splat(-0.0F));
}

// The first `count` floats at p, which may be more than a vector has, or none; zeros behind them.
template <class V>
QRV_INLINE V load_up_to(int count, const float* p) {
    if (count >= V::lanes)
        return V::load(p);
    if constexpr (V::lanes > 1)
        if (count > 0)
            return load_part<V>(p, count);
    return V::zero();
}
template <class V>
QRV_INLINE void store_up_to(int count, float* p, V x) {
    if (count >= V::lanes)
        x.store(p);
    else if constexpr (V::lanes > 1)
        if (count > 0)
            store_part(p, x, count);
}

// ---- The tile -------------------------------------------------------------------------------------------------------

// Vectors of right-hand sides in a strip.
template <class T>
constexpr int stripVectors = Vec::lanes == 4 ? 4 / floatsIn<T> : 2 / floatsIn<T>;
template <class T>
constexpr int stripWidth = stripVectors<T>* Vec::lanes;
// Few right-hand sides are as a narrow strip: in the tile as the first ones of a whole strip.
template <class T>
constexpr int narrowVectors = stripVectors<T> > 1 ? stripVectors<T> / 2 : 1;
template <class T>
constexpr int strip_vectors(int count) {
    return count <= narrowVectors<T> * Vec::lanes ? narrowVectors<T> : stripVectors<T>;
}
// Floats of an unknown in the tile.
template <class T>
constexpr int unknownFloats = floatsIn<T>* stripWidth<T>;

// The strip of B: `unknowns` x `count` elements, or the transpose of that, `ld` apart.
template <class T>
struct Strip {
    T* b;
    std::ptrdiff_t ld;
    int unknowns, count;
    bool conjugated; // on the way in and on the way out

    float* at(std::ptrdiff_t element) const { return reinterpret_cast<float*>(b + element); }
};

// Each right-hand side is a column of B.
template <class T>
struct ColumnStrip : Strip<T> {
    static constexpr int lanes = Vec::lanes;

    void load(float* tile) const {
        each_square([&](float* from, int floats, int columns, int place) {
            Vec x[lanes];
            QRV_UNROLL
            for (int j = 0; j < lanes; ++j)
                x[j] = j < columns ? load_up_to<Vec>(floats, from + j * ld_floats()) : Vec::zero();
            transpose_square(x);
            QRV_UNROLL
            for (int i = 0; i < lanes; ++i)
                signed_part(x[i], place, i).store_aligned(tile + place + i * stripWidth<T>);
        });
    }
    void store(const float* tile) const {
        each_square([&](float* from, int floats, int columns, int place) {
            Vec x[lanes];
            QRV_UNROLL
            for (int i = 0; i < lanes; ++i)
                x[i] = signed_part(Vec::load_aligned(tile + place + i * stripWidth<T>), place, i);
            transpose_square(x);
            QRV_UNROLL
            for (int j = 0; j < lanes; ++j)
                if (j < columns)
                    store_up_to(floats, from + j * ld_floats(), x[j]);
        });
    }

private:
    std::ptrdiff_t ld_floats() const { return floatsIn<T> * this->ld; }

    // `floats` rows and `columns` columns of B with its first float at b, and their place in the tile.
    template <class Each>
    QRV_INLINE void each_square(const Each& each) const {
        const int floats = floatsIn<T> * this->unknowns;
        for (int j = 0; j < strip_vectors<T>(this->count) * lanes; j += lanes)
            for (int i = 0; i < floats; i += lanes)
                each(this->at(j * this->ld) + i, floats - i, this->count - j, i * stripWidth<T> + j);
    }
    // Row i of a square, conjugated: the rows of imaginary parts have odd numbers.
    QRV_INLINE Vec signed_part(Vec x, int place, int i) const {
        if (isComplex<T> && this->conjugated && (place / stripWidth<T> + i) % 2 == 1)
            return negated(x);
        return x;
    }
};

// Each right-hand side is a row of B.
template <class T>
struct RowStrip : Strip<T> {
    static constexpr int lanes = Vec::lanes, parts = floatsIn<T>, vectors = stripVectors<T>;

    void load(float* tile) const {
        each_unknown(tile, [&](float* from, float* place) {
            QRV_UNROLL
            for (int v = 0; v < vectors; ++v) {
                Vec x[parts];
                QRV_UNROLL
                for (int p = 0; p < parts; ++p)
                    x[p] = load_up_to<Vec>(floats_from(v, p), from + (v * parts + p) * lanes);
                if constexpr (isComplex<T>) {
                    separate(x[0], x[1]);
                    if (this->conjugated)
                        x[1] = negated(x[1]);
                }
                QRV_UNROLL
                for (int p = 0; p < parts; ++p)
                    x[p].store_aligned(place + (p * vectors + v) * lanes);
            }
        });
    }
    void store(float* tile) const {
        each_unknown(tile, [&](float* from, const float* place) {
            QRV_UNROLL
            for (int v = 0; v < vectors; ++v) {
                Vec x[parts];
                QRV_UNROLL
                for (int p = 0; p < parts; ++p)
                    x[p] = Vec::load_aligned(place + (p * vectors + v) * lanes);
                if constexpr (isComplex<T>) {
                    if (this->conjugated)
                        x[1] = negated(x[1]);
                    join(x[0], x[1]);
                }
                QRV_UNROLL
                for (int p = 0; p < parts; ++p)
                    store_up_to(floats_from(v, p), from + (v * parts + p) * lanes, x[p]);
            }
        });
    }

private:
    QRV_INLINE int floats_from(int v, int p) const { return this->count * parts - (v * parts + p) * lanes; }

    template <class Each>
    QRV_INLINE void each_unknown(float* tile, const Each& each) const {
        for (int k = 0; k < this->unknowns; ++k)
            each(this->at(k * this->ld), tile + k * unknownFloats<T>);
    }
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
