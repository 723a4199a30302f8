// A bar on the terminal for work that takes long.
#pragma once

#include <functional>
#include <thread>

namespace tools {

// While it lives, shows on standard error how far the work has come: after half a second, and only on a terminal. At
// its end the line is cleared.
class ProgressBar {
public:
    // `share`, of what is done, is asked ten times a second.
    ProgressBar(const char* work, std::function<double()> share);

private:
    std::jthread watcher; // its end stops the thread and waits for it
};

// A factorization of order n, by the columns that it reports as done.
ProgressBar factoring(int n);

// Work that reports nothing, by the seconds that it may take.
ProgressBar expecting(const char* work, double seconds);

// An inversion from factors that took so long: it does twice the operations at about that speed.
ProgressBar inverting(double factorSeconds);

// Share of the operations of an LU factorization of order n that are done after so many columns: a team takes each from
// all that is left, one thread factors the left half before it touches the right one.
double share_done(int columns, int n, bool onTeam);

} // namespace tools
