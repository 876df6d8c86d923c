#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "ZVSmartZvg/ParamFace.h"

namespace ZVSmartZvg {

/// Numbers by which a shape is looked for: shapes that agree have the same `exact`, and `measures`
/// that differ by twice the keys' tolerance at most.
struct ShapeSignature {
    std::uint64_t exact = 0;
    std::array<double, 3> measures = {};
};

/// Of the shell's distances from the origin, from its first and from its last point, averaged:
/// what a turn does not change. The face list is the exact part.
ShapeSignature SignatureOf(const CZVIMShell& localShell);

/// A grid over the measures, of cells wider than the tolerance.
/// @{
using ShapeCell = std::uint64_t;
ShapeCell CellOf(const ShapeSignature& signature);

/// Its own cell, and those across the borders that are near, in which shapes may be that agree.
struct ShapeCells {
    std::array<ShapeCell, 8> cells;
    std::size_t count = 0;
};
ShapeCells CellsAround(const ShapeSignature& signature);
/// @}

/// Finds what bears a signature like another: a hash table of cells, in which values of one cell
/// follow each other. Looking takes constant time but for shapes that crowd together in their
/// measures without agreeing.
template <class Value>
class ShapeIndex {
  public:
    void Add(const ShapeSignature& signature, const Value* value) {
        if (2 * (count + 1) > slots.size()) Grow();
        Put({CellOf(signature), value});
        ++count;
    }

    /// Appends all values of shapes that may agree, and some of others, in any order.
    void Find(const ShapeSignature& signature, std::vector<const Value*>& values) const {
        if (count == 0) return;
        const ShapeCells around = CellsAround(signature);
        for (std::size_t i = 0; i < around.count; ++i) {
            const ShapeCell cell = around.cells[i];
            for (std::size_t at = Home(cell); slots[at].value != nullptr; at = Next(at)) {
                if (slots[at].cell == cell) values.push_back(slots[at].value);
            }
        }
    }

  private:
    struct Slot {
        ShapeCell cell = 0;
        const Value* value = nullptr;  ///< none where the slot is free
    };

    std::size_t Home(ShapeCell cell) const { return cell & (slots.size() - 1); }
    std::size_t Next(std::size_t at) const { return (at + 1) & (slots.size() - 1); }

    void Put(const Slot& slot) {
        std::size_t at = Home(slot.cell);
        while (slots[at].value != nullptr) at = Next(at);
        slots[at] = slot;
    }

    void Grow() {
        std::vector<Slot> before(slots.empty() ? 64 : 2 * slots.size());
        before.swap(slots);
        for (const Slot& slot : before) {
            if (slot.value != nullptr) Put(slot);
        }
    }

    std::vector<Slot> slots;  ///< a power of two of them, half of them free at least
    std::size_t count = 0;
};

}  // namespace ZVSmartZvg
