#pragma once

#include <string>

namespace ZVSmartModel::Tool {

// A process that reads a stranger's file gives up, before it reads, whatever reading does not
// need. What it has open stays open.

/// The parts of the cage; a build or a kernel may lack one or both.
struct CageParts {
    bool calls = false;  ///< seccomp: system calls are refused but for the few that computing needs
    bool files = false;  ///< Landlock: no path can be opened, nothing connected or bound
};

/// What this build can ask of this kernel.
CageParts AvailableCage();

/// Cages this process, all threads that it starts and whatever it becomes; there is no way back.
/// Refused are opening by name, sockets, exec, new processes, signals to others and memory that
/// can be run; refused calls fail with EPERM, or EACCES where only Landlock is there. Core dumps
/// are off either way. Returns the parts that are in force.
CageParts EnterCage(CageParts wanted);

/// For a person: "seccomp, Landlock", or "none".
std::string CageText(CageParts parts);

}  // namespace ZVSmartModel::Tool
