// The LU factorization of a band in blocks of columns, right-looking: the parts of a step. Before the step of the block
// in columns [j, j + jb):
//
//             jb   j2   j3
//     jb    [ A11  A12  A13 ]
//     below [ A21  A22  A23 ]
//
// The band ends in A13, a lower triangle, and in the last rows of A21, an upper one. Each of below, j2 and j3 may be 0.
//
// The panel A11, A21 is factored in a copy that is whole: zeros stand past the band, and interchanges take all of its
// columns, so that it is what the columns to the right need. In the band multipliers have to stay where they were
// computed; each column goes back there with its pivot, before any later interchange. Then the columns to the right get
// the interchanges, the rows of U (solves with A11) and the product, each column by itself. A13 is worked on in a
// square with zeros above its diagonal.
#pragma once

#include <algorithm>
#include <cstring>

#include "blas/calls.hpp"
#include "blas/thread/common/slice.hpp"
#include "lapack/calls/lu.hpp"
#include "lapack/kernel/source/band/gbtrf.hpp"
#include "lapack/workspace.hpp"
#include "service/reporter.hpp"

namespace qrv::lapack {

class BlockedBand {
public:
    // The block at hand; see the drawing.
    struct Block {
        int j = 0, jb = 0, below = 0;
        Matrix<float> copy{};
        int j2 = 0, j3 = 0; // known when the panel is factored
        int end() const { return j + jb; }
    };

    // In blocks of nb <= gbtrfWidest columns, which are at most kl.
    BlockedBand(int nb, const char* stage, const BandShape& shape, Matrix<float> a, int* ipiv)
        : shape_(shape), nb_(nb), a_(a), ipiv_(ipiv), stage_(stage), rows_(std::min(shape.m, shape.kl + nb)),
          ld_(dimension_aside(rows_, sizeof(float))), copies_(nullptr, 0, 2 * copy_size()) {}

    // Whether there is memory for the copies.
    explicit operator bool() const { return copies_.data() != nullptr; }

    int info() const { return info_; }

    // Past the last block there are blocks of no columns.
    Block block(int j) const {
        const int jb = std::min(nb_, length() - j);
        return {j, jb, std::min(shape_.kl, shape_.m - j - jb), {copies_.data() + j / nb_ % 2 * copy_size(), ld_}};
    }

    // Sets the fill-in of U to 0 in the columns that have some from the start.
    void clear_first_fills() const {
        for (int column = shape_.ku + 1; column < std::min(shape_.kv(), shape_.n); ++column)
            clear_first_fill(shape_, column, a_);
    }
    // The same of the columns that the pivot rows of a block may reach as the first ones.
    void clear_fills(const Block& b) const {
        for (int column = b.j; column < b.end(); ++column)
            clear_fill(shape_, column, a_);
    }

    // Factors the panel, a few columns at a time. Result: false if the progress routine asks to stop.
    bool factor_panel(Block& b) {
        load(b);
        for (int first = 0, end; first < b.jb; first = end) {
            end = std::min(first + panelStep, b.jb);
            for (int c = first; c < end; ++c)
                factor_column(b, c, end);
            if (end < b.jb)
                update_panel(b, first, end);
        }
        b.j2 = std::max(0, std::min(reach_ - b.j + 1, shape_.kv()) - b.jb);
        b.j3 = std::max(0, reach_ - b.j - shape_.kv() + 1);
        const int thread = 0, step = b.end();
        return qrv_serv_progress(&thread, &step, stage_, static_cast<int>(std::strlen(stage_))) == 0;
    }

    // Of A12 and A22, counted from their first column.
    void update_columns(const Block& b, Slice columns) const {
        if (columns.count <= 0)
            return;
        const int first = b.end() + columns.first;
        laswp(columns.count, a_.block(0, first), b.j + 1, b.end(), ipiv_);
        update(b, first, columns.count, a_.block(b.j, first));
    }

    // A13 and A23, each column from its first row on.
    void update_corner(const Block& b) const {
        if (b.j3 == 0)
            return;
        float square[gbtrfWidest * gbtrfWidest] = {};
        const int first = b.j + shape_.kv();
        const Matrix<float> a13 = a_.block(b.j, first), whole{square, gbtrfWidest};
        for (int c = 0; c < b.j3; ++c) {
            for (int row = b.j + c; row < b.end(); ++row)
                if (const int pivotRow = ipiv_[row] - 1; pivotRow != row)
                    std::swap(a_(row, first + c), a_(pivotRow, first + c));
            std::copy_n(&a13(c, c), b.jb - c, &whole(c, c));
        }
        update(b, first, b.j3, whole);
        for (int c = 0; c < b.j3; ++c)
            std::copy_n(&whole(c, c), b.jb - c, &a13(c, c));
    }

private:
    static constexpr int panelStep = 8; // columns of a panel that are factored one by one

    int length() const { return std::min(shape_.m, shape_.n); }
    std::int64_t copy_size() const { return std::int64_t{ld_} * nb_; }
    int height(const Block& b) const { return b.jb + b.below; }

    void load(const Block& b) const {
        const int rows = height(b);
        for (int c = 0; c < b.jb; ++c) {
            const int count = std::min(rows, c + shape_.kl + 1);
            std::copy_n(&a_(b.j, b.j + c), count, &b.copy(0, c));
            std::fill_n(&b.copy(0, c) + count, rows - count, 0.0F);
        }
    }

    // Column c of the panel; `end`: of those that get its elimination now.
    void factor_column(const Block& b, int c, int end) {
        const Matrix<float> p = b.copy;
        const int column = b.j + c, below = std::min(shape_.kl, shape_.m - column - 1);
        const int pivotRow = c + kernel::iamax(below + 1, p.column(c, c)) - 1;
        ipiv_[column] = b.j + pivotRow + 1;
        if (const float pivot = p(pivotRow, c); pivot != 0) {
            reach_ = std::max(reach_, b.j + pivotRow + std::min(shape_.ku, shape_.n - 1 - b.j - pivotRow));
            if (pivotRow != c)
                kernel::swap(b.jb, p.row(c, 0), p.row(pivotRow, 0));
            divide_multipliers(below, pivot, &p(c + 1, c));
            const int right = std::min(reach_ - b.j, end - 1) - c;
            if (right > 0 && below > 0)
                kernel::geru(below, right, -1, p.column(c + 1, c), p.row(c, c + 1), p.block(c + 1, c + 1));
        } else if (info_ == 0) {
            info_ = column + 1;
        }
        std::copy_n(&p(0, c), c + 1 + below, &a_(b.j, column));
    }

    // The eliminations of columns [first, end) of the panel in those behind them.
    void update_panel(const Block& b, int first, int end) const {
        const Matrix<float> p = b.copy, u = p.block(first, end);
        const int width = end - first, right = b.jb - end, below = std::min(shape_.kl, height(b) - end);
        kernel::trsm(Side::left, Uplo::lower, Op::none, Diag::unit, width, right, 1, p.block(first, first), u);
        if (below > 0)
            kernel::gemm(Op::none, Op::none, below, right, width, -1, p.block(end, first), u, 1, p.block(end, end));
    }

    // Rows of U in `count` columns from `column` on, and the product below them.
    void update(const Block& b, int column, int count, Matrix<float> u) const {
        kernel::trsm(Side::left, Uplo::lower, Op::none, Diag::unit, b.jb, count, 1, b.copy, u);
        if (b.below > 0)
            kernel::gemm(Op::none, Op::none, b.below, count, b.jb, -1, b.copy.block(b.jb, 0), u, 1,
                         a_.block(b.end(), column));
    }

    const BandShape shape_;
    const int nb_;
    const Matrix<float> a_;
    int* const ipiv_;
    const char* const stage_;
    const int rows_, ld_;          // of a copy
    const WorkArea<float> copies_; // of two blocks, in turn
    int info_ = 0;
    int reach_ = 0; // the last column that a pivot row so far has elements in
};

} // namespace qrv::lapack
