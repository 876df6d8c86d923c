#include "tools/zvg/text/Colour.h"

#include <unistd.h>

#include <cstdlib>

namespace ZVSmartModel::Tool {

namespace {

enum class When { Auto, Always, Never };
When chosen = When::Auto;

bool HasColour(int descriptor) {
    if (chosen != When::Auto) return chosen == When::Always;
    const char* const refused = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    if (refused && *refused) return false;
    if (!terminal || std::string_view(terminal) == "dumb") return false;
    return isatty(descriptor) != 0;
}

}  // namespace

void ChooseColour(const std::string& when) {
    chosen = when == "always" ? When::Always : when == "never" ? When::Never : When::Auto;
}

std::string Painted(Paint paint, std::string_view text, int descriptor) {
    if (!HasColour(descriptor)) return std::string(text);
    std::string painted = paint == Paint::Heading ? "\033[1m" : "\033[1;31m";
    painted += text;
    painted += "\033[0m";
    return painted;
}

}  // namespace ZVSmartModel::Tool
