#pragma once

#include <cstdint>
#include <string>

namespace ZVSmartZvg {

/// Makes the keys of the geometries that one saver stores of its own accord.
class IncludeKeys {
  public:
    /// "mater_include_key_" and a decimal number, 0 for the first key. The number is formatted as
    /// a signed one: it turns negative behind 2147483647.
    std::wstring Next();

  private:
    std::uint32_t counter = 0;
};

}  // namespace ZVSmartZvg
