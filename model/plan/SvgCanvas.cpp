#include "model/plan/SvgCanvas.h"

#include <algorithm>
#include <numbers>

#include "model/plan/SvgPath.h"
#include "model/plan/XmlText.h"

namespace ZVSmartModel {

namespace {

constexpr double betweenPages = 10;  // millimetres

std::string Attribute(const char* name, const std::string& value) {
    return std::string(" ") + name + "=\"" + value + '"';
}

std::string InkAttributes(const Ink& ink) {
    std::string text = Attribute("fill", ink.fill) + Attribute("stroke", ink.stroke);
    if (ink.stroke != "none") text += Attribute("stroke-width", SvgNumber(ink.width));
    if (ink.isDashed) text += Attribute("stroke-dasharray", "1.2 0.8");
    if (ink.fill != "none" && !ink.isNonzero) text += Attribute("fill-rule", "evenodd");
    return text;
}

std::string Kinds(const CanvasGroup& group) {
    std::string kinds;
    for (const std::string& kind : group.kinds) {
        if (!kinds.empty()) kinds += ' ';
        kinds += Identifier(kind);
    }
    return kinds;
}

}  // namespace

SvgCanvas::SvgCanvas(const std::string& title, const std::vector<PageSize>& pages) {
    PageSize all;
    for (const PageSize& page : pages) {
        all.width = std::max(all.width, page.width);
        all.height += page.height + (all.height > 0 ? betweenPages : 0);
    }
    const std::string w = SvgNumber(all.width), h = SvgNumber(all.height);
    out =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\"" +
        Attribute("width", w + "mm") + Attribute("height", h + "mm") +
        Attribute("viewBox", "0 0 " + w + ' ' + h) + ">\n<title>" + EscapeXml(title) +
        "</title>\n<style>\n"
        ".plan-floor path { stroke-linejoin: round; stroke-linecap: round; }\n"
        ".plan-joined { pointer-events: none; }\n"
        "text { font-family: \"DejaVu Sans\", Helvetica, Arial, sans-serif; "
        "pointer-events: none; stroke: #ffffff; stroke-width: " +
        SvgNumber(2 * textRim) +
        "; stroke-linejoin: round; paint-order: stroke; }\n"
        "</style>\n";
}

void SvgCanvas::BeginPage(const PageSize& size) {
    out += "<g class=\"plan-page\"";
    if (pageTop > 0) out += Attribute("transform", "translate(0 " + SvgNumber(pageTop) + ')');
    out += ">\n<rect" + Attribute("width", SvgNumber(size.width)) +
           Attribute("height", SvgNumber(size.height)) + " fill=\"#ffffff\"/>\n";
    pageTop += size.height + betweenPages;
}

void SvgCanvas::EndPage() {
    out += "</g>\n";
}

void SvgCanvas::BeginFloor(const CanvasGroup& floor) {
    out +=
        "<g" + Attribute("class", Kinds(floor)) + Attribute("data-floor", EscapeXml(floor.title));
    if (!floor.id.empty()) out += Attribute("id", floor.id);
    out += ">\n";
}

void SvgCanvas::BeginLayer(const CanvasGroup& layer, const Ink& ink) {
    out += "<g" + Attribute("class", Kinds(layer));
    if (!layer.id.empty()) out += Attribute("id", layer.id);
    out += InkAttributes(ink) + ">\n";
}

void SvgCanvas::BeginElement(const CanvasGroup& element) {
    out += "<g" + Attribute("id", element.id) + Attribute("class", Kinds(element)) +
           Attribute("data-guid", EscapeXml(element.guid)) +
           Attribute("data-drawn", element.drawnAs) + "><title>" + EscapeXml(element.title) +
           "</title>\n";
}

void SvgCanvas::Draw(const std::vector<PlanPath>& paths) {
    out += "<path" + Attribute("d", SvgPathData(paths, frame)) + "/>\n";
}

void SvgCanvas::Draw(const std::vector<PlanPath>& paths, const Ink& ink) {
    out += "<path" + Attribute("d", SvgPathData(paths, frame)) + InkAttributes(ink) + "/>\n";
}

void SvgCanvas::Write(const CanvasText& text) {
    const PlanPoint at = frame.OnPaper(text.at);
    const std::string x = SvgNumber(at.x), y = SvgNumber(at.y);
    out += "<text" + Attribute("class", text.kind) + Attribute("x", x) + Attribute("y", y) +
           Attribute("font-size", SvgNumber(text.size)) + Attribute("fill", text.colour);
    if (text.anchor == TextAnchor::Middle) out += Attribute("text-anchor", "middle");
    if (text.anchor == TextAnchor::End) out += Attribute("text-anchor", "end");
    if (text.isBold) out += Attribute("font-weight", "bold");
    if (text.angle != 0) {
        const double degrees = -text.angle * 180 / std::numbers::pi;
        out += Attribute("transform", "rotate(" + SvgNumber(degrees) + ' ' + x + ' ' + y + ')');
    }
    out += '>' + EscapeXml(text.text) + "</text>\n";
}

std::string SvgCanvas::Take() {
    out += "</svg>\n";
    return std::move(out);
}

}  // namespace ZVSmartModel
