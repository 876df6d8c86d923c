#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Work that may crash runs in a child process: the same executable, started with a hidden argument
// and without address randomisation. The child tells its parent what there is to say through a pipe
// and writes its result to a file that the parent opened. What it prints otherwise, such as the
// chatter of a library, goes nowhere.

enum class ChildMessage : char {
    Warning = 'W',
    Progress = 'P',  ///< how far: DONE/TOTAL and the work under way; 0/0 where nobody knows
    Result = 'R',    ///< what was done
    Failure = 'F',   ///< why it was not; the last words of a child that fails
};

/// The parent's side. Runs a child with `arguments` and hands on what it says until it ends; its
/// descriptor `childOutput` is `output`. Returns its exit status. Throws ToolError InputOutput
/// where it cannot be started or died of a signal, which the message names. SIGINT, SIGTERM and
/// SIGHUP kill it.
int RunInChild(const std::vector<std::string>& arguments, int output,
               const std::function<void(ChildMessage, const std::string&)>& listener);

/// The child's side.
constexpr int childOutput = 4;

/// The arguments given to RunInChild, where this process is such a child. They stand in `argv`.
std::optional<std::vector<std::string_view>> ChildArguments(int argc, char** argv);

/// Tells the parent. Line ends in `text` become blanks.
void TellParent(ChildMessage kind, std::string_view text);

/// Does a child's work and returns its exit status; −1, with nothing done, where this process is
/// no such child. Call it first thing in `main`.
int RunChildIfAsked(int argc, char** argv);
