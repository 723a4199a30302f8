#include "progress.hpp"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <fmt/core.h>
#include <mutex>
#include <qrv/service.h>
#include <string>
#include <unistd.h>

namespace tools {
namespace {

constexpr std::chrono::milliseconds patience{500}, period{100};
constexpr int width = 40; // characters

std::atomic<int> columnsDone{0};

// Threads report panels as they finish them, not always in order.
int note(const int*, const int* step, const char*, int) {
    int known = columnsDone.load(std::memory_order_relaxed);
    while (known < *step && !columnsDone.compare_exchange_weak(known, *step, std::memory_order_relaxed))
        ;
    return 0;
}

void draw(int n) {
    const double share = share_done(columnsDone.load(std::memory_order_relaxed), n);
    const auto filled = static_cast<std::size_t>(std::lround(share * width));
    const std::string bar = std::string(filled, '#') + std::string(width - filled, '.');
    fmt::print(stderr, "\rfactoring [{}] {:3.0f} %", bar, 100 * share);
    std::fflush(stderr);
}

void watch(const std::stop_token& stop, int n) {
    std::mutex mutex;
    std::condition_variable_any wake;
    std::unique_lock lock(mutex);
    const auto finished = [&](std::chrono::milliseconds time) {
        return wake.wait_for(lock, stop, time, [&] { return stop.stop_requested(); });
    };
    if (finished(patience))
        return;
    do {
        qrv_serv_set_progress(note);
        draw(n);
    } while (!finished(period));
    qrv_serv_set_progress(nullptr);
    fmt::print(stderr, "\r\033[K");
}

} // namespace

double share_done(int columns, int n) {
    return 1 - std::pow(1 - std::clamp(static_cast<double>(columns) / n, 0.0, 1.0), 3);
}

ProgressBar::ProgressBar(int n) {
    columnsDone = 0;
    if (isatty(STDERR_FILENO) != 0)
        watcher = std::jthread([n](const std::stop_token& stop) { watch(stop, n); });
}

ProgressBar::~ProgressBar() = default; // stops the thread and waits for it

} // namespace tools
