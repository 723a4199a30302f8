// The loop of lapack/task_team.hpp without threads: the members of a team come for tasks and perform them in random
// interleavings.
//
// The job is like one of that loop (Task, begin, first, next, perform): the schedule under test over a simulated
// matrix, which sees whether each task may do what it does.
#pragma once

#include <random>
#include <string>
#include <vector>

namespace qrv::test {

// Parts of a matrix (block columns, tiles) that go through steps, each held by one task at a time.
class SimulatedMatrix {
public:
    explicit SimulatedMatrix(int parts) : parts_(parts) {}

    int steps(int part) const { return parts_[part].steps; } // that it went through
    void take(int part, int nextStep) {
        expect(!parts_[part].held, "a part held twice");
        expect(steps(part) == nextStep - 1, "a task at another step than its part");
        parts_[part].held = true;
    }
    void advance(int part, int step) {
        expect(parts_[part].held && steps(part) < step, "steps out of order");
        parts_[part].steps = step;
    }
    void give_back(int part) { parts_[part].held = false; }

    void expect(bool holds, const char* fault) {
        if (!holds && fault_.empty())
            fault_ = fault;
    }
    const std::string& fault() const { return fault_; } // the first one

private:
    struct Part {
        int steps = 0;
        bool held = false;
    };
    std::vector<Part> parts_;
    std::string fault_;
};

// Runs a job, which is a SimulatedMatrix, and tells what went wrong first, or nothing.
template <class Job>
std::string simulate(Job& job, int team, unsigned seed) {
    struct Member {
        int thread;
        typename Job::Task task;
        bool atWork = false, sawStop = false;
    };
    bool stopped = false; // by a task that failed; others may take one more before they see it
    std::mt19937 random(seed);
    std::vector<Member> members;
    job.begin(team);
    for (int thread = 0; thread < team; ++thread)
        if (const auto task = job.first(thread); !task.ends())
            members.push_back({thread, task});
    for (int waits = 0; !members.empty() && job.fault().empty() && waits < 200 * team;) {
        const std::size_t turn = random() % members.size();
        Member& member = members[turn];
        ++waits;
        if (member.atWork) {
            if (!job.perform(member.task, member.thread))
                stopped = member.sawStop = true;
            member.atWork = false, waits = 0;
            continue;
        }
        bool ends = member.sawStop;
        if (!ends) {
            member.sawStop = stopped;
            job.next(member.thread, member.task);
            ends = member.task.ends();
        }
        if (ends)
            members.erase(members.begin() + static_cast<std::ptrdiff_t>(turn));
        else if (!member.task.waits())
            member.atWork = true, waits = 0;
    }
    job.expect(members.empty(), "nobody gets on");
    if constexpr (requires { job.complete(); })
        job.expect(job.complete(), "not everything was done");
    return job.fault();
}

} // namespace qrv::test
