#pragma once

#include <string>

#include "model/import/ImportReport.h"
#include "model/import/Model.h"
#include "model/import/ifc/StepText.h"

class BuildingModel;
class IfcProduct;

namespace ZVSmartModel {

/// Turns what goes wrong while a file is read into findings that name its elements by GlobalId, in
/// the words of the model's author and not in those of the reading library.
class IfcLosses {
  public:
    explicit IfcLosses(ImportFindings& findings) : findings(findings) {}

    /// A message of the library while it loads the file.
    void TakeLoadMessage(const std::string& text);
    /// What the file has and the library does not know, and what is no statement.
    void TakeText(const StepText& step);

    /// Messages belong to this element until the next is begun.
    void Begin(const ModelElement& element);
    void TakeBodyMessage(const std::string& text);
    /// Counts the element. `source` is null for what has no place in space.
    void End(const ModelElement& element, const IfcProduct* source);

    /// Counts values that another value of the same name kept out.
    void DropValues(const ModelElement& element, std::size_t count);

  private:
    ImportFindings& findings;
    std::string current;  ///< the element's GlobalId
    bool failed = false;  ///< whether there was a message about it
};

}  // namespace ZVSmartModel
