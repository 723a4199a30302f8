// The text that tells what is running and why.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <omp.h>

#include "qrv/service.h"
#include "service/processor.hpp"
#include "service/thread_budget.hpp"
#include "service/version.hpp"
#include "service/work_pool.hpp"

namespace qrv {
namespace {

// Appends to a text of limited room and counts what it would take.
struct TextWriter {
    char* text;
    int room;
    int length = 0;

    [[gnu::format(printf, 2, 3)]] void line(const char* format, ...) {
        char buffer[256];
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(buffer, sizeof buffer, format, arguments);
        va_end(arguments);
        for (const char* c = buffer; *c; ++c)
            append(*c);
        append('\n');
    }

    void append(char c) {
        if (length + 1 < room)
            text[length] = c;
        ++length;
        if (room > 0)
            text[length < room ? length : room - 1] = '\0';
    }
};

const char* budget_explanation(int domain, const ThreadBudget& budget, const BudgetFacts& facts, CountOutcome outcome) {
    const int request = budget.explicitRequest ? request_for(facts.settings, domain) : facts.ompMaxThreads;
    switch (budget.reason) {
    case BudgetReason::forked:
        return "forked from a process with several threads, which are gone";
    case BudgetReason::insideRegion:
        return "asked inside a parallel region";
    case BudgetReason::asRequested:
        return request > budget.threads ? "dynamic adjustment is off: as requested, within the limit of threads"
                                        : "dynamic adjustment is off: taken as requested";
    case BudgetReason::mpiShare:
        return "cores divided by the processes on this node";
    case BudgetReason::mpiOneThread:
        return "message-passing process without thread support";
    case BudgetReason::withinCores:
        break;
    }
    if (outcome == CountOutcome::confined)
        return "affinity is restricted, which counts as one core; QRV_DYNAMIC=FALSE takes the request as it is";
    if (outcome == CountOutcome::refused)
        return "cores cannot be counted, which counts as one core; QRV_DYNAMIC=FALSE takes the request as it is";
    return budget.explicitRequest ? "a request, within the cores counted" : "OpenMP's number, within the cores counted";
}

const char* uncounted(CountOutcome outcome) {
    switch (outcome) {
    case CountOutcome::confined:
        return " (not counted: this process is confined to some of the processors)";
    case CountOutcome::refused:
        return " (not counted: the system does not let a thread choose its processor)";
    case CountOutcome::counted:
        break;
    }
    return "";
}

// What the sse42 build uses beyond its name.
const char* vector_form_name(VectorForm form) {
    switch (form) {
    case VectorForm::avx512:
        return ", with AVX-512 forms";
    case VectorForm::avx2:
        return ", with AVX2 forms";
    case VectorForm::sse:
        break;
    }
    return "";
}

void describe_processor(TextWriter& out) {
    const int cpuType = qrv_serv_get_cpu_type();
    out.line("processor class   %d (%s), %s", cpuType, kernel_variant_name(cpuType),
             cpu_type_origin() == CpuTypeOrigin::forced ? "forced by QRV_DEBUG_CPU_TYPE" : "detected");
    out.line("kernel build      %s%s", kernel_variant_name(cpuType),
             cpuType == 5 ? vector_form_name(vector_form()) : "");
    out.line("CpuMa             %d", qrv_serv_get_cpu_ma());
    const int levels = qrv_serv_get_cache_size(0) < 0 ? 0 : 1;
    if (levels == 0)
        out.line("caches            none reported by the processor");
    for (int level = 1; qrv_serv_get_cache_size(level) > 0; ++level)
        out.line("cache level %d     %d KB", level, qrv_serv_get_cache_size(level) / 1024);
}

void describe_threads(TextWriter& out) {
    const BudgetFacts facts = current_budget_facts();
    const CoreCount cores = counted_cores();
    out.line("cores counted     %d physical, %d logical%s", cores.physicalCores, cores.logicalProcessors,
             uncounted(cores.outcome));
    out.line("dynamic           %s", facts.settings.dynamic ? "on" : "off");
    constexpr const char* names[] = {"all", "BLAS"};
    for (const int domain : {QRV_DOMAIN_ALL, QRV_DOMAIN_BLAS}) {
        const ThreadBudget budget = thread_budget(facts, domain);
        out.line("threads for %-5s %d: %s", names[domain], budget.threads,
                 budget_explanation(domain, budget, facts, cores.outcome));
    }
    if (facts.settings.numThreadsUnreadable)
        out.line("QRV_NUM_THREADS   holds more than digits, so it counts as 1");
    out.line("OpenMP            version %d, at most %d threads", _OPENMP, facts.ompMaxThreads);
    out.line("limit of threads  %d, whatever is requested", std::min(facts.threadLimit, largestTeam));
}

} // namespace
} // namespace qrv

using namespace qrv;

const char* qrv_serv_get_version() {
    return QRV_VERSION;
}

int qrv_serv_get_configuration(char* text, int size) {
    TextWriter out{text, size};
    if (size > 0)
        text[0] = '\0';
    out.line("qrv               %s, %d-bit, built with %s", QRV_VERSION, static_cast<int>(8 * sizeof(void*)),
             QRV_COMPILER);
    describe_processor(out);
    describe_threads(out);
    out.line("work memory pool  %s", pool_enabled() ? "on" : "off by QRV_DISABLE_FAST_MM or QRV_MM_DISABLE");
    return out.length;
}
