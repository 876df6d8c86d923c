#pragma once

#include <type_traits>
#include <vector>

#include "ZVSmartSerial/Serial.h"

// Values that consist of doubles alone go to and from the stream as runs of doubles, in few calls
// whatever their number: models hold millions of points.

namespace ZVIM {

using ZVSmartSerial::CZVFTSerialReader;
using ZVSmartSerial::CZVFTSerialWriter;
using ZVSmartSerial::u32;
using ZVSmartSerial::u64;

/// How many doubles a `Value` is made of. Nothing can check that its members are doubles.
template <class Value>
constexpr u64 DoublesIn() {
    static_assert(std::is_standard_layout_v<Value> && std::is_trivially_copyable_v<Value>);
    static_assert(sizeof(Value) % sizeof(double) == 0 && alignof(Value) == alignof(double));
    return sizeof(Value) / sizeof(double);
}

template <class Value>
void WriteDoubles(CZVFTSerialWriter* writer, const Value& value) {
    writer->WriteF64Array(reinterpret_cast<const double*>(&value), DoublesIn<Value>());
}

template <class Value>
void ReadDoubles(CZVFTSerialReader* reader, Value& value) {
    reader->ReadF64Array(reinterpret_cast<double*>(&value), DoublesIn<Value>());
}

template <class Value>
void WriteDoublesList(CZVFTSerialWriter* writer, const std::vector<Value>& list) {
    writer->WriteCount(list.size());
    writer->WriteF64Array(reinterpret_cast<const double*>(list.data()),
                          list.size() * DoublesIn<Value>());
}

template <class Value>
void ReadDoublesList(CZVFTSerialReader* reader, std::vector<Value>& list) {
    const u32 count = reader->ReadCount(sizeof(Value));
    list.resize(count);
    if (count == 0) return;
    reader->ReadF64Array(reinterpret_cast<double*>(list.data()), count * DoublesIn<Value>());
}

/// `Number` is u32, or int, whose bits are stored as they stand.
template <class Number>
void WriteNumberList(CZVFTSerialWriter* writer, const std::vector<Number>& list) {
    static_assert(std::is_same_v<std::make_unsigned_t<Number>, u32>);
    writer->WriteCount(list.size());
    writer->WriteU32Array(reinterpret_cast<const u32*>(list.data()), list.size());
}

template <class Number>
void ReadNumberList(CZVFTSerialReader* reader, std::vector<Number>& list) {
    static_assert(std::is_same_v<std::make_unsigned_t<Number>, u32>);
    const u32 count = reader->ReadCount(sizeof(u32));
    list.resize(count);
    if (count == 0) return;
    reader->ReadU32Array(reinterpret_cast<u32*>(list.data()), count);
}

}  // namespace ZVIM
