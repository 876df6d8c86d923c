#pragma once

#include <string_view>

namespace ZVSmartModel {

/// What a class is to a plan.
enum class ClassKind {
    Other,
    Room,
    Lines,  ///< nothing but its curves is drawn
    Door,
    Window,
    Furnishing,  ///< furniture, sanitary objects and the like: symbols stand for them
    Stair,
    Roof,
    Ceiling,  ///< hides what is below: not drawn from there
    Wall
};

/// How a class of components is drawn. Colours as "#rrggbb", widths in millimetres on paper.
struct ClassStyle {
    const char* words;  ///< separated by blanks; a class whose name holds one of them is meant
    const char* fill;
    const char* stroke;
    double strokeWidth;
    int layer;  ///< higher ones are drawn over lower ones
    ClassKind kind = ClassKind::Other;
};

/// The style of a class, found by its name without regard to the case of its letters.
const ClassStyle& StyleOfClass(std::string_view className);

}  // namespace ZVSmartModel
