#pragma once

#include <sys/types.h>

// What SIGINT, SIGTERM and SIGHUP must not leave behind: one unfinished file and one child
// process. Each stays registered until it is set to nothing again. The signal then ends the
// process as if nothing had caught it.

/// Registers a file to be removed; null for none. `path` is borrowed and must not change while
/// it is registered.
void RemoveOnSignal(const char* path);

/// Registers a process to be killed; 0 for none.
void KillOnSignal(pid_t process);
