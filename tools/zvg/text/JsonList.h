#pragma once

#include <string>

#include "tools/zvg/text/Document.h"

namespace ZVSmartModel::Tool {

/// Writes a document to standard output whose last member is a list, entry by entry as they come,
/// so that a list of any length takes no memory. Throws as WriteOutput does.
class JsonList {
  public:
    /// Begins with the members of `head`, an object that is not empty, and the list `name`.
    JsonList(const Document& head, const std::string& name);

    void Add(const Document& entry);
    void End();

  private:
    bool empty = true;
};

}  // namespace ZVSmartModel::Tool
