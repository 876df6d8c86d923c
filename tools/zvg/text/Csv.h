#pragma once

#include <string>

#include "tools/zvg/text/Document.h"

namespace ZVSmartModel::Tool {

/// The names of an object's members as one record of RFC 4180, with its line end.
std::string CsvHeader(const Document& object);

/// The values of an object's members or of a list, texts, numbers and null, which is no characters
/// at all, as one record of RFC 4180, with its line end. Control characters other than tabs and
/// line ends, which the format has no place for, are escaped as EscapeControls does.
std::string CsvRecord(const Document& values);

}  // namespace ZVSmartModel::Tool
