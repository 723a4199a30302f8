// Test matrices: guarded by values around them that are recognised, or by pages that must not be touched.
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <random>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "blas/complex.hpp"

namespace qrv::test {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr char transposeOptions[] = {'N', 'T'};

inline bool is_transposed(char option) {
    return option != 'N' && option != 'n';
}

// An element of which every part is x.
template <class T>
T all_parts(float x) {
    if constexpr (isComplex<T>)
        return {x, x};
    else
        return x;
}
inline bool has_nan(float x) {
    return std::isnan(x);
}
inline bool has_nan(SingleComplex x) {
    return std::isnan(x.re) || std::isnan(x.im);
}
inline bool is_finite(float x) {
    return std::isfinite(x);
}
inline bool is_finite(SingleComplex x) {
    return std::isfinite(x.re) && std::isfinite(x.im);
}

// Column-major access to elements.
template <class Storage, class T>
class ColumnMajor {
public:
    int rows() const { return rows_; }
    int columns() const { return columns_; }
    int ld() const { return ld_; }
    T& operator()(int i, int j) { return self().data()[i + std::ptrdiff_t{ld_} * j]; }
    T operator()(int i, int j) const { return self().data()[i + std::ptrdiff_t{ld_} * j]; }

    Storage& fill(float value) {
        return set([value](int, int) { return all_parts<T>(value); });
    }
    Storage& fill_random(std::mt19937& random) {
        std::uniform_real_distribution<float> uniform(-1, 1);
        return set([&](int, int) {
            T element = all_parts<T>(uniform(random));
            if constexpr (isComplex<T>)
                element.im = uniform(random);
            return element;
        });
    }
    // Element (i, j) becomes value(i, j): that of another matrix of the same size, say.
    template <class Value>
    Storage& set(const Value& value) {
        for (int j = 0; j < columns_; ++j)
            for (int i = 0; i < rows_; ++i)
                (*this)(i, j) = value(i, j);
        return self();
    }
    // Elements for which good(i, j, element) does not hold.
    template <class Good>
    int count_bad(const Good& good) const {
        int bad = 0;
        for (int j = 0; j < columns_; ++j)
            for (int i = 0; i < rows_; ++i)
                bad += !good(i, j, (*this)(i, j));
        return bad;
    }

protected:
    ColumnMajor(int rows, int columns, int ld) : rows_(rows), columns_(columns), ld_(ld) {}

private:
    Storage& self() { return static_cast<Storage&>(*this); }
    const Storage& self() const { return static_cast<const Storage&>(*this); }
    int rows_, columns_, ld_;
};

// A matrix that begins `offset` floats past a 64-byte boundary, with canaries in front of it, behind it and in the gaps
// between its columns. They are NaN, so what reads them shows as well as what writes them.
template <class T>
class BasicGuardedMatrix : public ColumnMajor<BasicGuardedMatrix<T>, T> {
    using Base = ColumnMajor<BasicGuardedMatrix<T>, T>;

public:
    BasicGuardedMatrix(int rows, int columns, int ld, int offset = 0)
        : Base(rows, columns, ld), size_(unit * static_cast<std::size_t>(ld) * static_cast<std::size_t>(columns)),
          storage_(size_ + 2 * unit * static_cast<std::size_t>(ld) + 3 * band, std::bit_cast<float>(canary)) {
        const auto address = reinterpret_cast<std::uintptr_t>(storage_.data());
        first_ = band + (64 - address % 64) % 64 / sizeof(float) + static_cast<std::size_t>(offset);
    }
    // A copy has the same offset.
    BasicGuardedMatrix(const BasicGuardedMatrix& other)
        : BasicGuardedMatrix(other.rows(), other.columns(), other.ld(),
                             static_cast<int>(reinterpret_cast<std::uintptr_t>(other.data()) % 64 / sizeof(float))) {
        this->set(other);
    }
    BasicGuardedMatrix& operator=(const BasicGuardedMatrix&) = delete;

    T* data() { return reinterpret_cast<T*>(storage_.data() + first_); }
    const T* data() const { return reinterpret_cast<const T*>(storage_.data() + first_); }

    bool guards_intact() const {
        bool intact = true;
        const auto check = [&](std::size_t from, std::size_t to) {
            for (std::size_t p = from; p < to; ++p)
                intact = intact && std::bit_cast<std::uint32_t>(storage_[p]) == canary;
        };
        const std::size_t ld = unit * static_cast<std::size_t>(this->ld());
        const std::size_t rows = unit * static_cast<std::size_t>(this->rows());
        check(0, first_);
        for (std::size_t column = first_; column < first_ + size_; column += ld)
            check(column + rows, column + ld);
        check(first_ + size_, storage_.size());
        return intact;
    }

private:
    static constexpr std::size_t unit = sizeof(T) / sizeof(float); // sizes are in floats
    static constexpr std::size_t band = 64;
    static constexpr std::uint32_t canary = 0x7FC0'5A5A;

    std::size_t size_;
    std::vector<float> storage_;
    std::size_t first_;
};
using GuardedMatrix = BasicGuardedMatrix<float>;

// `count` floats whose last byte is the last one before an inaccessible page; with `atFront`, whose first byte is
// the first one behind such a page. A read or write beyond stops the program.
class GuardPageArray {
public:
    explicit GuardPageArray(std::size_t count, bool atFront = false) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t bytes = (count * sizeof(float) + page - 1) / page * page;
        length_ = bytes + 2 * page;
        map_ = mmap(nullptr, length_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (map_ == MAP_FAILED)
            throw std::bad_alloc();
        char* const inside = static_cast<char*>(map_) + page;
        if (mprotect(inside, bytes, PROT_READ | PROT_WRITE) != 0)
            throw std::bad_alloc();
        data_ = reinterpret_cast<float*>(atFront ? inside : inside + bytes - count * sizeof(float));
    }
    ~GuardPageArray() { munmap(map_, length_); }
    GuardPageArray(const GuardPageArray&) = delete;
    GuardPageArray& operator=(const GuardPageArray&) = delete;

    float* data() { return data_; }
    const float* data() const { return data_; }

private:
    void* map_;
    std::size_t length_;
    float* data_;
};

// A copy of a matrix in such memory, from its first element to the last one of its last column.
template <class T>
class PageMatrix : public ColumnMajor<PageMatrix<T>, T> {
public:
    PageMatrix(const BasicGuardedMatrix<T>& x, bool atFront)
        : ColumnMajor<PageMatrix, T>(x.rows(), x.columns(), x.ld()),
          array_(sizeof(T) / sizeof(float) *
                     (static_cast<std::size_t>(x.ld()) * static_cast<std::size_t>(x.columns() - 1) +
                      static_cast<std::size_t>(x.rows())),
                 atFront) {
        this->set(x);
    }
    T* data() { return reinterpret_cast<T*>(array_.data()); }
    const T* data() const { return reinterpret_cast<const T*>(array_.data()); }

private:
    GuardPageArray array_;
};

} // namespace qrv::test
