#pragma once

#include <memory>

#include "ZVSmartModel/Query.h"

// The Arrow C stream interface (https://arrow.apache.org/docs/format/CStreamInterface.html): plain
// structs by which tables go from one library to another without either knowing the other.
struct ArrowArrayStream;

namespace ZVSmartModel::Python {

/// A stream of the table as one batch, which shares its ownership. A column is of 64-bit integers
/// or of doubles where all its values are, else of texts; any value may be null. The caller calls
/// the stream's `release`, then `DeleteArrowStream`.
ArrowArrayStream* NewArrowStream(std::shared_ptr<const QueryTable> table);
/// Releases it where nobody has. Takes null.
void DeleteArrowStream(ArrowArrayStream* stream);

}  // namespace ZVSmartModel::Python
