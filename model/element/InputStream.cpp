#include "model/element/InputStream.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "ZVSmartModel/Error.h"

namespace ZVSmartModel {

using ZVSmartFormat::u64;

namespace {

constexpr u64 bufferBytes = 8192;

}  // namespace

InputStream::InputStream(int descriptor, u64 base, u64 size)
    : descriptor(descriptor), base(base), size(size) {}

InputStream::~InputStream() {
    close(descriptor);
}

std::unique_ptr<InputStream> InputStream::Again() const {
    const int again = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    if (again < 0) throw Error(Status::InputOutput, std::strerror(errno));
    return std::make_unique<InputStream>(again, base, size);
}

bool InputStream::Read(void* buffer, u64* count) {
    char* const bytes = static_cast<char*>(buffer);
    u64 done = 0;
    while (done < *count) {
        u64 got = TakeBuffered(bytes + done, *count - done);
        const bool isSmall = *count - done < bufferBytes;
        if (got == 0 && isSmall) {
            buffered.resize(bufferBytes);
            buffered.resize(ReadSome(buffered.data(), bufferBytes));
            bufferPosition = position;
            got = TakeBuffered(bytes + done, *count - done);
        } else if (got == 0) {
            got = ReadSome(bytes + done, *count - done);
        }
        if (got == 0) break;
        done += got;
        position += got;
    }
    const bool isWhole = done == *count || failure == 0;
    *count = done;
    return isWhole;
}

/// Reads at the position without moving it; 0 at the end and where that fails.
u64 InputStream::ReadSome(void* buffer, u64 most) {
    ssize_t got = -1;
    do {
        got = pread(descriptor, buffer, most, static_cast<off_t>(base + position));
    } while (got < 0 && errno == EINTR);
    if (got >= 0) return static_cast<u64>(got);
    if (failure == 0) failure = errno;
    return 0;
}

u64 InputStream::TakeBuffered(void* buffer, u64 most) {
    const u64 begin = position - bufferPosition;  // wraps where the position is before it
    if (begin >= buffered.size()) return 0;
    const u64 count = std::min(most, buffered.size() - begin);
    std::memcpy(buffer, buffered.data() + begin, count);
    return count;
}

int InputStream::Seek(u64 pos) {
    if (pos > static_cast<u64>(INT64_MAX) - base) return -1;
    position = pos;
    return 0;
}

}  // namespace ZVSmartModel
