#pragma once

#include <string>
#include <vector>

#include "ZVSmartModel/BlockFile.h"

namespace ZVSmartModel::Tool {

/// The elements that `text` means: the one at FLOOR:POS, its floor by name or number; else the one
/// of this GUID; else those of this name. There is at least one. `path` names the file in messages.
/// Throws Error: NotFound; Damaged where they may be among those that cannot be read.
std::vector<ElementIndex> FindElements(const BlockFile& file, const std::string& path,
                                       const std::string& text);

/// The same for one; throws Error, Usage, where several have the name.
ElementIndex FindElement(const BlockFile& file, const std::string& path, const std::string& text);

/// Throws Error, Damaged, where the file met anything that cannot be read.
void ThrowIfDamaged(const BlockFile& file);

}  // namespace ZVSmartModel::Tool
