#include "tools/zvg/diff/Digest.h"

using ZVSmartFormat::u64;
using ZVSmartFormat::u8;

u64 Digest::Sink::Write(const void* buffer, u64 size) {
    constexpr u64 prime = 0x100000001B3;
    const auto* const bytes = static_cast<const u8*>(buffer);
    u64 mixed = value;  // a local keeps the loop in registers
    for (u64 i = 0; i < size; ++i) mixed = (mixed ^ bytes[i]) * prime;
    value = mixed;
    written += size;
    return size;
}
