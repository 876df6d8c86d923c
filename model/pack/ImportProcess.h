#pragma once

#include <string>
#include <vector>

#include "model/pack/ChildMessages.h"
#include "model/pack/ModelFolder.h"
#include "model/pack/Watch.h"

namespace ZVSmartModel {

// Work on a stranger's file runs in a child process: the program `zvg-import`, in a process group
// of its own, with nothing open but what it needs and an environment that says nothing. The child
// tells its parent what there is to say through a socket, asks it there for the model's files, and
// writes its result to a file that the parent opened. What it prints otherwise, such as the chatter
// of a library, goes nowhere.

/// The descriptors that a child finds open besides the standard ones, which lead nowhere.
/// @{
constexpr int childMessages = 3;
constexpr int childOutput = 4;
/// @}

/// Runs the importer `program` with `words`, hands on what it says until it ends, and opens for it
/// what `folder` allows, nothing where that is null; its descriptor `childOutput` is `output`.
/// Returns its exit status. Throws Error, InputOutput where it passes a limit, asks for a file that
/// is not the model's, or died of a signal, which the message names; Internal where it cannot be
/// started; and what `listener` throws. It is gone then, as it is when this process dies.
int RunImporter(const std::string& program, const std::vector<std::string>& words, int output,
                const ModelFolder* folder, const ImportLimits& limits,
                const MessageReader::Listener& listener);

/// The path of the importer: `given`, else what the environment's ZVG_IMPORT names, else the
/// program `zvg-import` that lies beside this library or where it is installed with it. Throws
/// Error, Internal, where there is none.
std::string FindImporter(const std::string& given);

}  // namespace ZVSmartModel
