#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "tools/zvg/output/UnfinishedFile.h"

namespace ZVSmartModel::Tool {

/// A file that appears whole or not at all: it is written beside its target, whose name `Commit`
/// gives it. Without `Commit`, and on a signal, nothing of it stays and the target is as it was.
/// Two at a time may exist.
///
/// The target "-" is standard output, which may not be a terminal: the file then has no name, and
/// `Commit` copies it there.
class OutputFile {
  public:
    /// Makes the file. Throws Error InputOutput where that fails, where the target exists and
    /// `force` is false, where it is no regular file, or where it is one of the `inputs`, by
    /// whatever name; "-" among them is standard input. A target that is a symbolic link is
    /// written where it leads. Throws Error Usage where standard output is a terminal.
    OutputFile(const std::string& target, bool force, const std::vector<std::string>& inputs);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// The file, open for reading and writing; owned by this object.
    int Descriptor() const;

    /// Whether `Commit` will replace a file.
    bool Replaces() const;

    /// Has `write` write to the file, from its beginning, through a buffer. Throws Error
    /// InputOutput where any of that failed.
    void Fill(const std::function<void(ZVSmartFormat::CZVFTOutStream&)>& write) const;

    /// Gives the file the target's name; file and name outlast a failure of the machine. Throws
    /// Error InputOutput where that fails.
    void Commit();

    /// The number of bytes in the file, once committed.
    unsigned long long Bytes() const { return bytes; }

    /// Commits files that belong together: where one cannot be, none is. What goes to standard
    /// output goes first, as it cannot be taken back.
    static void CommitTogether(const std::vector<OutputFile*>& files);

  private:
    void Finish();
    void Place(bool keepOld);
    void TakeBack();
    void SyncFolder();
    void CopyToStandardOutput();
    [[noreturn]] void Fail(const std::string& reason) const;

    std::string target;
    bool force;
    UnfinishedFile file;
    int nameless = -1;  ///< what goes to standard output
    unsigned long long bytes = 0;
};

/// How messages name a target.
std::string TargetName(const std::string& target);

}  // namespace ZVSmartModel::Tool
