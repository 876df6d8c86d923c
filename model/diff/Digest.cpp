#include "model/diff/Digest.h"

namespace ZVSmartModel {

using ZVSmartFormat::u64;
using ZVSmartFormat::u8;
using ZVSmartSerial::CZVFTSerialWriter;

u64 Digest::Sink::Write(const void* buffer, u64 size) {
    constexpr u64 prime = 0x100000001B3;
    const auto* const bytes = static_cast<const u8*>(buffer);
    u64 mixed = value;  // a local keeps the loop in registers
    for (u64 i = 0; i < size; ++i) mixed = (mixed ^ bytes[i]) * prime;
    value = mixed;
    written += size;
    return size;
}

void WriteProperties(CZVFTSerialWriter& writer, const ZVSmartZvg::PropertyList& properties) {
    writer.WriteU64(properties.size());
    for (const auto& [name, value] : properties) {
        writer.WriteWString(name);
        writer.WriteWString(value);
    }
}

void WriteAttributes(CZVFTSerialWriter& writer, const ZVSmartZvg::SZVLGZvgDisplayAttr& attr) {
    writer.WriteU16(attr.flags);
    writer.WriteU32(attr.flags2);
    for (const u8 channel :
         {attr.red, attr.green, attr.blue, attr.alpha, attr.red2, attr.green2, attr.blue2,
          attr.alpha2, attr.fillRed, attr.fillGreen, attr.fillBlue, attr.fillAlpha}) {
        writer.WriteU8(channel);
    }
    for (const double real : {attr.real1, attr.real2, attr.real3, attr.real4, attr.real5,
                              attr.real6, attr.fillReal, attr.hatchReal}) {
        writer.WriteF64(real);
    }
    for (const std::wstring* text :
         {&attr.styleName, &attr.name2, &attr.name3, &attr.fillName, &attr.hatchName}) {
        writer.WriteWString(*text);
    }
    writer.WriteU32(attr.zBufferSize);
    writer.WriteU32(attr.lineValue);
    writer.WriteU8(attr.lineByte);
    writer.WriteU8(attr.extraByte);
    writer.WriteU32(attr.last32);
    attr.transf.WriteSerial(&writer, 1);
    WriteProperties(writer, attr.properties);
}

}  // namespace ZVSmartModel
