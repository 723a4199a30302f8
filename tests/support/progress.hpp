// What factorizations tell of their progress, and the call at which they are asked to stop.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "qrv/service.h"

namespace qrv::test {

// Panels are factored one after the other, so the calls follow each other too.
inline struct Progress {
    int calls = 0, stopAt = 0;
    std::vector<int> steps;
    std::set<int> threads;
    std::set<std::string> stages;
} progress;

inline int on_progress(const int* thread, const int* step, const char* stage, int length) {
    progress.steps.push_back(*step);
    progress.threads.insert(*thread);
    progress.stages.insert(std::string(stage, static_cast<std::size_t>(length)));
    return ++progress.calls == progress.stopAt ? 1 : 0;
}

// As long as it lives; stops at the given call, or at none.
class ProgressHook {
public:
    explicit ProgressHook(int stopAt) {
        progress = {};
        progress.stopAt = stopAt;
        qrv_serv_set_progress(on_progress);
    }
    ~ProgressHook() { qrv_serv_set_progress(nullptr); }
    ProgressHook(const ProgressHook&) = delete;
};

} // namespace qrv::test
