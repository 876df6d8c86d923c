#pragma once

#include "ZVSmartSerial/Serial.h"

// Layout of a value, every number big-endian:
//   u8, u16, u32, u64   1, 2, 4, 8 bytes;   f64   the 8 bytes of an IEEE 754 double
//   text       u32 count of UTF-16 units, the units
//   GUID name  text; only where it is empty: u64 Data1, u16 Data2, u16 Data3, 8 × u8 Data4

namespace ZVSmartSerial {

/// A GUID name, told once for all readers and writers of values. A GUID that is not there stays.
template <class Visitor, class Key>
void VisitKey(Visitor& visitor, Key& key) {
    visitor.Text(key.name);
    if (!key.name.empty()) return;
    u64 data1 = key.guid.Data1;
    visitor.U64(data1);
    if constexpr (Visitor::reading) key.guid.Data1 = static_cast<u32>(data1);
    visitor.U16(key.guid.Data2);
    visitor.U16(key.guid.Data3);
    visitor.Bytes(key.guid.Data4, sizeof key.guid.Data4);
}

}  // namespace ZVSmartSerial
