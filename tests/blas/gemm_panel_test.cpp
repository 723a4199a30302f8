// The C-panel GEMM of the sse2 and sse3 builds: its copies.
#include "support/gemm.hpp"

// A build of the panel routines for this test alone.
#define QRV_KERNEL_BUILD panel_under_test
#define QRV_KERNEL_VECTORS "blas/kernel/sse2/vec.hpp"
#include "blas/kernel/common/gemm/gemm_panel.hpp"

namespace qrv::test {
namespace {

namespace panel = kernel::panel_under_test;

// Work memory of the exact size between guarded pages, at every 4-byte position to a boundary, for both widths.
TEST_OF_ELEMENTS(GemmPanel, StaysInsideItsWorkMemory) {
    if (!in_this_run(2))
        return;
    for (const int nb : {panel::panel_columns<T>(0), panel::panel_columns<T>(3)})
        for (std::size_t start = 0; start < 64 / sizeof(float); start += sizeof(T) / sizeof(float))
            for (const int n : {nb, nb + 1}) {
                const char transb = start % 4 == 0 ? 'N' : start % 8 == 2 ? 'C' : 'T';
                const GemmCase<T> x(
                    {.transb = transb, .m = 520, .n = n, .k = 8 + static_cast<int>(start) % 3 * 64, .beta = 0.5F});
                // The same position against the page in front and, up to the rest of a 64-byte line, the one behind.
                const std::size_t count = panel::panel_work_bytes<T>(nb) / sizeof(float);
                GuardPageArray front(count + start, true), behind(count + (16 - start) % 16);
                for (float* block : {behind.data(), front.data() + start})
                    x.check(
                        [&](const Call<T>& v) {
                            const OpView<const T> a{v.a, v.lda, false}, b{v.b, v.ldb, is_transposed(transb)};
                            const panel::PanelProduct<T> product{v.m, v.n, v.k,   v.alpha,
                                                                 a,   b,   false, conjugates(transb)};
                            panel::multiply_by_panels<T>(product, v.beta, {v.c, v.ldc}, nb, block);
                        },
                        "nb=" + std::to_string(nb));
            }
}

} // namespace
} // namespace qrv::test
