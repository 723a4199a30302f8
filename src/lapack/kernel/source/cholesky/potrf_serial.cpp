// The Cholesky factorization on the calling thread: left-looking over blocks, recursive in the diagonal block; with
// wide vectors over halves. The products and the solves decide on threads for themselves; inside a parallel region they
// get one.
#include "lapack/calls/cholesky.hpp"
#include "lapack/kernel/source/cholesky/potrf.hpp"
#include "lapack/kernel/source/cholesky/potrf_aside.hpp"
#include "lapack/kernel/source/cholesky/potrf_left_looking.hpp"
#include "lapack/kernel/source/cholesky/potrf_route.hpp"
#include "lapack/routine_name.hpp"
#include "service/tuning.hpp"
#include "service/vector_form.hpp"

namespace qrv::lapack {

template <class T>
FactorResult potrf_serial(Uplo uplo, int n, Matrix<T> a, FactorPlace place) {
    const auto factor_block = [&](int j, int jb, Matrix<T> diagonal) {
        return potrf_serial(uplo, jb, diagonal, {place.thread, place.offset + j});
    };
    return factor_aside(uplo, n, a, factor_block, [&] {
        const bool wide = vector_form_in_use() != VectorForm::sse;
        const int tuned = wide ? n : tuning::block_size(RoutineName<T>("POTRF"), n);
        const int nb = wide && n >= wideCrossover ? half_in_blocks(n) : tuned;
        if (nb <= 1 || nb >= n)
            return tell_progress(RoutineName<T>("POTRF"), n, place, potf2(uplo, n, a));
        return factor_left_looking<Layer::blas>(nb, uplo, n, a, factor_block);
    });
}

template FactorResult potrf_serial(Uplo, int, Matrix<float>, FactorPlace);
template FactorResult potrf_serial(Uplo, int, Matrix<SingleComplex>, FactorPlace);

} // namespace qrv::lapack
