#pragma once

#include <string>

namespace ZVSmartModel::Tool {

/// A file on its way to the place of `target`, in the same folder. It has no name yet, so that
/// nothing of it stays however the process ends; where the file system knows no such files it has
/// a temporary name, which goes with this object and on a signal. Two at a time may exist.
///
/// What fails here returns false, or is negative, with the reason in `errno`.
class UnfinishedFile {
  public:
    UnfinishedFile() = default;
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    /// Makes the file, open for reading and writing.
    bool Create(const std::string& target);

    int Descriptor() const { return descriptor; }

    /// Has the system keep what was written so far.
    bool Sync() const;

    /// Gives the file the target's name, and replaces what bears it where `replace` is set. What
    /// is replaced stays beside it where `keepOld` is set, until `ForgetOld`.
    bool Place(bool replace, bool keepOld);

    /// Undoes `Place`: the target is what it was, or is not there as before.
    bool TakeBack();
    /// The name of what was replaced; empty where nothing was, or where it is gone.
    const std::string& OldName() const { return oldName; }
    void ForgetOld();

    /// Has the system keep the names in the target's folder.
    bool SyncFolder() const;

  private:
    bool CreateNamed();
    bool GiveName();
    bool KeepOld();
    std::string FreeName();
    std::string Folder() const;

    std::string target;
    std::string name;     ///< the temporary one; empty while there is none
    std::string oldName;  ///< of what was replaced
    int descriptor = -1;
    int namesTaken = 0;
};

}  // namespace ZVSmartModel::Tool
