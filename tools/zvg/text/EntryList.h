#pragma once

#include <optional>
#include <string>

#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/JsonList.h"

namespace ZVSmartModel::Tool {

enum class ListFormat { Text, Csv, Json };

/// Throws Error, Usage, for both.
ListFormat ListFormatOf(bool asCsv, bool asJson);

/// Prints lists of like entries, objects, as they come, so that a list of any length takes no
/// memory: as lines of their values with tabs between them, as one table of CSV for all files, or
/// as a document of JSON for each.
class EntryList {
  public:
    /// `member` is what a document of JSON calls the list; `names` is an entry.
    EntryList(ListFormat format, const std::string& member, const Document& names)
        : format(format), member(member), names(names) {}

    /// Begins the list of a file; in a table entries of one of several begin with its name.
    void Begin(const std::string& newFile, bool isOneOfSeveral);
    void Print(const Document& entry);
    void End();

    /// How many entries of the file were printed.
    unsigned long long Count() const { return count; }

  private:
    Document Told(const Document& entry) const;

    ListFormat format;
    std::string member;
    Document names;
    bool hasHeader = false;
    std::optional<std::string> file;  ///< that entries begin with
    std::optional<JsonList> json;
    unsigned long long count = 0;
};

}  // namespace ZVSmartModel::Tool
