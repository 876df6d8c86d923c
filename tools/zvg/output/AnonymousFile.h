#pragma once

/// Opens a file for reading and writing that has no name and goes with its descriptor, in the
/// folder TMPDIR, else in /tmp. The caller closes it. Throws ToolError InputOutput.
int OpenAnonymousFile();
