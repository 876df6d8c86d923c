#include "model/plan/SvgPath.h"

#include <charconv>
#include <cmath>

#include "model/plan/Arc.h"

namespace ZVSmartModel {

namespace {

class Writer {
  public:
    explicit Writer(const SheetFrame& frame) : frame(frame) {}

    void Write(const PlanPath& path) {
        const std::size_t count = path.vertices.size();
        if (count == 0) return;
        out += 'M';
        out += PointText(path.vertices.front().point);
        for (std::size_t i = 0; i + 1 < count; ++i) {
            WritePiece(path.vertices[i], path.vertices[i + 1].point);
        }
        if (!path.closed) return;
        const PlanVertex& last = path.vertices.back();
        const PlanPoint& first = path.vertices.front().point;
        if (IsArc(last.point, first, last.bulge)) WritePiece(last, first);
        out += 'Z';
    }

    std::string Take() { return std::move(out); }

  private:
    void WritePiece(const PlanVertex& from, const PlanPoint& to) {
        if (!IsArc(from.point, to, from.bulge)) {
            out += 'L';
            out += PointText(to);
            return;
        }
        const std::string radius =
            SvgNumber(ArcRadius(from.point, to, from.bulge) * frame.unitsPerMetre);
        const bool large = std::fabs(from.bulge) > 1;
        const bool clockwise = from.bulge < 0;
        out += 'A' + radius + ' ' + radius + " 0 " + (large ? '1' : '0') + ' ' +
               (clockwise ? '1' : '0') + ' ' + PointText(to);
    }

    std::string PointText(const PlanPoint& point) const {
        const PlanPoint at = frame.OnPaper(point);
        return SvgNumber(at.x) + ' ' + SvgNumber(at.y);
    }

    const SheetFrame& frame;
    std::string out;
};

}  // namespace

std::string SvgPathData(const std::vector<PlanPath>& paths, const SheetFrame& frame) {
    Writer writer(frame);
    for (const PlanPath& path : paths) writer.Write(path);
    return writer.Take();
}

std::string SvgNumber(double value) {
    char digits[64];
    const auto [end, error] =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 3);
    if (error != std::errc()) return "0";
    std::string text(digits, end);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text == "-0" ? "0" : text;
}

}  // namespace ZVSmartModel
