// A bar on the terminal for a factorization that takes long.
#pragma once

#include <thread>

namespace tools {

// While it lives, shows on standard error how far the factorization of order n has come: after half a second, and only
// on a terminal. At its end the line is cleared.
//
// Each LAPACK entry begins by taking the progress routine of the process away, so a thread of the bar puts it into its
// place again and again while the factorization runs.
class ProgressBar {
public:
    explicit ProgressBar(int n);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

private:
    std::jthread watcher;
};

// Share of the operations of an LU factorization of order n that are done after so many columns.
double share_done(int columns, int n);

} // namespace tools
