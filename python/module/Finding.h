#pragma once

#include <pybind11/pybind11.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ZVSmartModel/BlockFile.h"

namespace ZVSmartModel::Python {

namespace py = pybind11;

/// Which elements a Python program wants, as the arguments of a call say it.
class Wanted {
  public:
    /// `classes`: a name or several; `floor`: a name or a number; `where`: a dict from "SET.NAME"
    /// to a str, which is the value, a bool, or a number. None takes all. Throws TypeError.
    Wanted(py::handle classes, py::handle floor, py::handle where, bool rooms = true);

    /// Wants this name as well.
    void SetName(const std::string& wanted) { name = wanted; }

    /// Reads them all, in the file's order. Without the interpreter's lock.
    std::vector<Element> In(const BlockFile& file) const;
    /// As a selection; throws Error NotFound where conditions leave nothing. `path` is for its
    /// message. Without the lock.
    Selection SelectionIn(const BlockFile& file, const std::string& path) const;

  private:
    using Condition = std::pair<std::string, std::function<bool(const Property& property)>>;

    void ForEach(const BlockFile& file, const std::function<void(const Element&)>& use) const;
    bool Holds(const Element& element) const;

    Selection selection;
    std::optional<std::string> name;
    std::vector<Condition> conditions;
};

}  // namespace ZVSmartModel::Python
