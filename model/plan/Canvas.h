#pragma once

#include <string>
#include <vector>

#include "model/plan/Drawing.h"

namespace ZVSmartModel {

/// Where a plan lies on the sheet: the north-western corner (west, north), in metres, at
/// (left, top), in millimetres of paper from the sheet's upper left corner, and how many of these
/// make a metre.
struct SheetFrame {
    double left = 0, top = 0;
    double west = 0, north = 0;
    double unitsPerMetre = 1;
    bool isPlan = true;  ///< what is drawn is the model's, not the paper's: scale bars, headings

    PlanPoint OnPaper(const PlanPoint& point) const {
        return {left + (point.x - west) * unitsPerMetre, top + (north - point.y) * unitsPerMetre};
    }
};

constexpr const char* inkColour = "#26292d";  ///< of texts and what is not the building's

/// How paths are drawn: colours as "#rrggbb" or "none", the width in millimetres of paper.
struct Ink {
    std::string fill = "none", stroke = "none";
    double width = 0.13;
    bool isDashed = false;
    bool isNonzero = false;  ///< filled where paths wind around, else by the even-odd rule
};

/// The white rim that keeps texts legible over lines, in millimetres of paper.
constexpr double textRim = 0.4;

/// What is said of a group. Texts are UTF-8 and may be anything.
struct CanvasGroup {
    std::string id;                  ///< unique, made by Identifier
    std::vector<std::string> kinds;  ///< its classes
    std::string guid, title;
    std::string drawnAs;
};

enum class TextAnchor { Start, Middle, End };

struct CanvasText {
    std::string text;
    PlanPoint at;  ///< of the line's foot, in the frame
    double size;   ///< millimetres of paper
    TextAnchor anchor = TextAnchor::Start;
    double angle = 0;  ///< radians, counter-clockwise
    bool isBold = false;
    std::string colour = inkColour;
    std::string kind = {};  ///< its class
};

struct PageSize {
    double width = 0, height = 0;  ///< millimetres
};

/// What a sheet is drawn on: a document that grows. Pages, floors in them, layers in these and
/// elements in layers follow each other; what lies outside an element belongs to the paper or to
/// the layer.
class Canvas {
  public:
    virtual ~Canvas() = default;

    virtual void BeginPage(const PageSize& size) = 0;
    virtual void EndPage() = 0;
    /// What follows lies in this frame.
    virtual void SetFrame(const SheetFrame& frame) = 0;
    virtual void BeginFloor(const CanvasGroup& floor) = 0;
    virtual void EndFloor() = 0;
    virtual void BeginLayer(const CanvasGroup& layer, const Ink& ink) = 0;
    virtual void EndLayer() = 0;
    virtual void BeginElement(const CanvasGroup& element) = 0;
    virtual void EndElement() = 0;
    /// In the layer's ink.
    virtual void Draw(const std::vector<PlanPath>& paths) = 0;
    /// In an ink of its own.
    virtual void Draw(const std::vector<PlanPath>& paths, const Ink& ink) = 0;
    virtual void Write(const CanvasText& text) = 0;
    /// The whole document; call it once, at the end.
    virtual std::string Take() = 0;
};

}  // namespace ZVSmartModel
