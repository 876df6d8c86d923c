#include "ZVSmartFormat/MemoryStream.h"

#include <cstdlib>
#include <cstring>
#include <limits>

#include "stream/Failures.h"

namespace ZVSmartFormat {

CZVFTInStream::~CZVFTInStream() = default;
CZVFTOutStream::~CZVFTOutStream() = default;

CZVFTReadBufferInStream::CZVFTReadBufferInStream(const void* data, u64 size)
    : data(static_cast<const u8*>(data)), size(size) {}

bool CZVFTReadBufferInStream::Read(void* buffer, u64* byteCount) {
    if (*byteCount > size - pos) return false;
    if (*byteCount != 0) std::memcpy(buffer, data + pos, *byteCount);
    pos += *byteCount;
    return true;
}

u64 CZVFTReadBufferInStream::GetPos() {
    return pos;
}

int CZVFTReadBufferInStream::Seek(u64 newPos) {
    if (newPos > size) ThrowOutOfData();
    pos = newPos;
    return 0;
}

u64 CZVFTReadBufferInStream::GetSize() {
    return size;
}

namespace {

bool Resize(AllocBuffer& buffer, u64 capacity) {
    if (capacity > std::numeric_limits<std::size_t>::max()) return false;
    void* const data = buffer.data == nullptr
                           ? std::malloc(static_cast<std::size_t>(capacity))
                           : std::realloc(buffer.data, static_cast<std::size_t>(capacity));
    if (data == nullptr) return false;
    buffer.data = static_cast<u8*>(data);
    buffer.capacity = capacity;
    return true;
}

void GrowFor(AllocBuffer& buffer, u64 byteCount) {
    constexpr u64 slack = 256;
    u64 extra = buffer.capacity / 3;
    if (byteCount > extra) {
        if (byteCount > std::numeric_limits<u64>::max() - slack) ThrowNotGrown();
        extra = byteCount + slack;
    }
    if (extra > std::numeric_limits<u64>::max() - buffer.capacity) ThrowNotGrown();
    if (!Resize(buffer, buffer.capacity + extra)) ThrowNotGrown();
}

}  // namespace

CZVFTAllocBufferOutStream::CZVFTAllocBufferOutStream(AllocBuffer* buffer) : target(buffer) {}

u64 CZVFTAllocBufferOutStream::Write(const void* buffer, u64 size) {
    u8* const bytes = Extend(size);
    if (size != 0) std::memcpy(bytes, buffer, size);
    return size;
}

u8* CZVFTAllocBufferOutStream::Extend(u64 size) {
    if (size > target->capacity - pos) GrowFor(*target, size);
    u8* const bytes = target->data + pos;
    pos += size;
    return bytes;
}

u64 CZVFTAllocBufferOutStream::GetPos() {
    return pos;
}

int CZVFTAllocBufferOutStream::Seek(u64 newPos) {
    if (newPos > target->capacity) ThrowOutOfData();
    pos = newPos;
    return 0;
}

bool CZVFTAllocBufferOutStream::Reserve(u64 size) {
    if (target->capacity >= size) return true;
    if (!Resize(*target, size)) ThrowNotAllocated();
    return true;
}

}  // namespace ZVSmartFormat
