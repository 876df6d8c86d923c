#pragma once

#include <string>
#include <vector>

#include "model/plan/Canvas.h"

namespace ZVSmartModel {

/// A sheet as an SVG document whose units are millimetres; pages lie one below the other.
///
/// A layer is a group with an id and the classes of what is on it, in one ink; an element is a
/// group whose id comes from its identity, which is also its `data-guid`; `data-drawn` says
/// what is drawn of it, and its title is its name.
class SvgCanvas : public Canvas {
  public:
    SvgCanvas(const std::string& title, const std::vector<PageSize>& pages);

    void BeginPage(const PageSize& size) override;
    void EndPage() override;
    void SetFrame(const SheetFrame& inFrame) override { frame = inFrame; }
    void BeginFloor(const CanvasGroup& floor) override;
    void EndFloor() override { out += "</g>\n"; }
    void BeginLayer(const CanvasGroup& layer, const Ink& ink) override;
    void EndLayer() override { out += "</g>\n"; }
    void BeginElement(const CanvasGroup& element) override;
    void EndElement() override { out += "</g>\n"; }
    void Draw(const std::vector<PlanPath>& paths) override;
    void Draw(const std::vector<PlanPath>& paths, const Ink& ink) override;
    void Write(const CanvasText& text) override;
    std::string Take() override;

  private:
    SheetFrame frame;
    double pageTop = 0;  ///< of the next page
    std::string out;
};

}  // namespace ZVSmartModel
