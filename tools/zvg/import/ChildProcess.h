#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/zvg/import/ChildMessages.h"
#include "tools/zvg/import/ModelFile.h"
#include "tools/zvg/import/ModelFolder.h"
#include "tools/zvg/import/Watch.h"

// Work on a stranger's file runs in a child process: the same executable, started with a hidden
// argument, in a process group of its own, with nothing open but
// what it needs and an environment that says nothing. The child tells its parent what there is to
// say through a socket, asks it there for the model's files, and writes its result to a file that
// the parent opened. What it prints otherwise, such as the chatter of a library, goes nowhere.

/// The parent's side. Runs a child with `arguments`, hands on what it says until it ends, and
/// opens for it what `folder` allows; its descriptor `childOutput` is `output`. Returns its exit
/// status. Throws ToolError InputOutput where it cannot be started, passes a limit, asks for a
/// file that is not the model's, or died of a signal, which the message names; it is gone then.
/// SIGINT, SIGTERM and SIGHUP kill it.
int RunInChild(const std::vector<std::string>& arguments, int output, const ModelFolder& folder,
               const ImportLimits& limits, const MessageReader::Listener& listener);

/// The child's side.
constexpr int childOutput = 4;

/// The arguments given to RunInChild, where this process is such a child. They stand in `argv`.
std::optional<std::vector<std::string_view>> ChildArguments(int argc, char** argv);

/// Tells the parent. Line ends in `text` become blanks.
void TellParent(ChildMessage kind, std::string_view text);

/// Asks the parent for a file of the model, by ModelFolder's names. Whoever asks for another one is
/// ended.
std::optional<ModelFile> AskParentFor(const std::string& name);

/// Does a child's work and returns its exit status; −1, with nothing done, where this process is
/// no such child. Call it first thing in `main`.
int RunChildIfAsked(int argc, char** argv);
