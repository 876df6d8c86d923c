#pragma once

#include <cstddef>
#include <string_view>

namespace ZVSmartModel {

/// An entity that the reader does not know under its own name, and what stands for it.
struct StepAlias {
    const char* name;           ///< as people write it, such as IfcPavement
    const char* known;          ///< in capitals; the entity that has the same first arguments
    std::size_t argumentCount;  ///< how many of them are kept
    const char* more;           ///< arguments put behind them
};

/// The alias of an entity named in capitals; null where it needs none, or there is none.
const StepAlias* AliasOf(std::string_view nameInCapitals);

}  // namespace ZVSmartModel
