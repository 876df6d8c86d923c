#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "model/query/Request.h"

namespace ZVSmartModel {

/// Some rows of a table, with the columns that are wanted; their texts lie in one piece.
class RowBatch {
  public:
    enum class Kind : std::uint8_t { Null, Integer, Real, Text };
    struct Cell {
        Kind kind = Kind::Null;
        std::uint32_t length = 0;
        union {
            std::int64_t integer = 0;
            double real;
            std::size_t offset;  ///< of a text
        };
    };

    RowBatch() { slots.fill(none); }
    explicit RowBatch(const Request& request) : RowBatch() {
        for (int column = 0; column < mostColumns; ++column) {
            if (request.Wants(column)) slots[static_cast<std::size_t>(column)] = width++;
        }
    }

    /// So full that it should be handed on.
    bool IsFull() const { return ids.size() >= 1024 || texts.size() >= 1U << 18; }
    void Clear() {
        ids.clear();
        cells.clear();
        texts.clear();
    }

    /// Begins a row whose columns are null. The calls below are about it.
    void Begin(std::int64_t id) {
        ids.push_back(id);
        cells.resize(cells.size() + width);
    }
    void Integer(int column, std::int64_t value) {
        if (Cell* const cell = At(column)) cell->kind = Kind::Integer, cell->integer = value;
    }
    void Real(int column, double value) {
        if (Cell* const cell = At(column)) cell->kind = Kind::Real, cell->real = value;
    }
    void Text(int column, std::string_view text) {
        if (Cell* const cell = At(column)) {
            const std::size_t offset = texts.size();
            texts += text;
            SetText(*cell, offset);
        }
    }
    /// Stays null where it is empty.
    void TextIfAny(int column, std::string_view text) {
        if (!text.empty()) Text(column, text);
    }

    std::size_t Rows() const { return ids.size(); }
    std::int64_t Id(std::size_t row) const { return ids[row]; }
    /// A column that is wanted.
    const Cell& At(std::size_t row, int column) const {
        static const Cell null = {};
        const std::uint8_t slot = slots[static_cast<std::size_t>(column)];
        return slot == none ? null : cells[row * width + slot];
    }
    std::string_view TextOf(const Cell& cell) const {
        return std::string_view(texts).substr(cell.offset, cell.length);
    }

  private:
    static constexpr int mostColumns = 16;
    static constexpr std::uint8_t none = 0xFF;

    Cell* At(int column) {
        const std::uint8_t slot = slots[static_cast<std::size_t>(column)];
        return slot == none ? nullptr : &cells[cells.size() - width + slot];
    }
    void SetText(Cell& cell, std::size_t offset) {
        cell.kind = Kind::Text;
        cell.offset = offset;
        cell.length = static_cast<std::uint32_t>(texts.size() - offset);
    }

    std::uint8_t width = 0;
    std::array<std::uint8_t, mostColumns> slots;  ///< of columns; none where nobody asks
    std::vector<std::int64_t> ids;
    std::vector<Cell> cells;
    std::string texts;
};

}  // namespace ZVSmartModel
