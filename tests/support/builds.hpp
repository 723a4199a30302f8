// The kernel builds that this machine can run, each with its kernels. One run of the suite is for one processor class
// if QRV_DEBUG_CPU_TYPE forces it, else for all.
#pragma once

#include <cstdlib>
#include <ostream>
#include <vector>

#include "blas/kernel/kernels.hpp"
#include "service/processor.hpp"

namespace qrv::test {

inline bool in_this_run(int cpuType) {
    static const char* const forced = std::getenv("QRV_DEBUG_CPU_TYPE");
    return cpuType <= cpu_type_of(cpuid(1)) && (!forced || std::atoi(forced) == cpuType);
}

// Those of a list that this run is for.
template <class T>
std::vector<T> runnable(const std::vector<T>& all) {
    std::vector<T> list;
    for (const T& x : all)
        if (in_this_run(x.cpuType) && x.form <= vector_form())
            list.push_back(x);
    return list;
}

// The kernels of BLAS levels 1 and 2 of one build, under their own names: build.blas_sdot_kernel.
struct VectorBuild {
    const char* name;
    int cpuType;
    VectorForm form;
#define QRV_MEMBER(Result, name, parameters, arguments) Result(*name) parameters;
    QRV_VECTOR_KERNELS(QRV_MEMBER)
#undef QRV_MEMBER
};

inline std::ostream& operator<<(std::ostream& out, const VectorBuild& build) {
    return out << build.name;
}

inline const std::vector<VectorBuild>& vector_builds() {
#define QRV_KERNEL_OF(Result, name, parameters, arguments) name,
#define QRV_BUILD(ns, text, type, form)                                                                                \
    [] {                                                                                                               \
        using namespace kernel::ns;                                                                                    \
        return VectorBuild{text, type, form, QRV_VECTOR_KERNELS(QRV_KERNEL_OF)};                                       \
    }()
    static const std::vector<VectorBuild> list = runnable<VectorBuild>({
        QRV_BUILD(generic, "generic", 0, VectorForm::sse),
        QRV_BUILD(sse2, "sse2", 2, VectorForm::sse),
        QRV_BUILD(sse3, "sse3", 3, VectorForm::sse),
        QRV_BUILD(ssse3, "ssse3", 4, VectorForm::sse),
        QRV_BUILD(sse42, "sse42", 5, VectorForm::sse),
#ifdef QRV_WIDE_KERNELS
        QRV_BUILD(sse42_avx2, "avx2", 5, VectorForm::avx2),
        QRV_BUILD(sse42_avx512, "avx512", 5, VectorForm::avx512),
#endif
    });
#undef QRV_BUILD
#undef QRV_KERNEL_OF
    return list;
}

} // namespace qrv::test
