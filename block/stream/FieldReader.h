#pragma once

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

#include "ZVSmartSerial/Serial.h"
#include "stream/ByteOrder.h"
#include "stream/Failures.h"
#include "stream/KeyForm.h"
#include "stream/MemoryBudget.h"
#include "stream/WideText.h"

namespace ZVSmartSerial {

/// Whether an object with a serial form of its own keeps lists, beside what lies in the object.
template <class Object>
constexpr bool HasLists = !std::is_trivially_copyable_v<Object>;

/// Visits the fields of a record to read them; the mirror of FieldWriter. A record's fields are
/// told once, in a template over either.
///
/// `Source` is a stream that throws where bytes run out and hands them out by `Take`. Every
/// count is checked against the bytes left before anything is sized, and what the record takes in
/// memory against a budget: an empty element of four stored bytes may take hundreds.
template <class Source>
class FieldReader {
  public:
    static constexpr bool reading = true;

    /// Spends from `budget`, which is borrowed. Where it does not hold what is read, OverLimit is
    /// thrown.
    FieldReader(Source& source, ZVSmartFormat::MemoryBudget& budget)
        : source(source), serial(&source), budget(budget) {}
    /// With a budget of its own, in proportion to the source, for many records.
    explicit FieldReader(Source& source)
        : source(source),
          serial(&source),
          ownBudget(BudgetFor(source.GetSize())),
          budget(ownBudget) {}
    FieldReader(const FieldReader&) = delete;
    FieldReader& operator=(const FieldReader&) = delete;

    void U8(u8& value) { value = *source.Take(1); }
    void U16(u16& value) { Number(value); }
    void U32(u32& value) { Number(value); }
    void U64(u64& value) { Number(value); }
    void F64(double& value) {
        u64 bits = 0;
        Number(bits);
        value = std::bit_cast<double>(bits);
    }

    void Text(std::wstring& text) {
        const u64 unitCount = Count(2);
        Spend(ZVSmartFormat::TextMemory(unitCount));
        ZVSmartFormat::LoadUtf16(source.Take(2 * unitCount), unitCount, text);
    }
    void Key(SerialKey& key) { VisitKey(*this, key); }
    /// `byteCount` bytes as they stand.
    void Bytes(u8* bytes, u64 byteCount) {
        std::memcpy(bytes, source.Take(byteCount), static_cast<std::size_t>(byteCount));
    }

    /// An object with a serial form of its own.
    template <class Object>
    void Plain(Object& object) {
        ReadObject(object, 1);
    }
    /// The same behind its serial version.
    template <class Object>
    void Versioned(Object& object) {
        u32 version = 0;
        U32(version);
        ReadObject(object, version);
    }

    /// A count and that many elements of at least `smallestBytes` each.
    template <class Element, class Visit>
    void List(std::vector<Element>& list, u64 smallestBytes, Visit visit) {
        const u32 count = Count(smallestBytes);
        Charge(count, sizeof(Element));
        list.resize(count);
        for (Element& element : list) visit(element);
    }
    /// Spends the memory of `count` elements, as many as 32 bits count.
    void Charge(u64 count, u64 elementBytes) {
        Spend(ZVSmartFormat::ListMemory(count, elementBytes));
    }
    /// The same for a copy of `text`.
    void ChargeText(const std::wstring& text) { Spend(ZVSmartFormat::TextMemory(text.size())); }
    void U32List(std::vector<u32>& list) { NumberList<u32>(list); }
    /// A count and that many elements that consist of doubles alone, such as points.
    template <class Element>
    void F64List(std::vector<Element>& list) {
        NumberList<u64>(list);
    }

    /// Frees a buffer whose record is about to be read, so that no throw leaves it beside a size
    /// that is not its own.
    void DropBuffer(u8*& bytes) {
        std::free(bytes);
        bytes = nullptr;
    }
    /// `byteCount` bytes into a buffer from `malloc`, which replaces the one at `bytes`.
    void Buffer(u8*& bytes, u64 byteCount) {
        DropBuffer(bytes);
        if (byteCount == 0) return;
        if (byteCount > source.BytesLeft()) ZVSmartFormat::ThrowOutOfData();
        Charge(byteCount, 1);
        bytes = static_cast<u8*>(std::malloc(static_cast<std::size_t>(byteCount)));
        if (bytes == nullptr) ZVSmartFormat::ThrowNotAllocated();
        Bytes(bytes, byteCount);
    }

    u32 Count(u64 smallestBytes) {
        u32 count = 0;
        U32(count);
        if (count > source.BytesLeft() / smallestBytes) ZVSmartFormat::ThrowOutOfData();
        return count;
    }

    CZVFTSerialReader& Serial() { return serial; }

  private:
    /// Room for a chain of a million nested geometries, and for 16 bytes per stored byte besides.
    static u64 BudgetFor(u64 storedBytes) {
        constexpr u64 base = 2ULL << 30;
        constexpr u64 perByte = 16;
        constexpr u64 mostBytes = 1ULL << 40;
        return base + perByte * std::min(storedBytes, mostBytes);
    }

    void Spend(u64 bytes) {
        if (!budget.Take(bytes)) throw ZVSmartFormat::OverLimit();
    }

    /// The lists of an object take what they take in the file, which is there.
    template <class Object>
    void ReadObject(Object& object, u32 version) {
        if constexpr (HasLists<Object>) {
            const u64 start = source.GetPos();
            object.ReadSerial(&serial, version);
            Spend(ZVSmartFormat::ObjectMemory(source.GetPos() - start));
        } else {
            object.ReadSerial(&serial, version);
        }
    }

    template <class Unsigned>
    void Number(Unsigned& value) {
        value = ZVSmartFormat::LoadBigEndian<Unsigned>(source.Take(sizeof value));
    }

    /// Elements that consist of numbers as wide as `Unsigned`: straight from the source's bytes.
    template <class Unsigned, class Element>
    void NumberList(std::vector<Element>& list) {
        using Elements = ZVSmartFormat::BigEndianElements<Unsigned, Element>;
        const u32 count = Count(sizeof(Element));
        Charge(count, sizeof(Element));
        const u64 byteCount = u64{count} * sizeof(Element);
        const u8* const bytes = source.Take(byteCount);
        list.assign(Elements(bytes), Elements(bytes + byteCount));
    }

    Source& source;
    CZVFTSerialReader serial;
    ZVSmartFormat::MemoryBudget ownBudget;
    ZVSmartFormat::MemoryBudget& budget;
};

}  // namespace ZVSmartSerial
