#pragma once

namespace ZVSmartModel::Tool {

// What SIGINT, SIGTERM and SIGHUP must not leave behind: two unfinished files. Each stays
// registered until it is taken out again. The signal then ends the process as if nothing had caught
// it.

/// Registers a file to be removed; where two are registered already, nothing happens. `path` is
/// borrowed and must not change while it is registered.
void RemoveOnSignal(const char* path);

/// Takes the file out again; nothing happens where it is not registered.
void KeepOnSignal(const char* path);

/// Removes what is registered.
void RemoveUnfinished();

/// While one exists, a signal waits: for steps that only together leave things whole.
class SignalsHeld {
  public:
    SignalsHeld();
    ~SignalsHeld();
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;
};

}  // namespace ZVSmartModel::Tool
