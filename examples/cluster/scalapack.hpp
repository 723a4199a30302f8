// The routines of ScaLAPACK and of its communication layer that the example calls, and a matrix dealt out in blocks.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

extern "C" {
void Cblacs_get(int context, int what, int* value);
void Cblacs_gridinit(int* context, const char* order, int rows, int columns);
void Cblacs_gridinfo(int context, int* rows, int* columns, int* row, int* column);
void Cblacs_gridexit(int context);
int numroc_(const int* n, const int* block, const int* process, const int* first, const int* processes);
void descinit_(int* desc, const int* m, const int* n, const int* mb, const int* nb, const int* firstRow,
               const int* firstColumn, const int* context, const int* leading, int* info);
void Cpsgemr2d(int m, int n, const float* a, int ia, int ja, const int* descA, float* b, int ib, int jb,
               const int* descB, int context);
void psgesv_(const int* n, const int* nrhs, float* a, const int* ia, const int* ja, const int* descA, int* ipiv,
             float* b, const int* ib, const int* jb, const int* descB, int* info);
void psposv_(const char* uplo, const int* n, const int* nrhs, float* a, const int* ia, const int* ja, const int* descA,
             float* b, const int* ib, const int* jb, const int* descB, int* info);
void pssyev_(const char* jobz, const char* uplo, const int* n, float* a, const int* ia, const int* ja, const int* descA,
             float* w, float* z, const int* iz, const int* jz, const int* descZ, float* work, const int* lwork,
             int* info);
void psgesvd_(const char* jobu, const char* jobvt, const int* m, const int* n, float* a, const int* ia, const int* ja,
              const int* descA, float* s, float* u, const int* iu, const int* ju, const int* descU, float* vt,
              const int* ivt, const int* jvt, const int* descVt, float* work, const int* lwork, int* info);
}

namespace cluster {

// The processes as a grid, as square as their number allows, whose rows are dealt out first; and process 0 alone.
class Grid {
public:
    explicit Grid(int processes) {
        int rows = 1;
        for (int r = 1; r * r <= processes; ++r)
            if (processes % r == 0)
                rows = r;
        Cblacs_get(-1, 0, &all_);
        Cblacs_gridinit(&all_, "Row", rows, processes / rows);
        Cblacs_gridinfo(all_, &rows_, &columns_, &row_, &column_);
        Cblacs_get(-1, 0, &first_);
        Cblacs_gridinit(&first_, "Row", 1, 1); // negative on the other processes
    }
    ~Grid() {
        if (first_ >= 0)
            Cblacs_gridexit(first_);
        Cblacs_gridexit(all_);
    }
    Grid(const Grid&) = delete;
    Grid& operator=(const Grid&) = delete;

    int all() const { return all_; }
    int first() const { return first_; }
    int rows() const { return rows_; }
    int columns() const { return columns_; }
    int row() const { return row_; }
    int column() const { return column_; }

private:
    int all_ = 0, first_ = 0, rows_ = 0, columns_ = 0, row_ = 0, column_ = 0;
};

// This process's part of an m x n matrix in blocks of the same order: block (i, j) belongs to process
// (i mod rows, j mod columns) of the grid.
class Dealt {
public:
    Dealt(const Grid& grid, int m, int n, int block) : grid_(grid), m_(m), n_(n) {
        const int none = 0, gridRows = grid.rows(), gridColumns = grid.columns(), row = grid.row(),
                  column = grid.column();
        const int localRows = numroc_(&m, &block, &row, &none, &gridRows);
        const int localColumns = numroc_(&n, &block, &column, &none, &gridColumns);
        const int leading = localRows > 0 ? localRows : 1, context = grid.all();
        int info = 0;
        descinit_(desc_.data(), &m, &n, &block, &block, &none, &none, &context, &leading, &info);
        part_.resize(static_cast<std::size_t>(leading) * static_cast<std::size_t>(localColumns > 0 ? localColumns : 1));
        rows_ = leading;
    }

    // From process 0 to all, and back; `whole` counts there only.
    void deal(const float* whole) {
        const auto desc = whole_desc();
        Cpsgemr2d(m_, n_, whole, 1, 1, desc.data(), data(), 1, 1, this->desc(), grid_.all());
    }
    void collect(float* whole) const {
        const auto desc = whole_desc();
        Cpsgemr2d(m_, n_, part_.data(), 1, 1, desc_.data(), whole, 1, 1, desc.data(), grid_.all());
    }

    float* data() { return part_.data(); }
    const int* desc() const { return desc_.data(); }
    int rows() const { return rows_; } // of the part; at least 1

private:
    std::array<int, 9> whole_desc() const { return {1, grid_.first(), m_, n_, m_, n_, 0, 0, m_}; }

    const Grid& grid_;
    int m_, n_, rows_ = 1;
    std::array<int, 9> desc_{};
    std::vector<float> part_;
};

} // namespace cluster
