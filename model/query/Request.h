#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ZVSmartModel/Element.h"

namespace ZVSmartModel {

/// Where an element stands in one of a query's files, as one number: 20 bits for the file, 17 for
/// the floor and 26 for the position.
struct ElementId {
    unsigned int file = 0;
    ElementIndex index;

    static constexpr unsigned int mostFiles = 1U << 20, mostFloors = 1U << 17;
    static constexpr unsigned int mostPositions = 1U << 26;

    std::int64_t Number() const {
        return std::int64_t{file} << 43 | std::int64_t{index.floor} << 26 | index.position;
    }
    /// None for what is no such number.
    static std::optional<ElementId> Of(std::int64_t number) {
        if (number < 0) return std::nullopt;
        return ElementId{static_cast<unsigned int>(number >> 43),
                         {static_cast<unsigned int>(number >> 26) % mostFloors,
                          static_cast<unsigned int>(number) % mostPositions}};
    }
};

/// What is asked of a table: which columns, and of which rows.
struct Request {
    /// What a text must be.
    struct TextFilter {
        int column;
        std::string text;
    };

    std::uint64_t columns = 0;        ///< a bit for each that is looked at
    std::optional<std::string> path;  ///< of the file
    std::optional<ElementId> element;
    std::optional<std::int64_t> floor, position;
    std::vector<TextFilter> texts;
    bool isEmpty = false;  ///< no row can satisfy it

    bool Wants(int column) const { return (columns >> column & 1) != 0; }

    /// Whether a row whose column holds `text` may be wanted.
    bool Accepts(int column, std::string_view text) const {
        for (const TextFilter& filter : texts) {
            if (filter.column == column && filter.text != text) return false;
        }
        return true;
    }
    const std::string* TextOf(int column) const {
        for (const TextFilter& filter : texts) {
            if (filter.column == column) return &filter.text;
        }
        return nullptr;
    }
};

}  // namespace ZVSmartModel
