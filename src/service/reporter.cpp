#include "service/reporter.hpp"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "service/messages.hpp"

namespace qrv {
namespace {

// Every LAPACK entry stores the same two values here, so relaxed order is enough.
std::atomic<qrv_xerbla_routine> reporterSlot{nullptr};
std::atomic<qrv_progress_routine> progressSlot{nullptr};

std::atomic<qrv_progress_routine> programsProgress{qrv_serv_default_progress};

constexpr int longestName = 20;

} // namespace

qrv_progress_routine default_progress() {
    return programsProgress.load(std::memory_order_relaxed);
}

void default_report(const char* name, const int* info, int length) {
    char shown[longestName + 1];
    const int n = std::clamp(length, 0, longestName);
    std::memcpy(shown, name, static_cast<std::size_t>(n));
    shown[n] = '\0';

    qrv_serv_print_message(0, MESSAGE_NEWLINE, 0);
    const int value = *info;
    switch (value) {
    case 1000:
        qrv_serv_print_message(0, MESSAGE_NO_MEMORY, 1, shown);
        break;
    case 1001:
        qrv_serv_print_message(0, MESSAGE_BAD_OPTIONALS, 1, shown);
        break;
    case 1079:
        qrv_serv_print_message(0, MESSAGE_NO_WORK_MEMORY, 1, shown);
        break;
    default:
        if (value > 0)
            qrv_serv_print_message(0, MESSAGE_BAD_PARAMETER, 2, value, shown);
        else // the sign is turned without overflow, also for the smallest integer
            qrv_serv_print_message(0, MESSAGE_INTERNAL_CONDITION, 2,
                                   static_cast<int>(0U - static_cast<unsigned>(value)), shown);
    }
}

} // namespace qrv

void qrv_serv_xerbla(const char* name, const int* info, int length) {
    if (const auto reporter = qrv::reporterSlot.load(std::memory_order_relaxed))
        reporter(name, info, length);
    else
        qrv::default_report(name, info, length);
}

int qrv_serv_progress(const int* thread, const int* step, const char* stage, int length) {
    const auto progress = qrv::progressSlot.load(std::memory_order_relaxed);
    return progress ? progress(thread, step, stage, length) : 0;
}

int qrv_serv_default_progress(const int*, const int*, const char*, int) {
    return 0;
}

void qrv_serv_set_xerbla(qrv_xerbla_routine routine) {
    qrv::reporterSlot.store(routine, std::memory_order_relaxed);
}

void qrv_serv_set_default_progress(qrv_progress_routine routine) {
    qrv::programsProgress.store(routine ? routine : qrv_serv_default_progress, std::memory_order_relaxed);
}

void qrv_serv_set_progress(qrv_progress_routine routine) {
    qrv::progressSlot.store(routine, std::memory_order_relaxed);
}
