#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "tools/zvg/view/ServedFiles.h"
#include "tools/zvg/view/ViewerPage.h"

namespace ZVSmartModel::Tool {

/// Whether this build can serve; it needs a library for HTTP.
bool CanServe();

/// Serves the viewer's page at "/" and the files at "/files/NAME" to browsers on this machine, at
/// 127.0.0.1 and `port` (0: a free one), until the process is told to end by SIGINT, SIGTERM or
/// SIGHUP. `tell` gets the address when it can be asked.
///
/// A page of another origin gets nothing: requests must name this machine as their host, which one
/// that was led here by a name of its own does not, and what posts must say that it comes from
/// here. POST /pack?name=house.ifc with a model as its body packs it and answers
/// {"src": "/files/house.zvg"}, else {"error": "..."}; models are packed one at a time, up to 2 GiB
/// and ten minutes on their way here, and go when the server ends. Throws Error InputOutput where
/// the port is taken.
void ServeUntilSignal(const ViewerPage& page, ServedFiles& files, std::uint16_t port,
                      const std::function<void(const std::string& address)>& tell);

}  // namespace ZVSmartModel::Tool
