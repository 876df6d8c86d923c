#include "siblings/format/LargePages.h"

#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#endif

namespace ZVSmartLzma {

#ifdef __linux__
void PreferLargePages(void* memory, std::size_t byteCount) {
    constexpr std::size_t largePage = 2 << 20;
    if (memory == nullptr || byteCount < largePage) return;
    // From the page that the bytes begin in: what the allocator has before them lies there as well,
    // and a mapping that begins at a large page would miss its first one.
    static const auto pageBytes = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const std::size_t before = reinterpret_cast<std::uintptr_t>(memory) % pageBytes;
    // A system without them refuses; nothing is lost by that.
    static_cast<void>(
        madvise(static_cast<char*>(memory) - before, before + byteCount, MADV_HUGEPAGE));
}
#else
void PreferLargePages(void*, std::size_t) {}
#endif

}  // namespace ZVSmartLzma
