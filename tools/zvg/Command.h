#pragma once

#include <stdexcept>
#include <string>

/// What the process tells its caller when it ends.
enum class ExitStatus : int {
    Done = 0,
    Internal = 1,     ///< the tool itself failed, or memory ran out
    Usage = 2,        ///< the command line is wrong
    InputOutput = 3,  ///< a file, or standard output, could not be read or written
    Damaged = 4,      ///< the file is damaged or not a block file
    NotFound = 5,     ///< what was asked for is not in the file
};

/// Ends a command: `main` prints `what()` as one line on standard error and exits with the
/// status. The message says which file, where and why.
class ToolError : public std::runtime_error {
  public:
    ToolError(ExitStatus status, const std::string& message)
        : std::runtime_error(message), status(status) {}

    ExitStatus Status() const { return status; }

  private:
    ExitStatus status;
};

/// What the user may say about every command.
struct CommonOptions {
    bool quiet = false;    ///< nothing but errors on standard error
    bool json = false;     ///< inspecting commands print JSON instead of text
    bool noLimit = false;  ///< reading commands take what work and memory a file asks for
};
