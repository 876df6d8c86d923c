#pragma once

#include "ZVSmartModel/BlockFile.h"
#include "web/native/Answer.h"
#include "web/native/CallRequest.h"

namespace ZVSmartModel::Web {

/// Writes the elements that `request` asks for, in the file's order: {"classes": [names],
/// "elements": [[floor, position, guid, name, number of its class], ...]}.
void WriteFound(Json& json, const BlockFile& file, const Request& request);

}  // namespace ZVSmartModel::Web
