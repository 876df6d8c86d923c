#include "ZVSmartSerial/Serial.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <vector>

#include "stream/ByteOrder.h"
#include "stream/Failures.h"
#include "stream/FieldWriter.h"
#include "stream/KeyForm.h"
#include "stream/WideText.h"

namespace ZVSmartSerial {

using ZVSmartFormat::CZVFTInStream;
using ZVSmartFormat::CZVFTOutStream;
using ZVSmartFormat::LoadBigEndian;
using ZVSmartFormat::StoreBigEndian;
using ZVSmartFormat::ThrowNotWritten;
using ZVSmartFormat::ThrowOutOfData;
using ZVSmartFormat::ToBigEndian;

bool operator==(const SerialGuid& a, const SerialGuid& b) {
    return a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3 &&
           std::equal(std::begin(a.Data4), std::end(a.Data4), std::begin(b.Data4));
}

bool operator!=(const SerialGuid& a, const SerialGuid& b) {
    return !(a == b);
}

SerialKey::SerialKey() = default;
SerialKey::SerialKey(const std::wstring& name) : name(name) {}
SerialKey::SerialKey(const wchar_t* name) : name(name) {}
SerialKey::SerialKey(const SerialGuid& guid) : guid(guid), name() {}
SerialKey::SerialKey(const SerialGuid& guid, const std::wstring& name) : guid(guid), name(name) {}

bool operator==(const SerialKey& a, const SerialKey& b) {
    return a.guid == b.guid && a.name == b.name;
}

bool operator!=(const SerialKey& a, const SerialKey& b) {
    return !(a == b);
}

namespace {

/// Reads `byteCount` bytes; what the stream does not deliver is zero.
void ReadOrZero(CZVFTInStream& stream, void* bytes, u64 byteCount) {
    u64 delivered = byteCount;
    if (!stream.Read(bytes, &delivered)) delivered = 0;
    if (delivered >= byteCount) return;
    std::memset(static_cast<u8*>(bytes) + delivered, 0,
                static_cast<std::size_t>(byteCount - delivered));
}

template <class Unsigned>
Unsigned ReadValue(CZVFTInStream& stream) {
    u8 bytes[sizeof(Unsigned)];
    ReadOrZero(stream, bytes, sizeof bytes);
    return LoadBigEndian<Unsigned>(bytes);
}

template <class Unsigned>
void WriteValue(CZVFTOutStream& stream, Unsigned value) {
    u8 bytes[sizeof(Unsigned)];
    StoreBigEndian(value, bytes);
    stream.Write(bytes, sizeof bytes);
}

/// Swaps values of the width of `Unsigned` in place, whatever their own type.
template <class Unsigned, class Value>
void SwapArray(Value* values, u64 count) {
    static_assert(sizeof(Unsigned) == sizeof(Value));
    for (u64 i = 0; i < count; ++i)
        values[i] = std::bit_cast<Value>(ToBigEndian(std::bit_cast<Unsigned>(values[i])));
}

template <class Unsigned, class Value>
void WriteArray(CZVFTOutStream& stream, const Value* values, u64 count) {
    constexpr u64 pieceSize = 16'384 / sizeof(Value);
    Value piece[pieceSize];
    while (count != 0) {
        const u64 n = std::min(count, pieceSize);
        std::memcpy(piece, values, static_cast<std::size_t>(n) * sizeof(Value));
        SwapArray<Unsigned>(piece, n);
        stream.Write(piece, n * sizeof(Value));
        values += n;
        count -= n;
    }
}

}  // namespace

CZVFTSerialReader::CZVFTSerialReader(CZVFTInStream* stream) : stream(stream) {}

u8 CZVFTSerialReader::ReadU8() {
    return ReadValue<u8>(*stream);
}
u16 CZVFTSerialReader::ReadU16() {
    return ReadValue<u16>(*stream);
}
u32 CZVFTSerialReader::ReadU32() {
    return ReadValue<u32>(*stream);
}
u64 CZVFTSerialReader::ReadU64() {
    return ReadValue<u64>(*stream);
}
double CZVFTSerialReader::ReadF64() {
    return std::bit_cast<double>(ReadU64());
}

void CZVFTSerialReader::ReadWString(std::wstring& text) {
    const u64 unitCount = ReadCount(2);
    constexpr u64 shortUnits = 64;
    u8 shortBytes[2 * shortUnits];
    if (unitCount <= shortUnits) {
        if (unitCount != 0) ReadOrZero(*stream, shortBytes, 2 * unitCount);
        ZVSmartFormat::LoadUtf16(shortBytes, unitCount, text);
        return;
    }
    std::vector<u8> bytes(static_cast<std::size_t>(2 * unitCount));
    ReadOrZero(*stream, bytes.data(), bytes.size());
    ZVSmartFormat::LoadUtf16(bytes.data(), unitCount, text);
}

namespace {

/// A key's fields from a host's stream.
struct KeyReader {
    static constexpr bool reading = true;

    void Text(std::wstring& text) { reader.ReadWString(text); }
    void U16(u16& value) { value = reader.ReadU16(); }
    void U64(u64& value) { value = reader.ReadU64(); }
    void Bytes(u8* bytes, u64 count) { reader.ReadBytes(bytes, count); }

    CZVFTSerialReader& reader;
};

}  // namespace

void CZVFTSerialReader::ReadKey(SerialKey& key) {
    KeyReader reader = {*this};
    VisitKey(reader, key);
}

void CZVFTSerialReader::ReadU32Array(u32* values, u64 count) {
    ReadOrZero(*stream, values, count * sizeof(u32));
    SwapArray<u32>(values, count);
}

void CZVFTSerialReader::ReadF64Array(double* values, u64 count) {
    ReadOrZero(*stream, values, count * sizeof(double));
    SwapArray<u64>(values, count);
}

void CZVFTSerialReader::ReadBytes(void* bytes, u64 count) {
    if (count != 0) ReadOrZero(*stream, bytes, count);
}

u32 CZVFTSerialReader::ReadCount(u64 smallestElementBytes) {
    const u32 count = ReadU32();
    if (count != 0 && count > BytesLeft() / smallestElementBytes) ThrowOutOfData();
    return count;
}

u64 CZVFTSerialReader::BytesLeft() {
    const u64 size = stream->GetSize();
    const u64 pos = stream->GetPos();
    return pos < size ? size - pos : 0;
}

CZVFTSerialWriter::CZVFTSerialWriter(CZVFTOutStream* stream) : stream(stream) {}

void CZVFTSerialWriter::WriteU8(u8 value) {
    WriteValue(*stream, value);
}
void CZVFTSerialWriter::WriteU16(u16 value) {
    WriteValue(*stream, value);
}
void CZVFTSerialWriter::WriteU32(u32 value) {
    WriteValue(*stream, value);
}
void CZVFTSerialWriter::WriteU64(u64 value) {
    WriteValue(*stream, value);
}
void CZVFTSerialWriter::WriteF64(double value) {
    WriteU64(std::bit_cast<u64>(value));
}

void CZVFTSerialWriter::WriteWString(const std::wstring& text) {
    const u64 unitCount = ZVSmartFormat::Utf16UnitCount(text);
    constexpr u64 shortUnits = 126;
    u8 shortBytes[4 + 2 * shortUnits];
    std::vector<u8> longBytes;
    u8* bytes = shortBytes;
    if (unitCount > shortUnits) {
        if (unitCount > std::numeric_limits<u32>::max()) ThrowNotWritten();
        longBytes.resize(static_cast<std::size_t>(4 + 2 * unitCount));
        bytes = longBytes.data();
    }
    StoreBigEndian(static_cast<u32>(unitCount), bytes);
    ZVSmartFormat::StoreUtf16(text, bytes + 4);
    stream->Write(bytes, 4 + 2 * unitCount);
}

void CZVFTSerialWriter::WriteKey(const SerialKey& key) {
    FieldWriter writer(*stream);
    VisitKey(writer, key);
}

void CZVFTSerialWriter::WriteU32Array(const u32* values, u64 count) {
    WriteArray<u32>(*stream, values, count);
}

void CZVFTSerialWriter::WriteF64Array(const double* values, u64 count) {
    WriteArray<u64>(*stream, values, count);
}

void CZVFTSerialWriter::WriteBytes(const void* bytes, u64 count) {
    if (count != 0) stream->Write(bytes, count);
}

void CZVFTSerialWriter::WriteCount(u64 count) {
    if (count > std::numeric_limits<u32>::max()) ThrowNotWritten();
    WriteU32(static_cast<u32>(count));
}

}  // namespace ZVSmartSerial
