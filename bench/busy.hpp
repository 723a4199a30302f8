// Other work on the machine: processes that only compute, as long as this object lives. To be made before any thread.
#pragma once

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace bench {

class BusyNeighbours {
public:
    explicit BusyNeighbours(int count) {
        const pid_t parent = getpid();
        for (int i = 0; i < count; ++i)
            if (const pid_t child = fork(); child == 0)
                compute(parent);
            else if (child > 0)
                children_.push_back(child);
    }
    ~BusyNeighbours() {
        for (const pid_t child : children_) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
    }
    BusyNeighbours(const BusyNeighbours&) = delete;
    BusyNeighbours& operator=(const BusyNeighbours&) = delete;

private:
    // Ends with the parent, if it is killed too.
    [[noreturn]] static void compute(pid_t parent) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(0);
        for (volatile unsigned steps = 0;;)
            steps = steps + 1;
    }

    std::vector<pid_t> children_;
};

} // namespace bench
