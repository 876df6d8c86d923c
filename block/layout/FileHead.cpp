#include "layout/FileHead.h"

#include <array>
#include <cstring>
#include <utility>

#include "stream/CheckedInStream.h"
#include "stream/Failures.h"
#include "stream/FieldReader.h"
#include "stream/FieldWriter.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::CZVFTInStream;
using ZVSmartFormat::CZVFTOutStream;
using ZVSmartFormat::CZVFTStreamException;
using ZVSmartFormat::u32;
using ZVSmartFormat::u64;
using ZVSmartFormat::u8;
namespace Failure = ZVSmartFormat::Failure;

namespace {

constexpr std::array<char, 9> magic = {'z', 'v', 'g', 'b', 'l', 'o', 'c', 'k', '\0'};

constexpr u8 hasText = 0x80;
constexpr u8 hasValue = 0x40;
constexpr u8 hasTransf = 0x20;
constexpr u8 callersFlags = 0x1F;
constexpr std::int32_t noValue = -1;

u8 FlagsOf(const SZVLGZvgBlockHeadInfo& info) {
    u8 flags = info.flags & callersFlags;
    if (!info.optionalText.empty()) flags |= hasText;
    if (info.optionalValue != noValue) flags |= hasValue;
    if (!info.transf.identity()) flags |= hasTransf;
    return flags;
}

/// Everything from `firstText` on; `flags` is computed by a writer and filled by a reader.
template <class Visitor, class Info>
void VisitHeadInfo(Visitor& visitor, Info& info, u8& flags) {
    visitor.Text(info.firstText);
    visitor.Text(info.secondText);
    visitor.U8(flags);
    if (flags & hasValue) {
        u32 value = static_cast<u32>(info.optionalValue);
        visitor.U32(value);
        if constexpr (Visitor::reading) info.optionalValue = static_cast<std::int32_t>(value);
    }
    if (flags & hasText) visitor.Text(info.optionalText);
    if (flags & hasTransf) visitor.Versioned(info.transf);
}

bool HasMagic(CZVFTInStream& in) {
    std::array<char, magic.size()> bytes = {};
    for (char& byte : bytes) {
        u64 byteCount = 1;
        if (!in.Read(&byte, &byteCount) || byteCount != 1) return false;
    }
    return bytes == magic;
}

}  // namespace

void WriteFileHead(CZVFTOutStream& out, const FileHead& head) {
    ZVSmartSerial::FieldWriter writer(out);
    out.Write(magic.data(), magic.size());
    writer.U32(head.version);
    u8 flags = FlagsOf(head.info);
    VisitHeadInfo(writer, head.info, flags);
}

void ReadFileHead(CZVFTInStream& in, FileHead& head) {
    if (!HasMagic(in)) throw CZVFTStreamException(Failure::foreignFile);
    CheckedInStream checked(in);
    ZVSmartSerial::FieldReader<CheckedInStream> reader(checked);
    FileHead read;
    reader.U32(read.version);
    if (read.version > newestVersion) throw CZVFTStreamException(Failure::newerVersion);
    VisitHeadInfo(reader, read.info, read.info.flags);
    head = std::move(read);
}

}  // namespace ZVSmartZvg
