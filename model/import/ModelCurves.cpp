#include "model/import/ModelCurves.h"

#include <algorithm>
#include <cmath>

namespace ZVSmartModel {

namespace {

class Numbers {
  public:
    void Add(double number) { numbers.push_back(number); }
    void Add(const ModelPoint& point) {
        numbers.insert(numbers.end(), {point.x, point.y, point.z});
    }
    void Add(const ModelSegment& segment) {
        Add(segment.from);
        Add(segment.to);
    }
    void Add(const ModelArc& arc) {
        for (const ModelPoint& point : {arc.center, arc.normal, arc.from, arc.to}) Add(point);
        Add(arc.sweepRadians);
    }
    void Add(const ModelCircle& circle) {
        Add(circle.center);
        Add(circle.normal);
        Add(circle.radius);
    }
    void Add(const ModelPolyline& polyline) {
        Add(polyline.closed ? 1.0 : 0.0);
        Add(polyline.points);
    }
    template <typename Element>
    void Add(const std::vector<Element>& list) {
        Add(static_cast<double>(list.size()));
        for (const Element& element : list) Add(element);
    }
    std::vector<double> Take() { return std::move(numbers); }

  private:
    std::vector<double> numbers;
};

template <typename Curve>
bool IsUsable(const Curve& curve) {
    Numbers numbers;
    numbers.Add(curve);
    const std::vector<double> all = numbers.Take();
    return std::all_of(all.begin(), all.end(), IsCoordinate);
}

bool IsUsable(const ModelCircle& circle) {
    return circle.radius >= 0 && IsUsable<ModelCircle>(circle);
}

template <typename Curve>
std::size_t Unusable(const std::vector<Curve>& curves) {
    return static_cast<std::size_t>(std::count_if(
        curves.begin(), curves.end(), [](const Curve& curve) { return !IsUsable(curve); }));
}

/// Rounds one kind of curve after the other.
class Rounding {
  public:
    explicit Rounding(double step) : step(step) {}

    void Round(double& length) const { length = std::nearbyint(length / step) * step + 0.0; }
    void Round(ModelPoint& point) const {
        for (double* coordinate : {&point.x, &point.y, &point.z}) Round(*coordinate);
    }

    /// The rounded curve is worth keeping.
    bool Keeps(ModelSegment& segment) const {
        Round(segment.from);
        Round(segment.to);
        return segment.from != segment.to;
    }
    bool Keeps(ModelArc& arc) const {
        for (ModelPoint* point : {&arc.center, &arc.from, &arc.to}) Round(*point);
        return arc.from != arc.center && arc.sweepRadians != 0;
    }
    bool Keeps(ModelCircle& circle) const {
        Round(circle.center);
        Round(circle.radius);
        return circle.radius > 0;
    }
    bool Keeps(ModelPolyline& polyline) const {
        std::vector<ModelPoint>& points = polyline.points;
        for (ModelPoint& point : points) Round(point);
        points.erase(std::unique(points.begin(), points.end()), points.end());
        while (polyline.closed && points.size() > 1 && points.back() == points.front()) {
            points.pop_back();
        }
        return points.size() > 1;
    }

    template <typename Curve>
    std::vector<Curve> Kept(const std::vector<Curve>& curves) const {
        std::vector<Curve> kept;
        for (Curve curve : curves) {
            if (IsUsable(curve) && Keeps(curve)) kept.push_back(std::move(curve));
        }
        return kept;
    }

  private:
    double step;
};

}  // namespace

bool ModelCurves::IsEmpty() const {
    return polylines.empty() && segments.empty() && arcs.empty() && circles.empty();
}

std::vector<double> NumbersOf(const ModelCurves& curves) {
    Numbers numbers;
    numbers.Add(curves.polylines);
    numbers.Add(curves.segments);
    numbers.Add(curves.arcs);
    numbers.Add(curves.circles);
    return numbers.Take();
}

std::size_t UnusableCurves(const ModelCurves& curves) {
    return Unusable(curves.polylines) + Unusable(curves.segments) + Unusable(curves.arcs) +
           Unusable(curves.circles);
}

ModelCurves RoundedCurves(const ModelCurves& curves, double coordinateStep) {
    const Rounding rounding(coordinateStep);
    return {curves.name, rounding.Kept(curves.polylines), rounding.Kept(curves.segments),
            rounding.Kept(curves.arcs), rounding.Kept(curves.circles)};
}

}  // namespace ZVSmartModel
