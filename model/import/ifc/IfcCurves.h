#pragma once

#include <memory>
#include <vector>

#include "model/import/Model.h"
#include "model/import/ifc/IfcPlanCurves.h"

class IfcCompositeCurve;
class IfcCurve;
class IfcIndexedPolyCurve;
class IfcPolyline;
class IfcTrimmedCurve;

namespace ZVSmartModel {

/// Turns curves of a file into curves of a model.
class IfcCurveMaker {
  public:
    /// `toElement` is in the file's unit.
    IfcCurveMaker(const Transform& toElement, const IfcUnits& units)
        : toElement(toElement), units(units) {}

    /// Adds a polyline, which is a segment where it has two points, a full circle or a full
    /// ellipse. False for other curves, which are pieces.
    bool AddWhole(const std::shared_ptr<IfcCurve>& curve, ModelCurves& curves) const;
    /// Adds a bounded curve as segments and arcs; nothing for curves of other kinds.
    void AddPieces(const std::shared_ptr<IfcCurve>& curve, ModelCurves& curves) const;

  private:
    /// A circle or an ellipse: center + cos t · u + sin t · v, in metres.
    struct Conic {
        ModelPoint center, u, v;
        bool IsRound() const;
        ModelPoint At(double t) const;
        ModelPoint Normal() const;
        double AngleOf(const ModelPoint& point) const;
    };

    void AddPieces(const std::shared_ptr<IfcCurve>& curve, bool reversed, int depth,
                   ModelCurves& curves) const;
    void AddComposite(const IfcCompositeCurve& composite, bool reversed, int depth,
                      ModelCurves& curves) const;
    void AddTrimmed(const IfcTrimmedCurve& trimmed, bool reversed, ModelCurves& curves) const;
    void AddIndexed(const IfcIndexedPolyCurve& indexed, bool reversed, ModelCurves& curves) const;
    void AddArc(const Conic& conic, double from, double sweep, ModelCurves& curves) const;
    static void AddChain(std::vector<ModelPoint> points, bool reversed, ModelCurves& curves);
    static void AddArcThrough(const ModelPoint& from, const ModelPoint& over, const ModelPoint& to,
                              bool reversed, ModelCurves& curves);

    /// False where `curve` is no circle and no ellipse.
    bool ConicOf(const std::shared_ptr<IfcCurve>& curve, Conic& conic) const;
    std::vector<ModelPoint> PointsOf(const IfcPolyline& polyline) const;
    ModelPoint InElement(const ModelPoint& point) const;

    Transform toElement;
    IfcUnits units;
};

}  // namespace ZVSmartModel
