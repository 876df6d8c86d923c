#include "container/Seal.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "stream/ByteOrder.h"
#include "stream/Failures.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::LoadBigEndian;
using ZVSmartFormat::StoreBigEndian;
using ZVSmartFormat::u8;

namespace {

constexpr std::array<char, 8> sealMagic = {'z', 'v', 'g', 's', 'e', 'a', 'l', '\0'};

}  // namespace

u64 SealingOutStream::Write(const void* buffer, u64 size) {
    const u64 written = inner.Write(buffer, size);
    const u8* const bytes = static_cast<const u8*>(buffer);
    const u64 replaced = std::min(std::min(written, size), end - pos);
    const u64 appended = std::min(written, size) - replaced;
    if (replaced != 0) crc.ReplaceZeros(bytes, replaced, end - pos - replaced);
    if (appended != 0) crc.Append(bytes + replaced, appended);
    pos += replaced + appended;
    end += appended;
    return written;
}

int SealingOutStream::Seek(u64 newPos) {
    if (newPos < basePos || newPos - basePos > end) ZVSmartFormat::ThrowNotWritten();
    pos = newPos - basePos;
    return inner.Seek(newPos);
}

void SealingOutStream::WriteSeal() {
    u8 bytes[sealBytes];
    std::memcpy(bytes, sealMagic.data(), sealMagic.size());
    StoreBigEndian(end, bytes + 8);
    StoreBigEndian(crc.Value(), bytes + 16);
    if (inner.Write(bytes, sealBytes) != sealBytes || inner.GetPos() != basePos + end + sealBytes)
        ZVSmartFormat::ThrowNotWritten();
}

Seal ReadSeal(CheckedInStream& in) {
    const u8* const bytes = in.Take(sealBytes);
    return {std::memcmp(bytes, sealMagic.data(), sealMagic.size()) == 0,
            LoadBigEndian<u64>(bytes + 8), LoadBigEndian<u64>(bytes + 16)};
}

u64 CrcOf(CheckedInStream& in, u64 byteCount) {
    constexpr u64 pieceBytes = 64 << 10;
    Crc64 crc;
    while (byteCount != 0) {
        const u64 piece = std::min(byteCount, pieceBytes);
        crc.Append(in.Take(piece), piece);
        byteCount -= piece;
    }
    return crc.Value();
}

}  // namespace ZVSmartZvg
