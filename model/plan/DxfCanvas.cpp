#include "model/plan/DxfCanvas.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <numbers>
#include <utility>

#include "model/element/Utf8.h"

namespace ZVSmartModel {

namespace {

constexpr std::size_t longestName = 31;

char LayerByte(char byte) {
    if (byte >= 'a' && byte <= 'z') return static_cast<char>(byte - 'a' + 'A');
    const bool isValid = (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
                         byte == '-' || byte == '_' || byte == '$';
    return isValid ? byte : '_';
}

/// Capitals, digits, "$", "-" and "_", as release 12 has them.
std::string LayerName(const std::vector<std::string>& kinds) {
    std::string name;
    for (const std::string& kind : kinds) {
        if (kind == "plan-layer") continue;
        if (!name.empty()) name += '-';
        std::transform(kind.begin(), kind.end(), std::back_inserter(name), LayerByte);
    }
    if (name.empty()) return "0";
    // The end says how it is drawn.
    constexpr std::size_t kept = 16;
    if (name.size() > longestName) name.erase(kept, name.size() - longestName);
    return name;
}

/// One line of ASCII; other characters as "\U+XXXX", those above U+FFFF as "?".
std::string PlainText(const std::string& text) {
    std::string plain;
    for (const wchar_t character : FromUtf8(text)) {
        const auto code = static_cast<unsigned int>(character);
        if (code < 0x80) {
            plain += code < 0x20 ? ' ' : static_cast<char>(code);
        } else if (code > 0xFFFF) {
            plain += '?';
        } else {
            char escape[16];
            std::snprintf(escape, sizeof escape, "\\U+%04X", code);
            plain += escape;
        }
    }
    return plain;
}

std::string Pair(int code, const std::string& value) {
    return std::to_string(code) + '\n' + value + '\n';
}

std::string Section(const std::string& name, const std::string& content) {
    return Pair(0, "SECTION") + Pair(2, name) + content + Pair(0, "ENDSEC");
}

std::string Table(const std::string& name, std::size_t rows, const std::string& content) {
    return Pair(0, "TABLE") + Pair(2, name) + Pair(70, std::to_string(rows)) + content +
           Pair(0, "ENDTAB");
}

std::string LineTypes() {
    const std::string continuous = Pair(0, "LTYPE") + Pair(2, "CONTINUOUS") + Pair(70, "0") +
                                   Pair(3, "Solid line") + Pair(72, "65") + Pair(73, "0") +
                                   Pair(40, "0.0");
    const std::string dashed = Pair(0, "LTYPE") + Pair(2, "DASHED") + Pair(70, "0") +
                               Pair(3, "__ __ __") + Pair(72, "65") + Pair(73, "2") +
                               Pair(40, "0.2") + Pair(49, "0.12") + Pair(49, "-0.08");
    return Table("LTYPE", 2, continuous + dashed);
}

}  // namespace

void DxfCanvas::SetFrame(const SheetFrame& inFrame) {
    frame = inFrame;
    if (!frame.isPlan || floorName.empty()) return;
    const std::string name = std::exchange(floorName, std::string());
    layer.assign(1, '0');
    constexpr double above = 6;  // millimetres
    Write({name, {frame.west, frame.north + above / frame.unitsPerMetre}, 5});
}

void DxfCanvas::BeginFloor(const CanvasGroup& floor) {
    floorName = floor.title;
}

void DxfCanvas::BeginLayer(const CanvasGroup& group, const Ink& ink) {
    layer = LayerName(group.kinds);
    layerInk = ink;
    if (frame.isPlan) layers.emplace(layer, ink.isDashed);
}

void DxfCanvas::Draw(const std::vector<PlanPath>& paths, const Ink& ink) {
    if (!frame.isPlan || ink.stroke == "none" || ink.stroke == ink.fill) return;
    for (const PlanPath& path : paths) DrawPath(path);
}

void DxfCanvas::DrawPath(const PlanPath& path) {
    const std::vector<PlanVertex>& corners = path.vertices;
    if (corners.size() < 2) return;
    if (corners.size() == 2 && !path.closed && corners[0].bulge == 0) {
        Put(0, "LINE");
        Put(8, layer);
        PutPoint(corners[0].point);
        PutPoint(corners[1].point, 11);
        return;
    }
    Put(0, "POLYLINE");
    Put(8, layer);
    Put(66, "1");
    entities += Pair(10, "0.0") + Pair(20, "0.0") + Pair(30, "0.0");
    Put(70, path.closed ? "1" : "0");
    for (const PlanVertex& corner : corners) {
        Put(0, "VERTEX");
        Put(8, layer);
        PutPoint(corner.point);
        if (corner.bulge != 0) Put(42, corner.bulge);
    }
    Put(0, "SEQEND");
    Put(8, layer);
}

void DxfCanvas::Write(const CanvasText& text) {
    if (!frame.isPlan || text.text.empty()) return;
    Put(0, "TEXT");
    Put(8, layer);
    PutPoint(text.at);
    Put(40, text.size / frame.unitsPerMetre);
    Put(1, PlainText(text.text));
    if (text.angle != 0) Put(50, text.angle * 180 / std::numbers::pi);
    if (text.anchor == TextAnchor::Start) return;
    Put(72, text.anchor == TextAnchor::Middle ? "1" : "2");
    PutPoint(text.at, 11);
}

std::string DxfCanvas::Take() {
    layers.emplace("0", false);
    std::string rows;
    for (const auto& [name, isDashed] : layers) {
        rows += Pair(0, "LAYER") + Pair(2, name) + Pair(70, "0") + Pair(62, "7") +
                Pair(6, isDashed ? "DASHED" : "CONTINUOUS");
    }
    return Section("HEADER", Pair(9, "$ACADVER") + Pair(1, "AC1009")) +
           Section("TABLES", LineTypes() + Table("LAYER", layers.size(), rows)) +
           Section("ENTITIES", entities) + Pair(0, "EOF");
}

void DxfCanvas::Put(int code, const std::string& value) {
    entities += Pair(code, value);
}

void DxfCanvas::Put(int code, double value) {
    char digits[64];
    const auto [end, error] =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 6);
    Put(code, error == std::errc() ? std::string(digits, end) : "0.0");
}

void DxfCanvas::PutPoint(const PlanPoint& point, int code) {
    Put(code, point.x + offset);
    Put(code + 10, point.y);
    Put(code + 20, 0.0);
}

}  // namespace ZVSmartModel
