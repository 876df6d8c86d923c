#pragma once

#include <type_traits>
#include <vector>

#include "ZVSmartSerial/Serial.h"
#include "stream/Failures.h"
#include "stream/KeyForm.h"

namespace ZVSmartSerial {

/// Visits the fields of a record to write them; the mirror of FieldReader.
class FieldWriter {
  public:
    static constexpr bool reading = false;

    /// `stream` throws what it cannot write.
    explicit FieldWriter(ZVSmartFormat::CZVFTOutStream& stream) : serial(&stream) {}

    void U8(u8 value) { serial.WriteU8(value); }
    void U16(u16 value) { serial.WriteU16(value); }
    void U32(u32 value) { serial.WriteU32(value); }
    void U64(u64 value) { serial.WriteU64(value); }
    void F64(double value) { serial.WriteF64(value); }
    void Text(const std::wstring& text) { serial.WriteWString(text); }
    void Key(const SerialKey& key) { VisitKey(*this, key); }
    /// `byteCount` bytes as they stand.
    void Bytes(const u8* bytes, u64 byteCount) { serial.WriteBytes(bytes, byteCount); }

    /// An object with a serial form of its own.
    template <class Object>
    void Plain(const Object& object) {
        object.WriteSerial(&serial, 1);
    }
    /// The same behind its serial version.
    template <class Object>
    void Versioned(const Object& object) {
        U32(1);
        object.WriteSerial(&serial, 1);
    }

    /// A count and the elements; `smallestBytes` is the reader's concern.
    template <class Element, class Visit>
    void List(const std::vector<Element>& list, u64 /*smallestBytes*/, Visit visit) {
        serial.WriteCount(list.size());
        for (const Element& element : list) visit(element);
    }
    /// The count of what the caller then visits itself, such as a map.
    void Count(u64 count) { serial.WriteCount(count); }
    /// Memory is the reader's concern.
    void Charge(u64 /*count*/, u64 /*elementBytes*/) {}
    void U32List(const std::vector<u32>& list) {
        serial.WriteCount(list.size());
        serial.WriteU32Array(list.data(), list.size());
    }

    /// A count and elements that consist of doubles alone, such as points.
    template <class Element>
    void F64List(const std::vector<Element>& list) {
        static_assert(std::is_standard_layout_v<Element> &&
                      std::is_trivially_copy_constructible_v<Element> &&
                      sizeof(Element) % sizeof(double) == 0);
        serial.WriteCount(list.size());
        serial.WriteF64Array(reinterpret_cast<const double*>(list.data()),
                             u64{list.size()} * (sizeof(Element) / sizeof(double)));
    }

    /// Nothing to drop: the mirror of FieldReader's.
    void DropBuffer(const u8* /*bytes*/) {}
    /// `byteCount` bytes; throws "encode error" where there are none.
    void Buffer(const u8* bytes, u64 byteCount) {
        if (byteCount != 0 && bytes == nullptr) ZVSmartFormat::ThrowNotWritten();
        Bytes(bytes, byteCount);
    }

    CZVFTSerialWriter& Serial() { return serial; }

  private:
    CZVFTSerialWriter serial;
};

}  // namespace ZVSmartSerial
