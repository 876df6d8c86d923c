#include "web/native/Search.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ZVSmartModel::Web {

namespace {

char Small(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// Looks for a text, whatever the case of ASCII letters.
class Sought {
  public:
    explicit Sought(std::string given) : text(std::move(given)) {
        std::transform(text.begin(), text.end(), text.begin(), Small);
    }

    bool IsIn(std::string_view whole) const {
        const auto same = [](char a, char b) { return Small(a) == b; };
        return std::search(whole.begin(), whole.end(), text.begin(), text.end(), same) !=
               whole.end();
    }
    bool IsIn(const std::vector<Property>& properties) const {
        return std::any_of(properties.begin(), properties.end(), [this](const Property& property) {
            return IsIn(property.value) || IsIn(property.FullName());
        });
    }
    bool IsIn(const Element& element) const {
        const std::string* const texts[] = {&element.guid,      &element.name,
                                            &element.className, &element.predefinedType,
                                            &element.typeName,  &element.materialName};
        const auto holds = [this](const std::string* each) { return IsIn(*each); };
        return text.empty() || std::any_of(std::begin(texts), std::end(texts), holds) ||
               IsIn(element.properties);
    }

  private:
    std::string text;
};

/// Writes elements in short, and gathers their classes.
class Rows {
  public:
    explicit Rows(Json& json) : json(json) { json.Open('{').Key("elements").Open('['); }

    void Add(const Element& element) {
        const auto [known, isNew] = numbers.emplace(element.className, classes.size());
        if (isNew) classes.push_back(element.className);
        json.Open('[').Number(element.index.floor).Number(element.index.position);
        json.Text(element.guid).Text(element.name).Number(known->second).Close(']');
    }
    void Finish() {
        json.Close(']').Key("classes").Open('[');
        for (const std::string& name : classes) json.Text(name);
        json.Close(']').Close('}');
    }

  private:
    Json& json;
    std::map<std::string, std::size_t> numbers;
    std::vector<std::string> classes;
};

}  // namespace

void WriteFound(Json& json, const BlockFile& file, const Request& request) {
    Selection selection = request.selection;
    Rows rows(json);
    std::vector<ElementIndex> found;
    const bool isLookup = !request.guid.empty() || !request.name.empty();
    if (!request.guid.empty()) {
        if (const auto index = file.FindGuid(request.guid)) found.push_back(*index);
    } else if (!request.name.empty()) {
        found = file.FindName(request.name);
    }
    const Sought sought(request.text);
    if (isLookup && found.empty()) return rows.Finish();
    if (isLookup) selection.elements = std::move(found);
    file.ForEach(selection, [&](const Element& element) {
        const bool isNamed = request.name.empty() || element.name == request.name;
        if (isNamed && sought.IsIn(element)) rows.Add(element);
        return true;
    });
    rows.Finish();
}

}  // namespace ZVSmartModel::Web
