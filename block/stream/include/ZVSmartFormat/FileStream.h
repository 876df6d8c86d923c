#pragma once

#include <cstdio>
#include <string>

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartFormat {

/// Reads a file through the C library. Throws nothing.
class ZVFT_API CZVFTFileInStream : public CZVFTInStream {
  public:
    /// Remembers `path`, in the file system's narrow encoding; opens nothing yet. With
    /// `forWrite` the file is created or emptied when it is opened.
    explicit CZVFTFileInStream(const std::string& path, bool forWrite = false);
    /// Closes the file.
    ~CZVFTFileInStream() override;

    /// Opens the file; false where that fails or the path is empty.
    bool Open();
    /// Closes the file; does nothing while it is closed.
    void Close();

    /// Reads up to `*size` bytes; at the end of the file `*size` becomes the count there was and
    /// the result is still true. False on a read error or while closed.
    bool Read(void* buffer, u64* size) override;
    u64 GetPos() override;
    int Seek(u64 pos) override;
    /// The file's size; the position stays where it was. 0 while closed.
    u64 GetSize() override;

  private:
    std::FILE* file = nullptr;
    std::string path;
    bool forWrite;
};

/// Writes a file through the C library. Throws nothing.
class ZVFT_API CZVFTFileOutStream : public CZVFTOutStream {
  public:
    /// Remembers `path`, in the file system's narrow encoding; opens nothing yet. Without
    /// `forWrite` the file is opened for reading only and every write is short.
    explicit CZVFTFileOutStream(const std::string& path, bool forWrite = true);
    /// Closes the file.
    ~CZVFTFileOutStream() override;

    /// Opens the file, which is created or emptied; false where that fails or the path is empty.
    bool Open();
    /// Flushes and closes the file; does nothing while it is closed.
    void Close();

    /// Returns the count written; 0 while closed.
    u64 Write(const void* buffer, u64 size) override;
    /// The position; all bits set while the file is closed or after a failed flush, so that a
    /// caller who asks sees that bytes were lost.
    u64 GetPos() override;
    /// Also hands what was written so far to the system.
    int Seek(u64 pos) override;
    /// Does nothing and returns true.
    bool Reserve(u64 size) override;

  private:
    std::FILE* file = nullptr;
    std::string path;
    bool forWrite;
};

}  // namespace ZVSmartFormat
