#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ZVSmartModel {

/// One thing that a model's author may want to know, however often it occurs.
struct ImportFinding {
    std::string kind;   ///< one word, such as "openingNotCut"
    std::string text;   ///< UTF-8; a sentence for people
    bool lost = false;  ///< whether something of the model did not arrive
    std::size_t count = 0;
    std::vector<std::string> where;  ///< the first GlobalIds, or entity numbers as "#12"

    static constexpr std::size_t mostPlaces = 1000;
};

/// How many of one type of entity a model has, and how many became components.
struct ImportCount {
    std::size_t inModel = 0, arrived = 0, withBody = 0;
};

/// What came of a model.
struct ImportFindings {
    std::vector<ImportFinding> findings;          ///< in the order in which they were made
    std::map<std::string, ImportCount> elements;  ///< by type, such as IfcWall

    /// Counts once more what was found, at one place; at none where `where` is empty.
    void Add(const std::string& kind, const std::string& text, bool lost, const std::string& where,
             std::size_t count = 1);

    bool AnythingLost() const;

  private:
    std::map<std::pair<std::string, std::string>, std::size_t> places;  ///< by kind and text
};

}  // namespace ZVSmartModel
