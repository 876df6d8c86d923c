#include "tools/zvg/output/SignalCleanup.h"

#include <unistd.h>

#include <atomic>
#include <csignal>

namespace ZVSmartModel::Tool {

namespace {

constexpr int caughtSignals[] = {SIGINT, SIGTERM, SIGHUP};

std::atomic<const char*> unfinishedFiles[2] = {};
std::atomic<bool> held = false;
std::atomic<int> waiting = 0;  // the signal that came meanwhile

static_assert(std::atomic<const char*>::is_always_lock_free, "a signal handler reads them");

void CleanUpAndEnd(int signal) {
    if (held) {
        waiting = signal;
        return;
    }
    RemoveUnfinished();
    std::signal(signal, SIG_DFL);
    raise(signal);
}

void CatchSignals() {
    static const bool caught = [] {
        for (const int number : caughtSignals) {
            // What the caller ignores, as nohup does with SIGHUP, stays ignored.
            if (std::signal(number, CleanUpAndEnd) == SIG_IGN) std::signal(number, SIG_IGN);
        }
        return true;
    }();
    static_cast<void>(caught);
}

}  // namespace

void RemoveOnSignal(const char* path) {
    CatchSignals();
    for (auto& file : unfinishedFiles) {
        const char* free = nullptr;
        if (file.compare_exchange_strong(free, path)) return;
    }
}

void KeepOnSignal(const char* path) {
    for (auto& file : unfinishedFiles) {
        const char* registered = path;
        file.compare_exchange_strong(registered, nullptr);
    }
}

void RemoveUnfinished() {
    for (auto& file : unfinishedFiles) {
        if (const char* path = file.exchange(nullptr)) unlink(path);
    }
}

SignalsHeld::SignalsHeld() {
    CatchSignals();
    held = true;
}

SignalsHeld::~SignalsHeld() {
    held = false;
    if (waiting != 0) raise(waiting);
}

}  // namespace ZVSmartModel::Tool
