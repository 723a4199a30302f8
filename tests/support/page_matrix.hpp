// Matrices without a byte to spare: an operand that ends, or begins, at a page that must not be touched.
#pragma once

#include "support/guard_page.hpp"

namespace qrv::test {

// Column-major, from its first element to the last one of its last column.
class PageMatrix {
public:
    PageMatrix(int rows, int columns, int ld, bool atFront = false)
        : rows_(rows), columns_(columns), ld_(ld),
          array_(static_cast<std::size_t>(ld) * static_cast<std::size_t>(columns - 1) + static_cast<std::size_t>(rows),
                 atFront) {}

    float* data() { return array_.data(); }
    int rows() const { return rows_; }
    int columns() const { return columns_; }
    int ld() const { return ld_; }
    float& operator()(int i, int j) { return data()[i + static_cast<std::ptrdiff_t>(ld_) * j]; }

    // Takes over the elements of a matrix of the same shape.
    template <class Source>
    PageMatrix& operator=(const Source& source) {
        for (int j = 0; j < columns_; ++j)
            for (int i = 0; i < rows_; ++i)
                (*this)(i, j) = source(i, j);
        return *this;
    }

private:
    int rows_, columns_, ld_;
    GuardPageArray array_;
};

} // namespace qrv::test
