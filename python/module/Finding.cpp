#include "Finding.h"

#include <algorithm>

#include "PythonText.h"
#include "ZVSmartModel/Error.h"

namespace ZVSmartModel::Python {

namespace {

std::vector<std::string> TextsOf(py::handle given) {
    if (given.is_none()) return {};
    if (py::isinstance<py::str>(given)) return {Utf8Of(given)};
    std::vector<std::string> texts;
    for (const py::handle item : given) texts.push_back(item.cast<Text>().utf8);
    if (texts.empty()) throw py::value_error("no class is named");
    return texts;
}

std::optional<std::string> FloorOf(py::handle given) {
    if (given.is_none()) return std::nullopt;
    if (py::isinstance<py::int_>(given)) return std::string(py::str(given));
    return given.cast<Text>().utf8;
}

std::function<bool(const Property&)> TestFor(py::handle wanted) {
    if (py::isinstance<py::bool_>(wanted)) {
        const std::string text = wanted.cast<bool>() ? "true" : "false";
        return [text](const Property& property) { return property.value == text; };
    }
    if (py::isinstance<py::float_>(wanted) || py::isinstance<py::int_>(wanted)) {
        const double number = wanted.cast<double>();
        return [number](const Property& property) { return property.Number() == number; };
    }
    if (!py::isinstance<py::str>(wanted)) {
        throw py::type_error("a property is compared with a str, a bool or a number");
    }
    const std::string text = Utf8Of(wanted);
    return [text](const Property& property) { return property.value == text; };
}

}  // namespace

Wanted::Wanted(py::handle classes, py::handle floor, py::handle where, bool rooms) {
    selection.floor = FloorOf(floor);
    selection.classNames = TextsOf(classes);
    selection.rooms = rooms;
    if (where.is_none()) return;
    for (const auto& [property, value] : where.cast<py::dict>()) {
        conditions.emplace_back(property.cast<Text>().utf8, TestFor(value));
    }
}

bool Wanted::Holds(const Element& element) const {
    if (name && element.name != *name) return false;
    return std::all_of(conditions.begin(), conditions.end(), [&](const Condition& condition) {
        const auto& properties = element.properties;
        const auto found = std::find_if(
            properties.begin(), properties.end(),
            [&](const Property& property) { return property.FullName() == condition.first; });
        return found != properties.end() && condition.second(*found);
    });
}

void Wanted::ForEach(const BlockFile& file, const std::function<void(const Element&)>& use) const {
    file.ForEach(selection, [&](const Element& element) {
        if (Holds(element)) use(element);
        return true;
    });
}

std::vector<Element> Wanted::In(const BlockFile& file) const {
    std::vector<Element> found;
    ForEach(file, [&found](const Element& element) { found.push_back(element); });
    return found;
}

Selection Wanted::SelectionIn(const BlockFile& file, const std::string& path) const {
    if (conditions.empty() && !name) return selection;
    Selection found;
    ForEach(file, [&found](const Element& element) { found.elements.push_back(element.index); });
    if (found.elements.empty()) {
        throw Error(Status::NotFound, path + ": no element is like that", path);
    }
    return found;
}

}  // namespace ZVSmartModel::Python
