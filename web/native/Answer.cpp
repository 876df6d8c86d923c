#include "web/native/Answer.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>

namespace ZVSmartModel::Web {

static_assert(std::endian::native == std::endian::little, "arrays are answered as they lie");

void Json::Separate() {
    if (!isFirst) text += ',';
    isFirst = false;
}

Json& Json::Open(char bracket) {
    Separate();
    text += bracket;
    isFirst = true;
    return *this;
}

Json& Json::Close(char bracket) {
    text += bracket;
    isFirst = false;
    return *this;
}

Json& Json::Key(std::string_view name) {
    Text(name);
    text += ':';
    isFirst = true;
    return *this;
}

Json& Json::Text(std::string_view utf8) {
    Separate();
    text += '"';
    for (const char unit : utf8) {
        if (unit == '"' || unit == '\\') {
            text += '\\';
            text += unit;
        } else if (static_cast<unsigned char>(unit) < 0x20) {
            constexpr char digits[] = "0123456789abcdef";
            text += "\\u00";
            text += digits[unit >> 4];
            text += digits[unit & 15];
        } else {
            text += unit;
        }
    }
    text += '"';
    return *this;
}

Json& Json::Number(std::uint64_t number) {
    Separate();
    text += std::to_string(number);
    return *this;
}

Json& Json::Real(double number) {
    if (!std::isfinite(number)) return Null();
    Separate();
    std::array<char, 32> digits;
    text.append(digits.data(),
                std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
    return *this;
}

Json& Json::Truth(bool value) {
    Separate();
    text += value ? "true" : "false";
    return *this;
}

Json& Json::Null() {
    Separate();
    text += "null";
    return *this;
}

namespace {

void WriteProperties(Json& json, const std::vector<Property>& properties) {
    json.Key("properties").Open('[');
    for (const Property& property : properties) {
        json.Open('{').Key("set").Text(property.set).Key("name").Text(property.name);
        json.Key("value").Text(property.value).Key("kind").Text(property.kind);
        json.Key("unit").Text(property.unit).Close('}');
    }
    json.Close(']');
}

void WriteMaterials(Json& json, const std::vector<Material>& materials) {
    json.Key("materials").Open('[');
    for (const Material& material : materials) {
        json.Open('{').Key("name").Text(material.name).Key("category").Text(material.category);
        json.Key("thickness");
        if (material.thickness) {
            json.Real(*material.thickness);
        } else {
            json.Null();
        }
        WriteProperties(json, material.properties);
        json.Close('}');
    }
    json.Close(']');
}

}  // namespace

void Write(Json& json, const Element& element) {
    json.Open('{').Key("floor").Number(element.index.floor);
    json.Key("position").Number(element.index.position);
    json.Key("guid").Text(element.guid).Key("name").Text(element.name);
    json.Key("floorName").Text(element.floorName).Key("className").Text(element.className);
    json.Key("predefinedType").Text(element.predefinedType);
    json.Key("typeName").Text(element.typeName).Key("materialName").Text(element.materialName);
    json.Key("buildingName").Text(element.buildingName).Key("siteName").Text(element.siteName);
    json.Key("colour");
    if (const std::optional<Rgba>& colour = element.colour) {
        json.Open('[').Number(colour->red).Number(colour->green);
        json.Number(colour->blue).Number(colour->alpha).Close(']');
    } else {
        json.Null();
    }
    json.Key("parents").Open('[');
    for (const std::string& parent : element.parents) json.Text(parent);
    json.Close(']').Key("group").Text(element.group);
    WriteProperties(json, element.properties);
    WriteMaterials(json, element.materials);
    json.Close('}');
}

void Write(Json& json, const std::vector<Damage>& damages) {
    json.Open('[');
    for (const Damage& damage : damages) {
        json.Open('{').Key("position").Number(damage.position);
        json.Key("reason").Text(damage.reason).Close('}');
    }
    json.Close(']');
}

void Answer::Append(const void* first, std::size_t byteCount) {
    if (byteCount == 0) return;
    const std::size_t begin = bytes.size();
    bytes.resize(begin + byteCount);
    std::memcpy(bytes.data() + begin, first, byteCount);
}

}  // namespace ZVSmartModel::Web
