#include "model/import/mesh/GltfExtras.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "model/element/Utf8.h"

namespace ZVSmartModel {

namespace {

using nlohmann::json;

std::wstring TextOf(const json& object, const char* name) {
    const auto found = object.find(name);
    if (found == object.end() || !found->is_string()) return {};
    return FromUtf8(found->get_ref<const std::string&>());
}

double NumberOf(const json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_number() ? found->get<double>() : 0;
}

bool IsCount(const json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_number_unsigned();
}

std::vector<std::wstring> TextsOf(const json& object, const char* name) {
    std::vector<std::wstring> texts;
    const auto found = object.find(name);
    if (found == object.end() || !found->is_array()) return texts;
    for (const json& text : *found) {
        if (text.is_string()) texts.push_back(FromUtf8(text.get_ref<const std::string&>()));
    }
    return texts;
}

/// A value that is neither an array nor an object.
StoredProperty ScalarProperty(const std::wstring& name, const json& value) {
    switch (value.type()) {
        case json::value_t::string:
            return {name, FromUtf8(value.get_ref<const std::string&>()), textKind, L""};
        case json::value_t::boolean:
            return {name, value.get<bool>() ? L"true" : L"false", L"boolean", L""};
        case json::value_t::number_integer:
            return {name, std::to_wstring(value.get<std::int64_t>()), L"integer", L""};
        case json::value_t::number_unsigned:
            return {name, std::to_wstring(value.get<std::uint64_t>()), L"integer", L""};
        case json::value_t::number_float:
            return {name, NumberText(value.get<double>()), L"real", L""};
        default:
            return {name, L"", emptyKind, L""};
    }
}

/// The kind of values of both kinds.
std::wstring CommonKind(const std::wstring& a, const std::wstring& b) {
    const auto isNumber = [](const std::wstring& kind) {
        return kind == L"integer" || kind == L"real";
    };
    if (a == b) return a;
    return isNumber(a) && isNumber(b) ? L"real" : textKind;
}

StoredProperty ListProperty(const std::wstring& name, const json& values) {
    if (values.empty()) return {name, L"", emptyKind, L""};
    std::wstring text, kind;
    for (const json& value : values) {
        const StoredProperty one = ScalarProperty(L"", value);
        kind = kind.empty() ? one.kind : CommonKind(kind, one.kind);
        text += (&value == &values.front() ? L"" : L", ") + one.value;
    }
    return {name, text, L"list:" + kind, L""};
}

/// Whether an object is a value with its kind, as exports have it.
bool SaysItsKind(const json& object) {
    const std::wstring kind = TextOf(object, "kind");
    const bool hasValue = object.contains("value") && object["value"].is_string();
    return hasValue && !kind.empty() && kind.find(L' ') == std::wstring::npos &&
           object.size() == (object.contains("unit") ? 3U : 2U);
}

// Documents nest no deeper than their reader lets them.
// NOLINTNEXTLINE(misc-no-recursion)
void AddValue(const std::wstring& name, const json& value,
              std::vector<StoredProperty>& properties) {
    const bool isList = value.is_array() &&
                        std::none_of(value.begin(), value.end(), std::mem_fn(&json::is_structured));
    if (!value.is_structured()) {
        properties.push_back(ScalarProperty(name, value));
    } else if (isList || value.empty()) {
        properties.push_back(ListProperty(name, value));
    } else if (value.is_object() && SaysItsKind(value)) {
        properties.push_back(
            {name, TextOf(value, "value"), TextOf(value, "kind"), TextOf(value, "unit")});
    } else {
        for (const auto& [member, inner] : value.items()) {  // of an array, its numbers
            AddValue(name + L'.' + FromUtf8(member), inner, properties);
        }
    }
}

ModelElement ElementOf(const json& extras, const json& classification) {
    ModelElement element;
    element.globalId = TextOf(extras, "globalId");
    element.entityType = TextOf(classification, "level2");
    element.predefinedType = TextOf(classification, "level2b");
    element.typeName = TextOf(classification, "level3");
    element.belongsTo = TextsOf(extras, "relatedTo");
    element.group = TextOf(extras, "group");
    for (const std::wstring& name : TextsOf(extras, "materials")) {
        element.materials.push_back({name, L"", {}});
    }
    std::vector<StoredProperty> properties;
    const auto found = extras.find("properties");
    if (found != extras.end() && found->is_object()) {
        for (const auto& [name, value] : found->items()) {
            AddValue(FromUtf8(name), value, properties);
        }
    }
    element.properties = PairsOf(properties);
    return element;
}

}  // namespace

void AddExtras(const json& extras, const std::wstring& set,
               std::vector<StoredProperty>& properties) {
    if (!extras.is_object()) {
        AddValue(set + L".Extras", extras, properties);
        return;
    }
    for (const auto& [name, value] : extras.items()) {
        const bool isSet = value.is_object() && !SaysItsKind(value);
        AddValue(isSet ? FromUtf8(name) : set + L'.' + FromUtf8(name), value, properties);
    }
}

void TakeExtras(const json& extras, MeshNode& node) {
    if (extras.is_object()) {
        const auto classification = extras.find("classification");
        const bool isClassified = classification != extras.end() && classification->is_object();
        const bool isKnown = !TextOf(extras, "globalId").empty();
        if (isKnown && isClassified) {
            node.element = ElementOf(extras, *classification);
            return;
        }
        if (IsCount(extras, "floor") && IsCount(extras, "order")) {
            node.floor = {extras["floor"].get<std::uint64_t>(),
                          extras["order"].get<std::uint64_t>(), NumberOf(extras, "elevation"),
                          NumberOf(extras, "height")};
        } else if (isKnown) {
            node.owner = {TextOf(extras, "globalId"), TextOf(extras, "name"),
                          TextOf(extras, "longName")};
        }
    }
    AddExtras(extras, L"Node", node.properties);
}

}  // namespace ZVSmartModel
