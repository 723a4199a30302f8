// Memory that ends exactly at a page that must not be touched: a read or write past the end stops the test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace qrv::test {

// `count` floats whose last byte is the last one before an inaccessible page; with `atFront`, whose first byte is
// the first one behind such a page.
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

private:
    void* map_;
    std::size_t length_;
    float* data_;
};

// op(X) of the given size without a gap between its columns, so that what must not be touched begins right behind
// its last element, or with `atFront` ends right before its first. Elements are small whole numbers.
class FencedOperand {
public:
    FencedOperand(bool transposed, int rows, int columns, bool atFront)
        : rows_(transposed ? columns : rows), columns_(transposed ? rows : columns), transposed_(transposed),
          storage_(static_cast<std::size_t>(rows_ * columns_), atFront) {
        for (int p = 0; p < rows_ * columns_; ++p)
            storage_.data()[p] = static_cast<float>(p % 7 - 3);
    }
    float* data() { return storage_.data(); }
    const int* ld() const { return &rows_; }
    float operator()(int i, int j) { return transposed_ ? data()[j + i * rows_] : data()[i + j * rows_]; }

private:
    int rows_, columns_;
    bool transposed_;
    GuardPageArray storage_;
};

} // namespace qrv::test
