// DispatchSlot: a routine with five builds, of which the processor class selects one on first use.
//
// The call costs one load, one test and one indirect tail call. The slot is filled without a lock: threads that
// race find the same build. It is null at load, needs no initialiser to run, and is never reset.
#pragma once

#include <atomic>

#include "qrv/service.h"
#include "service/vector_form.hpp"

namespace qrv {

// The five builds of a routine, one for each KernelVariant, and the forms of sse42 for wider vectors: null where there
// is none, or where the routine chooses its form itself.
template <class Signature>
struct Variants {
    Signature *generic, *sse2, *sse3, *ssse3, *sse42;
    Signature *avx2 = nullptr, *avx512 = nullptr;
};

template <class Signature>
constexpr Signature* pick_form(const Variants<Signature>& variants, VectorForm form) {
    if (form == VectorForm::avx512 && variants.avx512)
        return variants.avx512;
    return form != VectorForm::sse && variants.avx2 ? variants.avx2 : variants.sse42;
}

// The build for a CpuType; null for a number that is none.
template <class Signature>
constexpr Signature* pick(const Variants<Signature>& variants, int cpuType, VectorForm form = VectorForm::sse) {
    switch (cpuType) {
    case 0:
        return variants.generic;
    case 2:
        return variants.sse2;
    case 3:
        return variants.sse3;
    case 4:
        return variants.ssse3;
    case 5:
        return pick_form(variants, form);
    default:
        return nullptr;
    }
}

template <class Signature>
class DispatchSlot;

template <class Result, class... Args>
class DispatchSlot<Result(Args...)> {
public:
    using Signature = Result(Args...);

    constexpr explicit DispatchSlot(const Variants<Signature>& variants) : variants_(variants) {}

    Result operator()(Args... args) {
        Signature* const routine = chosen_.load(std::memory_order_relaxed);
        if (!routine) [[unlikely]]
            return choose_and_call(args...);
        return routine(args...);
    }

    constexpr const Variants<Signature>& variants() const { return variants_; }

private:
    // It makes the first call itself, so that nothing of the others' arguments has to be kept for after it.
    [[gnu::cold, gnu::noinline]] Result choose_and_call(Args... args) {
        Signature* const routine = pick(variants_, qrv_serv_get_cpu_type(), vector_form());
        chosen_.store(routine, std::memory_order_relaxed);
        return routine(args...);
    }

    Variants<Signature> variants_;
    std::atomic<Signature*> chosen_{nullptr};
};

} // namespace qrv
