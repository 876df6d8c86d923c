#pragma once

#include <type_traits>
#include <vector>

#include "ZVIM/Curve.h"
#include "ZVIM/Mesh.h"
#include "ZVIM/Shell.h"
#include "ZVIM/Visual.h"
#include "stream/Failures.h"
#include "stream/FieldReader.h"
#include "stream/MemoryBudget.h"
#include "stream/WideText.h"

// The bytes of an object's serial form, by which the reader charges it.

namespace ZVIM::GeometryPrimitiveResource {

inline ZVSmartFormat::u64 StoredBytes(const CZVIMPolyline3D& line) {
    return 5 + ZVSmartFormat::u64{24} * line.CountOfPoint();
}

}  // namespace ZVIM::GeometryPrimitiveResource

namespace ZVIM::GeometryModelResource {

inline ZVSmartFormat::u64 StoredBytes(const CZVIMShell& shell) {
    return 8 + 24 * shell.GetPoints().size() + 4 * shell.GetFacesIndex().size();
}
inline ZVSmartFormat::u64 StoredBytes(const CZVIMMesh& mesh) {
    return 12 + 24 * mesh.GetPoints().size();
}
inline ZVSmartFormat::u64 StoredBytes(const CZVIMVisualShell& visual) {
    return StoredBytes(visual.shell) + 8 + 24 * visual.normals.size() +
           4 * visual.faceColors.size();
}
inline ZVSmartFormat::u64 StoredBytes(const CZVIMVisualPolyFaceMesh& mesh) {
    return 16 + 24 * mesh.points.size() + 4 * mesh.facesIndex.size() + 4 * mesh.faceColors.size() +
           mesh.edgeVisibles.size();
}

}  // namespace ZVIM::GeometryModelResource

namespace ZVSmartZvg {

using ZVSmartFormat::u16;
using ZVSmartFormat::u32;
using ZVSmartFormat::u64;
using ZVSmartFormat::u8;

/// Visits the fields of a record to sum up what it takes in memory once it is read, as FieldReader
/// charges it. Not `exact` it looks at no text and may come to more.
class MemoryMeter {
  public:
    static constexpr bool reading = false;

    explicit MemoryMeter(bool exact) : exact(exact) {}

    u64 Sum() const { return sum; }

    void U8(u8) {}
    void U16(u16) {}
    void U32(u32) {}
    void U64(u64) {}
    void F64(double) {}
    void Text(const std::wstring& text) {
        constexpr u64 mostUnitsPerCharacter = 2;
        sum += ZVSmartFormat::TextMemory(exact ? ZVSmartFormat::Utf16UnitCount(text)
                                               : mostUnitsPerCharacter * text.size());
    }
    void Key(const ZVSmartSerial::SerialKey& key) { Text(key.name); }

    template <class Object>
    void Plain(const Object& object) {
        if constexpr (ZVSmartSerial::HasLists<Object>)
            sum += ZVSmartFormat::ObjectMemory(StoredBytes(object));
    }
    template <class Object>
    void Versioned(const Object& object) {
        Plain(object);
    }

    template <class Element, class Visit>
    void List(const std::vector<Element>& list, u64 /*smallestBytes*/, Visit visit) {
        Charge(list.size(), sizeof(Element));
        for (const Element& element : list) visit(element);
    }
    /// Anything that has a size.
    template <class Numbers>
    void U32List(const Numbers& numbers) {
        Charge(numbers.size(), sizeof(u32));
    }
    template <class Element>
    void F64List(const std::vector<Element>& list) {
        Charge(list.size(), sizeof(Element));
    }
    void Count(u64 /*count*/) {}
    void Charge(u64 count, u64 elementBytes) {
        sum += ZVSmartFormat::ListMemory(count, elementBytes);
    }

    void DropBuffer(const u8* /*bytes*/) {}
    /// Throws "encode error" where bytes are announced and there are none.
    void Buffer(const u8* bytes, u64 byteCount) {
        if (byteCount != 0 && bytes == nullptr) ZVSmartFormat::ThrowNotWritten();
        Charge(byteCount, 1);
    }

  private:
    bool exact;
    u64 sum = 0;
};

/// What `visit`, which gets a meter, comes to: exactly where that is above `limit`.
template <class Visit>
u64 MeasureMemory(u64 limit, Visit visit) {
    MemoryMeter meter(false);
    visit(meter);
    if (meter.Sum() <= limit) return meter.Sum();
    MemoryMeter exactly(true);
    visit(exactly);
    return exactly.Sum();
}

}  // namespace ZVSmartZvg
