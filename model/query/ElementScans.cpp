#include <algorithm>

#include "model/element/BlockFileImp.h"
#include "model/element/ElementRecord.h"
#include "model/element/PropertyKinds.h"
#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"
#include "model/find/ElementNames.h"
#include "model/query/ComponentScan.h"
#include "model/query/Tables.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

void KeyTo(RowBatch& rows, int column, const SerialKey& key) {
    if (!key.name.empty()) return rows.Text(column, key.name);
    rows.Text(column, KeyText(key));
}

bool AcceptsKey(const Request& request, int column, const SerialKey& key) {
    if (!key.name.empty()) return request.Accepts(column, key.name);
    const std::string* const wanted = request.TextOf(column);
    return wanted == nullptr || *wanted == KeyText(key);
}

/// Says nothing where it is as it was made.
bool IsDefault(const SerialKey& key) {
    return key == SerialKey();
}

namespace OfElements {

// NOLINTNEXTLINE(readability-identifier-naming): as in SQL
enum : int { file, floor, idx, guid, name, ofClass, type, material, colour, parent, id };

void Rows(const ComponentAt& at, const Request& request, RowBatch& rows) {
    const SZVLGZvgComp& comp = at.comp;
    if (!request.Accepts(ofClass, comp.classLevel2Name)) return;
    if (!AcceptsKey(request, guid, comp.compGuidName)) return;
    const std::wstring_view called = request.Wants(name) ? WideNameOf(comp) : std::wstring_view();
    if (!request.Accepts(name, called)) return;
    rows.Begin(at.id);
    rows.Text(file, at.path);
    rows.Integer(floor, at.index.floor);
    rows.Integer(idx, at.index.position);
    if (request.Wants(guid)) KeyTo(rows, guid, comp.compGuidName);
    rows.TextIfAny(name, called);
    rows.TextIfAny(ofClass, comp.classLevel2Name);
    rows.TextIfAny(type, comp.classLevel3Name);
    rows.TextIfAny(material, comp.classLevel4Name);
    if (request.Wants(colour)) {
        if (const auto own = ColourOf(comp)) rows.Text(colour, ColourText(*own));
    }
    if (request.Wants(parent) && !comp.relatedGuidNames.empty()) {
        KeyTo(rows, parent, comp.relatedGuidNames.front());
    }
    rows.Integer(id, at.id);
}

}  // namespace OfElements

namespace OfProperties {

// NOLINTNEXTLINE(readability-identifier-naming): as in SQL
enum : int { file, element, set, name, value, number, unit };

void Rows(const ComponentAt& at, const Request& request, RowBatch& rows) {
    const PropertyPairs& pairs = at.comp.compProperties;
    std::string text;
    for (std::size_t i = 0; i < pairs.size();) {
        const PropertyView property = TakeProperty(pairs, i);
        if (!request.Accepts(name, property.name)) continue;
        if (!request.Accepts(set, property.set)) continue;
        rows.Begin(0);
        rows.Text(file, at.path);
        rows.Integer(element, at.id);
        rows.TextIfAny(set, property.set);
        rows.Text(name, property.name);
        rows.Text(value, property.value);
        rows.TextIfAny(unit, property.unit);
        if (!request.Wants(number) || property.kind == textKind) continue;
        text.clear();
        AppendUtf8(text, property.value);
        if (const auto read = NumberOf(text, ToUtf8(property.kind))) rows.Real(number, *read);
    }
}

}  // namespace OfProperties

namespace OfMaterials {

// NOLINTNEXTLINE(readability-identifier-naming): as in SQL
enum : int { file, element, idx, name, category, thickness };

void Rows(const ComponentAt& at, const Request& request, RowBatch& rows) {
    if (at.comp.geoRefs.empty()) return;
    int number = 0;
    for (const Material& material : MaterialsOf(at.comp)) {
        const int itself = number++;
        if (const std::string* const wanted = request.TextOf(name)) {
            if (*wanted != material.name) continue;
        }
        rows.Begin(0);
        rows.Text(file, at.path);
        rows.Integer(element, at.id);
        rows.Integer(idx, itself);
        if (!material.name.empty()) rows.Text(name, material.name);
        if (!material.category.empty()) rows.Text(category, material.category);
        if (material.thickness) rows.Real(thickness, *material.thickness);
    }
}

}  // namespace OfMaterials

namespace OfRelations {

// NOLINTNEXTLINE(readability-identifier-naming): as in SQL
enum : int { file, element, kind, target };

void Rows(const ComponentAt& at, const Request& request, RowBatch& rows) {
    const auto add = [&](const wchar_t* itsKind, const SerialKey& key) {
        if (!request.Accepts(kind, itsKind) || !AcceptsKey(request, target, key)) return;
        rows.Begin(0);
        rows.Text(file, at.path);
        rows.Integer(element, at.id);
        rows.Text(kind, itsKind);
        KeyTo(rows, target, key);
    };
    for (const SerialKey& key : at.comp.relatedGuidNames) add(L"parent", key);
    if (!IsDefault(at.comp.groupGuidName)) add(L"group", at.comp.groupGuidName);
}

}  // namespace OfRelations

/// The elements of a GUID, where the file can tell them without reading all.
std::optional<std::vector<ElementIndex>> PlacesOfGuid(const BlockFile& file,
                                                      const std::string& guid) {
    try {
        return file.Internals().Ask(
            [&](OpenedBlock& block) { return NamesOf(file.Internals(), block).OfGuid(guid); });
    } catch (const Error& error) {
        if (error.GetStatus() != Status::Damaged) throw;
        return std::nullopt;
    }
}

template <ComponentScan::RowsOf rowsOf>
std::unique_ptr<FileScan> Scan(QueriedFiles& files, unsigned int file, const Request& request) {
    return std::make_unique<ComponentScan>(files, file, request, rowsOf, NoProperties());
}

/// Where the name is given the others are passed. A name that ends as companions' names do cannot
/// be told from these without what stands before it.
std::unique_ptr<FileScan> ScanProperties(QueriedFiles& files, unsigned int file,
                                         const Request& request) {
    SZVLGCompParts parts;
    for (const Request::TextFilter& filter : request.texts) {
        const bool isName = filter.column == OfProperties::name && !filter.wide.empty();
        if (isName && filter.wide.back() != L'@') parts.propertyNameEnd = filter.wide;
    }
    return std::make_unique<ComponentScan>(files, file, request, OfProperties::Rows, parts);
}

/// An element of one file is looked up; who wants it of all files reads them.
std::unique_ptr<FileScan> ScanElements(QueriedFiles& files, unsigned int file,
                                       const Request& request) {
    const SZVLGCompParts parts = request.Wants(OfElements::name) ? NameAlone() : NoProperties();
    auto scan = std::make_unique<ComponentScan>(files, file, request, OfElements::Rows, parts);
    const std::string* const guid = request.TextOf(OfElements::guid);
    if (scan->File() && guid != nullptr && request.path && !request.element) {
        if (auto places = PlacesOfGuid(*scan->File(), *guid)) scan->Only(std::move(*places));
    }
    return scan;
}

}  // namespace

std::vector<Table> ElementTables() {
    return {{.name = "elements",
             .columns = {{"file", "TEXT", Meaning::Path},
                         {"floor", "INTEGER", Meaning::Floor},
                         {"idx", "INTEGER", Meaning::Position},
                         {"guid", "TEXT", Meaning::Text},
                         {"name", "TEXT", Meaning::Text},
                         {"class", "TEXT", Meaning::Text},
                         {"type", "TEXT"},
                         {"material", "TEXT"},
                         {"colour", "TEXT"},
                         {"parent", "TEXT"},
                         {"id", "INTEGER", Meaning::Element}},
             .rowIsElement = true,
             .rowsPerFile = 200,
             .work = Work::decodeFloors,
             .scan = ScanElements},
            {.name = "properties",
             .columns = {{"file", "TEXT", Meaning::Path},
                         {"element", "INTEGER", Meaning::Element},
                         {"set", "TEXT", Meaning::Text},
                         {"name", "TEXT", Meaning::Text},
                         {"value", "TEXT"},
                         {"number", "REAL"},
                         {"unit", "TEXT"}},
             .rowIsElement = false,
             .rowsPerFile = 4000,
             .work = Work::decodeFloors,
             .scan = ScanProperties},
            {.name = "materials",
             .columns = {{"file", "TEXT", Meaning::Path},
                         {"element", "INTEGER", Meaning::Element},
                         {"idx", "INTEGER"},
                         {"name", "TEXT", Meaning::Text},
                         {"category", "TEXT"},
                         {"thickness", "REAL"}},
             .rowIsElement = false,
             .rowsPerFile = 400,
             .work = Work::decodeFloors,
             .scan = Scan<OfMaterials::Rows>},
            {.name = "relations",
             .columns = {{"file", "TEXT", Meaning::Path},
                         {"element", "INTEGER", Meaning::Element},
                         {"kind", "TEXT", Meaning::Text},
                         {"target", "TEXT", Meaning::Text}},
             .rowIsElement = false,
             .rowsPerFile = 300,
             .work = Work::decodeFloors,
             .scan = Scan<OfRelations::Rows>}};
}

}  // namespace ZVSmartModel
