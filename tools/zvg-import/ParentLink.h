#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "model/import/ModelFile.h"
#include "model/pack/ChildMessages.h"

// The importer's side of the talk with the process that started it.

namespace ZVSmartModel::Tool {

/// Tells the parent. Line ends in `text` become blanks.
void TellParent(ChildMessage kind, std::string_view text);

/// Asks the parent for a file of the model, by ModelFolder's names. Whoever asks for another one is
/// ended.
std::optional<ModelFile> AskParentFor(const std::string& name);

}  // namespace ZVSmartModel::Tool
