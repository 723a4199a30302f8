// The bar on terminals of several kinds.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "qrv/progress.hpp"

namespace tools {
namespace {

struct Terminal {
    const char* kind;
    unsigned short columns;
    const char* shows; // while 0.3 of the work is done
    bool inBackground = false;
    int screen = -1;
    pid_t child = -1;
};

TEST(ProgressBar, KeepsToTheLineOfATerminal) {
    Terminal terminals[] = {
        {"xterm", 100, "\rfactoring [############............................]  30 %"},
        {"xterm", 0, "\rfactoring [############............................]  30 %"}, // one that does not tell
        {"xterm", 30, "\rfactoring [###........]  30 %"},
        {"xterm", 20, ""},
        {"dumb", 100, ""},
        {"xterm", 100, "", true},
    };
    for (Terminal& t : terminals) {
        const winsize size{24, t.columns, 0, 0};
        t.child = forkpty(&t.screen, nullptr, nullptr, &size);
        ASSERT_GE(t.child, 0);
        if (t.child == 0) {
            setenv("TERM", t.kind, 1);
            if (t.inBackground) {
                if (const pid_t job = fork(); job != 0) {
                    waitpid(job, nullptr, 0);
                    _exit(0);
                }
                setpgid(0, 0);
            }
            std::atomic<bool> asked{false};
            {
                const ProgressBar bar("factoring", [&] {
                    asked = true;
                    return 0.3;
                });
                const bool mayAsk = t.kind != std::string("dumb") && !t.inBackground;
                for (int tenths = mayAsk ? 100 : 7; tenths > 0 && !asked; --tenths)
                    std::this_thread::sleep_for(std::chrono::milliseconds(100));
            }
            _exit(0);
        }
    }
    for (Terminal& t : terminals) {
        std::string shown;
        char part[256];
        for (ssize_t size; (size = read(t.screen, part, sizeof part)) > 0;)
            shown.append(part, static_cast<std::size_t>(size));
        close(t.screen);
        waitpid(t.child, nullptr, 0);
        EXPECT_EQ(shown.substr(0, std::string(t.shows).size()), t.shows) << t.kind << ' ' << t.columns;
        EXPECT_EQ(shown.find("factoring") != std::string::npos, t.shows[0] != '\0') << shown;
    }
}

} // namespace
} // namespace tools
