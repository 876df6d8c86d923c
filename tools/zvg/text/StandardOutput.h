#pragma once

#include <string>
#include <string_view>

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartModel::Tool {

/// Keeps the tool's files apart from standard output: a standard stream that the caller closed
/// would lend its number to the next file that is opened, and writing to a reader that went away,
/// or past the largest size that the caller allows, would kill the process. Call it once, before
/// anything is opened.
void PrepareStandardStreams();

/// Writes data to standard output. Throws Error InputOutput where that fails; where its reader
/// went away the process ends of SIGPIPE, without a word, as other programs do, unless its caller
/// ignores that signal.
void WriteOutput(std::string_view data);

/// As long as it lives, each line that WriteOutput begins begins with `prefix`.
class OutputPrefix {
  public:
    explicit OutputPrefix(const std::string& prefix);
    ~OutputPrefix();
    OutputPrefix(const OutputPrefix&) = delete;
    OutputPrefix& operator=(const OutputPrefix&) = delete;
};

/// The same as a stream without a position.
class OutputStream : public ZVSmartFormat::CZVFTOutStream {
  public:
    ZVSmartFormat::u64 Write(const void* buffer, ZVSmartFormat::u64 size) override {
        WriteOutput({static_cast<const char*>(buffer), size});
        return size;
    }
    ZVSmartFormat::u64 GetPos() override { return ~ZVSmartFormat::u64{0}; }
    int Seek(ZVSmartFormat::u64) override { return -1; }
    bool Reserve(ZVSmartFormat::u64) override { return true; }
};

/// Hands everything to the system; throws as `WriteOutput` does.
void FinishOutput();

/// One message on standard error: "zvg: " and `message` with its control characters escaped.
/// Nothing is reported where that fails.
void WriteMessage(std::string_view message);

/// The same for the reason why a command ended.
void WriteError(std::string_view message);

}  // namespace ZVSmartModel::Tool
