// The update behind a panel of SSYTRD on a team. Strips are columns of the triangle, which no two threads share, so
// there is no barrier: of each strip the rectangle between its diagonal block and the far edge of the triangle is two
// products, the block itself a rank-2k update.
#include "blas/thread/common/team_omp.hpp"
#include "lapack/kernel/source/symmetric/strips.hpp"
#include "lapack/kernel/source/symmetric/sytrd.hpp"

namespace qrv::lapack {
namespace {

struct RankTwoUpdate {
    Uplo uplo;
    int n, k;
    Matrix<const float> v, w;
    Matrix<float> a;

    void apply_to(Slice columns) const {
        const int first = columns.first, end = first + columns.count;
        if (columns.count == 0)
            return;
        if (uplo == Uplo::upper) {
            rectangle(0, first, columns);
            diagonal_block(columns);
        } else {
            diagonal_block(columns);
            rectangle(end, n - end, columns);
        }
    }

private:
    void rectangle(int row, int rows, Slice columns) const {
        const auto subtract = [&](Matrix<const float> x, Matrix<const float> y) {
            kernel::gemm(Op::none, Op::transpose, rows, columns.count, k, -1.0F, x.block(row, 0),
                         y.block(columns.first, 0), 1.0F, a.block(row, columns.first));
        };
        if (rows > 0) {
            subtract(v, w);
            subtract(w, v);
        }
    }
    void diagonal_block(Slice columns) const {
        const int at = columns.first;
        kernel::rank_2k(uplo, Op::none, columns.count, k, -1.0F, v.block(at, 0), w.block(at, 0), 1.0F, a.block(at, at));
    }
};

} // namespace

void update_on_team(int threads, Uplo uplo, int n, int k, Matrix<const float> v, Matrix<const float> w,
                    Matrix<float> a) {
    const RankTwoUpdate update{uplo, n, k, v, w, a};
    on_team(threads, [&](int team, int thread) {
        const TriangleShare share = triangle_share(Deal::evenWidths, uplo, n, team, thread);
        update.apply_to(share.longer);
        update.apply_to(share.shorter);
    });
}

} // namespace qrv::lapack
