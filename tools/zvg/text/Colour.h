#pragma once

#include <string>
#include <string_view>

namespace ZVSmartModel::Tool {

enum class Paint { Heading, Error };

/// "always", "never" or "auto": colour on a terminal, unless the variable NO_COLOR is set and not
/// empty, or the terminal is a dumb one. "auto" until it is called.
void ChooseColour(const std::string& when);

/// `text` as it is painted on a standard stream; `descriptor` tells which.
std::string Painted(Paint paint, std::string_view text, int descriptor);

}  // namespace ZVSmartModel::Tool
