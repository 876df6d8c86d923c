#pragma once

#include <string>

#include "ZVSmartFormat/Stream.h"

/// Values as bytes: every number big-endian, whatever the host; text as UTF-16 units, whatever
/// the width of `wchar_t`.
namespace ZVSmartSerial {

using ZVSmartFormat::u16;
using ZVSmartFormat::u32;
using ZVSmartFormat::u64;
using ZVSmartFormat::u8;

/// A 128-bit identity; all zero means none.
struct SerialGuid {
    u32 Data1 = 0;     ///< digits 1 to 8 of the usual form
    u16 Data2 = 0;     ///< digits 9 to 12
    u16 Data3 = 0;     ///< digits 13 to 16
    u8 Data4[8] = {};  ///< the other 16 digits, two to each
};

/// Whether all 128 bits agree.
/// @{
ZVFT_API bool operator==(const SerialGuid& a, const SerialGuid& b);
ZVFT_API bool operator!=(const SerialGuid& a, const SerialGuid& b);
/// @}

/// A GUID name: an identity by name or by GUID.
///
/// Stored is the name; the GUID only where the name is empty. A saver that looks whether it has an
/// identity already goes by the GUID where that is not all zero, whatever the name, else by the
/// name. So of two keys with one GUID and two names only the first is kept, and two keys of
/// different GUIDs and one name are both stored and read back alike, without their GUIDs.
struct ZVFT_API SerialKey {
    SerialGuid guid;              ///< where not all zero, what tells keys apart while writing
    std::wstring name = L"none";  ///< where not empty, what is stored; "none" says nothing

    /// Says nothing: the name "none".
    SerialKey();
    /// An identity by name.
    /// @{
    SerialKey(const std::wstring& name);
    SerialKey(const wchar_t* name);
    /// @}
    /// Empties the name, so that the GUID is what is stored.
    SerialKey(const SerialGuid& guid);
    /// Both as given; the GUID is stored only where the name is empty.
    SerialKey(const SerialGuid& guid, const std::wstring& name);
};

/// Whether both the names and the GUIDs agree.
/// @{
ZVFT_API bool operator==(const SerialKey& a, const SerialKey& b);
ZVFT_API bool operator!=(const SerialKey& a, const SerialKey& b);
/// @}

/// Reads values from a stream that it borrows.
///
/// A value whose bytes the stream does not deliver reads as zero, unless the stream throws. A
/// count that cannot fit the bytes left in the stream throws CZVFTStreamException
/// "seek over buffer size" before anything is sized, so untrusted bytes are safe.
class ZVFT_API CZVFTSerialReader {
  public:
    /// Reads from `stream`'s position on; `stream` is borrowed and must outlive the reader.
    explicit CZVFTSerialReader(ZVSmartFormat::CZVFTInStream* stream);

    /// The next value: 1, 2, 4 or 8 bytes, big-endian; a double by its IEEE 754 bits.
    /// @{
    u8 ReadU8();
    u16 ReadU16();
    u32 ReadU32();
    u64 ReadU64();
    double ReadF64();
    /// @}

    /// A u32 count of UTF-16 units, then the units. A surrogate pair becomes one character where
    /// `wchar_t` has 32 bits; a lone surrogate passes unchanged.
    void ReadWString(std::wstring& text);
    /// The name, and the GUID only where the name is empty; else the key's GUID stays.
    void ReadKey(SerialKey& key);

    /// `count` values into `values`, in one call of the stream.
    void ReadU32Array(u32* values, u64 count);
    /// `count` values into `values`, in one call of the stream.
    void ReadF64Array(double* values, u64 count);
    /// `count` bytes as they stand.
    void ReadBytes(void* bytes, u64 count);

    /// A u32 count of elements that take at least `smallestElementBytes` (≥ 1) each. Throws
    /// CZVFTStreamException "seek over buffer size" where they cannot all be there.
    u32 ReadCount(u64 smallestElementBytes);
    /// The bytes between the stream's position and its end.
    u64 BytesLeft();

  private:
    ZVSmartFormat::CZVFTInStream* stream;
};

/// Writes values to a stream that it borrows; the mirror of CZVFTSerialReader.
///
/// What the stream fails to write is not reported here: pass a stream that throws, or one of
/// memory.
class ZVFT_API CZVFTSerialWriter {
  public:
    /// Writes from `stream`'s position on; `stream` is borrowed and must outlive the writer.
    explicit CZVFTSerialWriter(ZVSmartFormat::CZVFTOutStream* stream);

    /// The value as 1, 2, 4 or 8 bytes, big-endian; a double by its IEEE 754 bits.
    /// @{
    void WriteU8(u8 value);
    void WriteU16(u16 value);
    void WriteU32(u32 value);
    void WriteU64(u64 value);
    void WriteF64(double value);
    /// @}
    /// A u32 count of UTF-16 units, then the units: a character above U+FFFF as its surrogate pair,
    /// what is no character as U+FFFD. Throws CZVFTStreamException "encode error" where the count
    /// exceeds 32 bits.
    void WriteWString(const std::wstring& text);
    /// The name, and behind it the GUID where the name is empty.
    void WriteKey(const SerialKey& key);

    /// `count` values in one call of the stream per 4096 of them.
    void WriteU32Array(const u32* values, u64 count);
    /// `count` values in one call of the stream per 2048 of them.
    void WriteF64Array(const double* values, u64 count);
    /// `count` bytes as they stand.
    void WriteBytes(const void* bytes, u64 count);

    /// A list's element count as u32. Throws CZVFTStreamException "encode error" above 32 bits.
    void WriteCount(u64 count);

  private:
    ZVSmartFormat::CZVFTOutStream* stream;
};

}  // namespace ZVSmartSerial
