#pragma once

namespace ZVSmartModel {

/// Opens a file for reading and writing that has no name and goes with its descriptor, in the
/// folder TMPDIR, else in /tmp. The caller closes it. Throws Error InputOutput.
int OpenAnonymousFile();

}  // namespace ZVSmartModel
