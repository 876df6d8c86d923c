#include "bench/MemoryCount.h"

#include <dlfcn.h>
#include <lzma.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

// The program's own malloc and its kin: each allocation carries its size and its owner ahead of
// it. They stand on glibc's own functions under their other names.

extern "C" {
void* __libc_malloc(std::size_t size);
void __libc_free(void* memory);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace bench {

namespace {

thread_local Owner atWork = Owner::host;

std::atomic<std::size_t> libraryBytes{0};
std::atomic<std::size_t> libraryPeak{0};

constexpr std::size_t scratchBytes = 20 << 20;

enum class Account : std::uint32_t { none, library, scratch };

struct Header {
    std::size_t size;
    std::uint32_t offset;  // from what glibc gave to what the caller has
    Account account;
};
static_assert(sizeof(Header) == 16);

Header* HeaderOf(void* memory) {
    return static_cast<Header*>(memory) - 1;
}

Account AccountOf(std::size_t size) {
    if (atWork != Owner::library) return Account::none;
    return size == scratchBytes ? Account::scratch : Account::library;
}

void* Enter(char* block, std::size_t offset, std::size_t size, Account account) {
    if (block == nullptr) return nullptr;
    void* const memory = block + offset;
    *HeaderOf(memory) = {size, static_cast<std::uint32_t>(offset), account};
    if (account != Account::library) return memory;
    const std::size_t now = libraryBytes += size;
    if (now > libraryPeak) libraryPeak = now;
    return memory;
}

void* Allocate(std::size_t size, Account account) {
    if (size > SIZE_MAX - sizeof(Header)) return nullptr;
    return Enter(static_cast<char*>(__libc_malloc(sizeof(Header) + size)), sizeof(Header), size,
                 account);
}

void* AllocateAligned(std::size_t alignment, std::size_t size) {
    const std::size_t offset = alignment > sizeof(Header) ? alignment : sizeof(Header);
    if (size > SIZE_MAX - offset) return nullptr;
    return Enter(static_cast<char*>(__libc_memalign(offset, offset + size)), offset, size,
                 AccountOf(size));
}

void Release(void* memory) {
    if (memory == nullptr) return;
    const Header header = *HeaderOf(memory);
    if (header.account == Account::library) libraryBytes -= header.size;
    __libc_free(static_cast<char*>(memory) - header.offset);
}

/// The function that would be called if this program did not have one of its name.
template <class Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

AtWork::AtWork(Owner owner) : before(atWork) {
    atWork = owner;
}
AtWork::~AtWork() {
    atWork = before;
}

std::size_t LibraryBytes() {
    return libraryBytes;
}
std::size_t LibraryPeak() {
    return libraryPeak;
}
void ResetPeak() {
    libraryPeak = libraryBytes.load();
}

}  // namespace bench

using namespace bench;

extern "C" {

void* malloc(std::size_t size) {
    return Allocate(size, AccountOf(size));
}

void free(void* memory) {
    Release(memory);
}

void* calloc(std::size_t count, std::size_t size) {
    if (size != 0 && count > SIZE_MAX / size) return nullptr;
    void* const memory = malloc(count * size);
    return memory == nullptr ? nullptr : std::memset(memory, 0, count * size);
}

/// What grows stays on its account: the scratch buffer, and the host's memory streams.
void* realloc(void* memory, std::size_t size) {
    if (memory == nullptr) return malloc(size);
    const Header header = *HeaderOf(memory);
    void* const moved = Allocate(size, header.account);
    if (moved == nullptr) return nullptr;
    std::memcpy(moved, memory, header.size < size ? header.size : size);
    Release(memory);
    return moved;
}

void* memalign(std::size_t alignment, std::size_t size) {
    return AllocateAligned(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return AllocateAligned(alignment, size);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    *memory = AllocateAligned(alignment, size);
    return *memory == nullptr ? ENOMEM : 0;
}

// The calls of liblzma that allocate.

lzma_ret lzma_stream_buffer_encode(lzma_filter* filters, lzma_check check,
                                   const lzma_allocator* allocator, const std::uint8_t* in,
                                   std::size_t inSize, std::uint8_t* out, std::size_t* outPos,
                                   std::size_t outSize) noexcept {
    static auto* const next =
        Next<decltype(lzma_stream_buffer_encode)>("lzma_stream_buffer_encode");
    const AtWork coder(Owner::coder);
    return next(filters, check, allocator, in, inSize, out, outPos, outSize);
}

lzma_ret lzma_stream_decoder(lzma_stream* stream, std::uint64_t memoryLimit,
                             std::uint32_t flags) noexcept {
    static auto* const next = Next<decltype(lzma_stream_decoder)>("lzma_stream_decoder");
    const AtWork coder(Owner::coder);
    return next(stream, memoryLimit, flags);
}

lzma_ret lzma_code(lzma_stream* stream, lzma_action action) noexcept {
    static auto* const next = Next<decltype(lzma_code)>("lzma_code");
    const AtWork coder(Owner::coder);
    return next(stream, action);
}

}  // extern "C"
