#pragma once

#include <map>
#include <string>
#include <vector>

#include "ZVSmartModel/Diff.h"
#include "tools/zvg/text/Document.h"

namespace ZVSmartModel::Tool {

/// What became of a floor or of an element.
Document DifferenceDocument(const Difference& difference);

/// The same for people: one line, and one for each thing that changed.
std::string DifferenceText(const Document& difference);

/// The same as records of one form, one for each thing that changed.
std::vector<Document> DifferenceRecords(const Document& difference);

/// How many differences there are, of what, and where.
class DifferenceCounts {
  public:
    void Add(const Document& difference);
    unsigned long long All() const { return all; }

    Document ToDocument() const;
    /// A few lines, however many differences there are.
    std::string ToText() const;

  private:
    using Counts = std::map<std::string, unsigned long long>;

    unsigned long long all = 0;
    std::map<std::string, Counts> byClass;  ///< how many of each class were added and so on
    Counts byThing;                         ///< in how many each thing changed
};

}  // namespace ZVSmartModel::Tool
