#pragma once

#include <map>
#include <string>
#include <vector>

#include "model/plan/Canvas.h"

namespace ZVSmartModel {

/// A sheet as a drawing in ASCII DXF of release 12, in metres where the model has them: lines,
/// polylines with bulges and texts. The first floor lies where the model does, each other one
/// `floorStep` metres further along X. What is only on paper is left out, and so are fills. A layer
/// is named after a class and how it is drawn, such as IFCWALL-SECTION.
class DxfCanvas : public Canvas {
  public:
    explicit DxfCanvas(double floorStep) : floorStep(floorStep) {}

    void BeginPage(const PageSize&) override {}
    void EndPage() override {}
    void SetFrame(const SheetFrame& inFrame) override;
    void BeginFloor(const CanvasGroup& floor) override;
    void EndFloor() override { offset += floorStep; }
    void BeginLayer(const CanvasGroup& layer, const Ink& ink) override;
    void EndLayer() override {}
    void BeginElement(const CanvasGroup&) override {}
    void EndElement() override {}
    void Draw(const std::vector<PlanPath>& paths) override { Draw(paths, layerInk); }
    void Draw(const std::vector<PlanPath>& paths, const Ink& ink) override;
    void Write(const CanvasText& text) override;
    std::string Take() override;

  private:
    void Put(int code, const std::string& value);
    void Put(int code, double value);
    void PutPoint(const PlanPoint& point, int code = 10);
    void DrawPath(const PlanPath& path);

    double floorStep;
    double offset = 0;  ///< metres along X
    SheetFrame frame;
    Ink layerInk;
    std::string layer = "0", floorName;
    std::map<std::string, bool> layers;  ///< by name: whether dashed
    std::string entities;
};

}  // namespace ZVSmartModel
