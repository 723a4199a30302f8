#include "progress.hpp"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <fmt/core.h>
#include <mutex>
#include <qrv/service.h>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tools {
namespace {

constexpr std::chrono::milliseconds patience{500}, period{100};
constexpr int widest = 40, narrowest = 5; // bars, in characters

std::atomic<int> columnsDone{0};

// Threads report panels as they finish them, not always in order.
int note(const int*, const int* step, const char*, int) {
    int known = columnsDone.load(std::memory_order_relaxed);
    while (known < *step && !columnsDone.compare_exchange_weak(known, *step, std::memory_order_relaxed))
        ;
    return 0;
}

// What is drawn over a line is drawn for a person, who looks at this process and no other.
bool is_watched() {
    const char* const kind = std::getenv("TERM");
    return isatty(STDERR_FILENO) != 0 && kind != nullptr && std::strcmp(kind, "dumb") != 0 &&
           tcgetpgrp(STDERR_FILENO) == getpgrp();
}

int columns_of_terminal() {
    winsize size{};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : 80;
}

// A line that is broken could not be drawn over.
void draw(const char* work, double share) {
    const std::string percent = fmt::format("{:3.0f} %", 100 * share);
    const int width =
        std::min(columns_of_terminal() - 1 - static_cast<int>(std::strlen(work) + percent.size() + 4), widest);
    if (width < narrowest)
        return;
    const auto filled = static_cast<int>(std::lround(share * width));
    fmt::print(stderr, "\r{} [{:#<{}}{:.<{}}] {}", work, "", filled, "", width - filled, percent);
    std::fflush(stderr);
}

void watch(const std::stop_token& stop, const char* work, const std::function<double()>& share) {
    std::mutex mutex;
    std::condition_variable_any wake;
    std::unique_lock lock(mutex);
    const auto finished = [&](std::chrono::milliseconds time) {
        return wake.wait_for(lock, stop, time, [&] { return stop.stop_requested(); });
    };
    if (finished(patience))
        return;
    do
        draw(work, share());
    while (!finished(period));
    fmt::print(stderr, "\r\033[K");
}

} // namespace

double share_done(int columns, int n, bool onTeam) {
    const double done = std::clamp(static_cast<double>(columns) / n, 0.0, 1.0);
    return onTeam ? 1 - std::pow(1 - done, 3) : done * done * (3 - done) / 2;
}

ProgressBar factoring(int n) {
    columnsDone = 0;
    qrv_serv_set_default_progress(note);
    const bool onTeam = qrv_serv_domain_get_max_threads(QRV_DOMAIN_BLAS) > 1;
    return {"factoring", [=] { return share_done(columnsDone.load(std::memory_order_relaxed), n, onTeam); }};
}

ProgressBar expecting(const char* work, double seconds) {
    const auto start = std::chrono::steady_clock::now();
    return {work, [=] {
                const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
                return std::min(passed.count() / seconds, 0.99); // an estimate is never at its end
            }};
}

ProgressBar inverting(double factorSeconds) {
    return expecting("inverting", 2 * factorSeconds);
}

ProgressBar::ProgressBar(const char* work, std::function<double()> share) {
    if (is_watched())
        watcher =
            std::jthread([work, share = std::move(share)](const std::stop_token& stop) { watch(stop, work, share); });
}

} // namespace tools
