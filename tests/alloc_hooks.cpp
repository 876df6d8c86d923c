#include "alloc_hooks.h"

#include <malloc.h>

#include <atomic>
#include <cerrno>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__GLIBC__)
#define ZVG_WITHOUT_HOOKS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZVG_WITHOUT_HOOKS
#endif
#endif

namespace AllocHooks {

namespace {

std::atomic<long> untilFailure{-1};
std::atomic<bool> failsForGood{false};
std::atomic<bool> hasFailed{false};
std::atomic<std::size_t> inUse{0};
std::atomic<std::size_t> peak{0};

}  // namespace

void FailAt(long n, bool forGood) {
    failsForGood = forGood;
    hasFailed = false;
    untilFailure = n;
}

bool Stop() {
    untilFailure = -1;
    return hasFailed;
}

std::size_t BytesInUse() {
    return inUse;
}
std::size_t PeakBytes() {
    return peak;
}
void ResetPeak() {
    peak = inUse.load();
}

}  // namespace AllocHooks

#ifdef ZVG_WITHOUT_HOOKS

const bool AllocHooks::available = false;

#else

const bool AllocHooks::available = true;

namespace AllocHooks {
namespace {

bool MustFail() {
    long left = untilFailure.load(std::memory_order_relaxed);
    while (left > 0) {
        if (untilFailure.compare_exchange_weak(left, left - 1)) return false;
    }
    if (left < 0) return false;
    if (!failsForGood) untilFailure = -1;
    hasFailed = true;
    errno = ENOMEM;
    return true;
}

void* Count(void* memory) {
    if (memory == nullptr) return nullptr;
    const std::size_t now = inUse += malloc_usable_size(memory);
    if (now > peak) peak = now;
    return memory;
}

}  // namespace
}  // namespace AllocHooks

extern "C" {

void* __libc_malloc(std::size_t byteCount);
void* __libc_calloc(std::size_t count, std::size_t byteCount);
void* __libc_realloc(void* memory, std::size_t byteCount);
void __libc_free(void* memory);

void* malloc(std::size_t byteCount) {
    return AllocHooks::MustFail() ? nullptr : AllocHooks::Count(__libc_malloc(byteCount));
}

void* calloc(std::size_t count, std::size_t byteCount) {
    return AllocHooks::MustFail() ? nullptr : AllocHooks::Count(__libc_calloc(count, byteCount));
}

void* realloc(void* memory, std::size_t byteCount) {
    if (AllocHooks::MustFail()) return nullptr;
    const std::size_t before = malloc_usable_size(memory);
    void* const moved = __libc_realloc(memory, byteCount);
    if (moved != nullptr) AllocHooks::inUse -= before;
    return AllocHooks::Count(moved);
}

void free(void* memory) {
    AllocHooks::inUse -= malloc_usable_size(memory);
    __libc_free(memory);
}
}

#endif
