#include "model/import/ifc/SteadyMemory.h"

#include <sys/mman.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace ZVSmartModel {

namespace {

// Inside every 64-bit address space, and far from where programs, heaps and libraries are put.
constexpr std::uintptr_t firstAddress = 0x1000000000;
constexpr std::size_t unit = 16;
constexpr std::size_t smallestPiece = std::size_t{16} << 20;

/// What is handed out begins behind the head, at a multiple of the unit; while the block is free,
/// it leads to the next free one of its size.
struct Block {
    std::size_t sizeClass;
    Block* next;
};
constexpr std::size_t headBytes = offsetof(Block, next);

struct SizeClass {
    std::size_t number, units;
};

/// Of a block with its head: multiples of the unit up to 64 of them, then four sizes to each
/// doubling.
SizeClass ClassOf(std::size_t byteCount) {
    constexpr std::size_t finest = 64;
    const std::size_t units = (byteCount + headBytes + unit - 1) / unit;
    if (units <= finest) return {units, units};
    const auto shift = static_cast<std::size_t>(std::bit_width(units - 1)) - 3;
    const std::size_t step = (units - 1) >> shift;  // 4 to 7
    return {finest + (shift - 4) * 4 + step - 3, (step + 1) << shift};
}

/// Grows and never shrinks; what is given back is handed out again, the latest first.
class Arena {
  public:
    bool Holds(const void* memory) const {
        const auto address = reinterpret_cast<std::uintptr_t>(memory);
        return address >= firstAddress && address < end;
    }
    /// Null where there is no memory, or something else has its place.
    void* Take(std::size_t byteCount) {
        if (byteCount > mostBytes) return nullptr;
        const SizeClass size = ClassOf(byteCount);
        Block*& free = freeBlocks[size.number];
        if (free != nullptr) {
            Block* const block = free;
            free = block->next;
            return &block->next;
        }
        const std::size_t blockBytes = size.units * unit;
        const std::uintptr_t blockEnd = next + blockBytes;
        if (blockEnd > end && !Grow(blockEnd - end)) return nullptr;
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the addresses are chosen here
        auto* const block = new (reinterpret_cast<void*>(next)) Block{size.number, nullptr};
        next = blockEnd;
        return &block->next;
    }
    void GiveBack(void* memory) {
        auto* const block = reinterpret_cast<Block*>(static_cast<char*>(memory) - headBytes);
        Block*& free = freeBlocks[block->sizeClass];
        block->next = free;
        free = block;
    }

    unsigned int users = 0;

  private:
    static constexpr std::size_t mostBytes = std::size_t{1} << 40;

    bool Grow(std::size_t byteCount) {
        const std::size_t pieces = byteCount / smallestPiece + 1;
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        void* const place = reinterpret_cast<void*>(end);
        void* const got =
            mmap(place, pieces * smallestPiece, PROT_READ | PROT_WRITE,
                 MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED_NOREPLACE, -1, 0);
        if (got == MAP_FAILED) return false;
        if (got != place) {  // kernels that do not know the last flag
            munmap(got, pieces * smallestPiece);
            return false;
        }
        madvise(got, pieces * smallestPiece, MADV_HUGEPAGE);
        end += pieces * smallestPiece;
        return true;
    }

    std::uintptr_t next = firstAddress + unit - headBytes;
    std::uintptr_t end = firstAddress;
    Block* freeBlocks[256] = {};
};

constinit Arena arena;  // ready before anything else is, as `new` must be

}  // namespace

SteadyMemory::SteadyMemory() {
    ++arena.users;
}

SteadyMemory::~SteadyMemory() {
    --arena.users;
}

}  // namespace ZVSmartModel

// The address sanitizer has its own, which sees what is done wrong.
#ifndef __SANITIZE_ADDRESS__

void* operator new(std::size_t byteCount) {
    if (ZVSmartModel::arena.users != 0) {
        if (void* const memory = ZVSmartModel::arena.Take(byteCount)) return memory;
    }
    while (true) {
        if (void* const memory = std::malloc(byteCount == 0 ? 1 : byteCount)) return memory;
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr) throw std::bad_alloc();
        handler();
    }
}

void operator delete(void* memory) noexcept {
    if (ZVSmartModel::arena.Holds(memory)) {
        ZVSmartModel::arena.GiveBack(memory);
    } else {
        std::free(memory);
    }
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

#endif
