#pragma once

#include <functional>
#include <string>

#include "ZVSmartFormat/Stream.h"

/// A file that appears whole or not at all: it is written under a temporary name beside its
/// target, which `Commit` gives it. Without `Commit`, and on a signal, the temporary file goes
/// and the target stays as it was. Two at a time may exist.
///
/// The target "-" is standard output, which may not be a terminal: the file then has no name, and
/// `Commit` copies it there.
class OutputFile {
  public:
    /// Creates the temporary file. Throws ToolError InputOutput where that fails, where the target
    /// exists and `force` is false, or where it is no regular file. A target that is a symbolic
    /// link is written where it leads. Throws ToolError Usage where standard output is a terminal.
    OutputFile(const std::string& target, bool force);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// The temporary file, open for reading and writing; owned by this object.
    int Descriptor() const { return descriptor; }

    /// Has `write` write to the file, from its beginning, through a buffer. Throws ToolError
    /// InputOutput where any of that failed.
    void Fill(const std::function<void(ZVSmartFormat::CZVFTOutStream&)>& write) const;

    /// Closes the file and gives it the target's name. Throws ToolError InputOutput where that
    /// fails; the temporary file is gone then.
    void Commit();

    /// The number of bytes in the file, once committed.
    unsigned long long Bytes() const { return bytes; }

  private:
    void CreateTemporary();
    void CopyToStandardOutput();
    void Close();
    void Rename();
    [[noreturn]] void Fail(const std::string& reason) const;

    std::string target;
    std::string temporary;
    bool force;
    bool toStandardOutput;
    int descriptor = -1;
    unsigned long long bytes = 0;
};

/// How messages name a target.
std::string TargetName(const std::string& target);
