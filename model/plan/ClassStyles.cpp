#include "model/plan/ClassStyles.h"

#include <algorithm>
#include <iterator>

namespace ZVSmartModel {

namespace {

/// The first that fits counts: a curtain wall is glass, a wall covering no wall. What carries is
/// dark, what is glass blue, what can be moved or lies on the floor pale; rooms lie under it all.
constexpr ClassStyle styles[] = {
    {"spaceheater", "#dfe9e0", "#68866c", 0.13, 4, ClassKind::Furnishing},
    {"space spatialzone spatialelement", "#fbf8ef", "#d9d2bf", 0.13, -1, ClassKind::Room},
    {"ifcgrid", "none", "#b0534a", 0.13, 9, ClassKind::Lines},
    {"annotation virtual openingelement", "none", "#77797b", 0.13, 9, ClassKind::Lines},
    {"curtain glazing", "#d3e5ef", "#4f7f9b", 0.18, 8},
    {"window", "#d3e5ef", "#4f7f9b", 0.18, 8, ClassKind::Window},
    {"door gate", "#f3e3cb", "#8a6134", 0.18, 8, ClassKind::Door},
    {"covering ceiling", "#f0ebe1", "#b7ad99", 0.13, 1, ClassKind::Ceiling},
    {"roof", "#f4f2ed", "#a9a498", 0.18, 0, ClassKind::Roof},
    {"slab floor plate terrain site", "#f4f2ed", "#a9a498", 0.18, 0},
    {"column pile footing", "#474c52", "#1f2225", 0.25, 6, ClassKind::Wall},
    {"wall", "#686e75", "#26292d", 0.25, 7, ClassKind::Wall},
    {"beam member truss", "#cbb997", "#7a6845", 0.18, 5},
    {"railing handrail", "#b9bcbe", "#75797c", 0.13, 4},
    {"stair ramp", "#e2e2dc", "#85857b", 0.18, 2, ClassKind::Stair},
    {"furni", "#efe6d8", "#a08c6c", 0.13, 3, ClassKind::Furnishing},
    {"flow duct pipe terminal sanitary cable", "#dfe9e0", "#68866c", 0.13, 4,
     ClassKind::Furnishing},
    {"", "#dcdddd", "#77797b", 0.18, 4},
};

char Lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
}

bool Holds(std::string_view text, std::string_view word) {
    return std::search(text.begin(), text.end(), word.begin(), word.end(),
                       [](char a, char b) { return Lower(a) == b; }) != text.end();
}

bool HoldsOne(std::string_view text, std::string_view words) {
    while (!words.empty()) {
        const std::size_t end = std::min(words.find(' '), words.size());
        if (Holds(text, words.substr(0, end))) return true;
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    return false;
}

}  // namespace

const ClassStyle& StyleOfClass(std::string_view className) {
    const auto* const last = std::end(styles) - 1;
    return *std::find_if(std::begin(styles), last, [className](const ClassStyle& style) {
        return HoldsOne(className, style.words);
    });
}

}  // namespace ZVSmartModel
