#include "ZVSmartFormat/LzmaReadBufferInStream.h"

#include <cstdlib>
#include <cstring>

#include "stream/Failures.h"

namespace ZVSmartFormat {

namespace {

constexpr u64 copyCapacity = 65'736;

}  // namespace

CZVFTLzmaReadBufferInStream::CZVFTLzmaReadBufferInStream() : CZVFTReadBufferInStream(nullptr, 0) {}

CZVFTLzmaReadBufferInStream::~CZVFTLzmaReadBufferInStream() {
    std::free(ownCopy);
}

void CZVFTLzmaReadBufferInStream::SetBuffer(const void* bytes, u64 byteCount) {
    if (byteCount < copyCapacity) {
        if (ownCopy == nullptr) ownCopy = static_cast<u8*>(std::calloc(1, copyCapacity));
        if (ownCopy == nullptr) ThrowNotAllocated();
        if (byteCount != 0) std::memmove(ownCopy, bytes, byteCount);
        data = ownCopy;
        size = copyCapacity;
    } else {
        data = static_cast<const u8*>(bytes);
        size = byteCount;
    }
    pos = 0;
    dataSize = byteCount;
}

bool CZVFTLzmaReadBufferInStream::Read(void* buffer, u64* byteCount) {
    const u64 left = pos < dataSize ? dataSize - pos : 0;
    if (*byteCount > left) *byteCount = left;
    if (*byteCount != 0) std::memcpy(buffer, data + pos, *byteCount);
    pos += *byteCount;
    return true;
}

u64 CZVFTLzmaReadBufferInStream::GetSize() {
    return dataSize;
}

}  // namespace ZVSmartFormat
