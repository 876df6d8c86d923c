#include <algorithm>

#include "model/element/BlockFileImp.h"
#include "model/element/ElementRecord.h"
#include "model/element/Utf8.h"
#include "model/find/ElementNames.h"
#include "model/query/ComponentScan.h"
#include "model/query/Tables.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

namespace OfElements {

// NOLINTNEXTLINE(readability-identifier-naming): as in SQL
enum : int { file, floor, idx, guid, name, ofClass, type, material, colour, parent, id };

void Rows(const ComponentAt& at, const Request& request, RowBatch& rows) {
    const ElementView& element = at.element;
    if (!request.Accepts(ofClass, element.className)) return;
    if (!request.Accepts(guid, element.guid)) return;
    if (!request.Accepts(name, element.name)) return;
    rows.Begin(at.id);
    rows.Text(file, at.path);
    rows.Integer(floor, at.index.floor);
    rows.Integer(idx, at.index.position);
    rows.Text(guid, element.guid);
    rows.TextIfAny(name, element.name);
    rows.TextIfAny(ofClass, element.className);
    rows.TextIfAny(type, element.typeName);
    rows.TextIfAny(material, element.materialName);
    if (request.Wants(colour) && element.colour) rows.Text(colour, ColourText(*element.colour));
    if (!element.parents.empty()) rows.Text(parent, element.parents.front());
    rows.Integer(id, at.id);
}

}  // namespace OfElements

namespace OfProperties {

// NOLINTNEXTLINE(readability-identifier-naming): as in SQL
enum : int { file, element, set, name, value, number, unit };

void Rows(const ComponentAt& at, const Request& request, RowBatch& rows) {
    for (const PropertyView& property : at.element.properties) {
        if (!request.Accepts(name, property.name)) continue;
        if (!request.Accepts(set, property.set)) continue;
        rows.Begin(0);
        rows.Text(file, at.path);
        rows.Integer(element, at.id);
        rows.TextIfAny(set, property.set);
        rows.Text(name, property.name);
        rows.Text(value, property.value);
        rows.TextIfAny(unit, property.unit);
        if (!request.Wants(number)) continue;
        if (const auto read = property.Number()) rows.Real(number, *read);
    }
}

}  // namespace OfProperties

namespace OfMaterials {

// NOLINTNEXTLINE(readability-identifier-naming): as in SQL
enum : int { file, element, idx, name, category, thickness };

void Rows(const ComponentAt& at, const Request& request, RowBatch& rows) {
    int number = 0;
    for (const MaterialView& material : at.element.materials) {
        const int itself = number++;
        if (!request.Accepts(name, material.name)) continue;
        rows.Begin(0);
        rows.Text(file, at.path);
        rows.Integer(element, at.id);
        rows.Integer(idx, itself);
        rows.TextIfAny(name, material.name);
        rows.TextIfAny(category, material.category);
        if (material.thickness) rows.Real(thickness, *material.thickness);
    }
}

}  // namespace OfMaterials

namespace OfRelations {

// NOLINTNEXTLINE(readability-identifier-naming): as in SQL
enum : int { file, element, kind, target };

void Rows(const ComponentAt& at, const Request& request, RowBatch& rows) {
    const auto add = [&](std::string_view itsKind, std::string_view guid) {
        if (!request.Accepts(kind, itsKind) || !request.Accepts(target, guid)) return;
        rows.Begin(0);
        rows.Text(file, at.path);
        rows.Integer(element, at.id);
        rows.Text(kind, itsKind);
        rows.Text(target, guid);
    };
    for (const std::string_view guid : at.element.parents) add("parent", guid);
    if (!at.element.group.empty()) add("group", at.element.group);
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

template <ComponentScan::RowsOf rowsOf, bool materials>
std::unique_ptr<FileScan> Scan(QueriedFiles& files, unsigned int file, const Request& request) {
    return std::make_unique<ComponentScan>(files, file, request, rowsOf,
                                           ElementReader::Wants{NoProperties(), materials});
}

/// Where the name is given the others are passed. A name that ends as companions' names do cannot
/// be told from these without what stands before it.
std::unique_ptr<FileScan> ScanProperties(QueriedFiles& files, unsigned int file,
                                         const Request& request) {
    SZVLGCompParts parts;
    for (const Request::TextFilter& filter : request.texts) {
        const bool isName = filter.column == OfProperties::name && !filter.text.empty();
        if (isName && filter.text.back() != '@') parts.propertyNameEnd = FromUtf8(filter.text);
    }
    return std::make_unique<ComponentScan>(files, file, request, OfProperties::Rows,
                                           ElementReader::Wants{parts, false});
}

/// An element of one file is looked up; who wants it of all files reads them.
std::unique_ptr<FileScan> ScanElements(QueriedFiles& files, unsigned int file,
                                       const Request& request) {
    const SZVLGCompParts parts = request.Wants(OfElements::name) ? NameAlone() : NoProperties();
    auto scan = std::make_unique<ComponentScan>(files, file, request, OfElements::Rows,
                                                ElementReader::Wants{parts, false});
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
             .scan = Scan<OfMaterials::Rows, true>},
            {.name = "relations",
             .columns = {{"file", "TEXT", Meaning::Path},
                         {"element", "INTEGER", Meaning::Element},
                         {"kind", "TEXT", Meaning::Text},
                         {"target", "TEXT", Meaning::Text}},
             .rowIsElement = false,
             .rowsPerFile = 300,
             .work = Work::decodeFloors,
             .scan = Scan<OfRelations::Rows, false>}};
}

}  // namespace ZVSmartModel
