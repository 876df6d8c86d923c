#pragma once

#include <memory>
#include <string>

#include "model/element/InputStream.h"

namespace ZVSmartModel {

/// Opens an input file. What cannot seek, as a pipe, is first copied to a file without a name.
/// Throws Error InputOutput for what cannot be opened or read, and for folders, devices and
/// sockets.
std::unique_ptr<InputStream> OpenInput(const std::string& path);

/// The same for what is open already, from where it stands on; `source` is borrowed.
std::unique_ptr<InputStream> OpenInput(int source, const std::string& name);

}  // namespace ZVSmartModel
