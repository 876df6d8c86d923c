#pragma once

#include <memory>
#include <vector>

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartModel {

/// Reads a file through its descriptor, from `base` on, and remembers why the system did not
/// deliver, so that a failing disk is not taken for a damaged file. Streams with one file do not
/// disturb each other.
class InputStream : public ZVSmartFormat::CZVFTInStream {
  public:
    /// Takes over `descriptor`; the stream is `size` bytes long.
    InputStream(int descriptor, ZVSmartFormat::u64 base, ZVSmartFormat::u64 size);
    ~InputStream() override;
    InputStream(const InputStream&) = delete;
    InputStream& operator=(const InputStream&) = delete;

    /// Another stream with the same bytes, at its beginning. Throws Error InputOutput.
    std::unique_ptr<InputStream> Again() const;

    bool Read(void* buffer, ZVSmartFormat::u64* size) override;
    ZVSmartFormat::u64 GetPos() override { return position; }
    int Seek(ZVSmartFormat::u64 pos) override;
    ZVSmartFormat::u64 GetSize() override { return size; }

    /// The `errno` of the first failure; 0 while there is none.
    int Failure() const { return failure; }

  private:
    ZVSmartFormat::u64 ReadSome(void* buffer, ZVSmartFormat::u64 most);
    ZVSmartFormat::u64 TakeBuffered(void* buffer, ZVSmartFormat::u64 most);

    int descriptor;
    ZVSmartFormat::u64 base;
    ZVSmartFormat::u64 size;
    ZVSmartFormat::u64 position = 0;
    std::vector<char> buffered;  ///< for small pieces
    ZVSmartFormat::u64 bufferPosition = 0;
    int failure = 0;
};

}  // namespace ZVSmartModel
