#pragma once

#include <memory>
#include <string>

#include "tools/zvg/reading/InputStream.h"

/// Opens an input file; "-" is standard input, which begins where its reader left it. What cannot
/// seek, as a pipe, is first copied to a file without a name. Streams of one process share what
/// they read from standard input, so that it may be read twice.
///
/// Throws ToolError Usage for a terminal as standard input, InputOutput for what cannot be opened
/// or read, and for folders, devices and sockets.
std::unique_ptr<InputStream> OpenInput(const std::string& path);
