#include "model/import/ifc/IfcLosses.h"

#include <ifcpp/IFC4/include/IfcBooleanResult.h>
#include <ifcpp/IFC4/include/IfcElement.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcMappedItem.h>
#include <ifcpp/IFC4/include/IfcProduct.h>
#include <ifcpp/IFC4/include/IfcProductRepresentation.h>
#include <ifcpp/IFC4/include/IfcRelAggregates.h>
#include <ifcpp/IFC4/include/IfcRepresentation.h>
#include <ifcpp/IFC4/include/IfcRepresentationMap.h>

#include <algorithm>
#include <string_view>

#include "model/element/Utf8.h"
#include "model/import/ifc/Texts.h"

namespace ZVSmartModel {

namespace {

bool Holds(const std::string& text, std::string_view words) {
    return text.find(words) != std::string::npos;
}

/// A message without the numbers in it, which make each one another.
std::string WithoutNumbers(const std::string& text) {
    std::string plain;
    for (const char c : text) {
        const bool digit = c >= '0' && c <= '9';
        if (digit && (plain.empty() || plain.back() == '#' || plain.back() == ' ')) continue;
        plain += c;
    }
    plain.erase(std::remove(plain.begin(), plain.end(), '#'), plain.end());
    const std::size_t first = plain.find_first_not_of(" :,");
    const std::size_t last = plain.find_last_not_of(" :,\n");
    return first == std::string::npos ? "" : plain.substr(first, last - first + 1);
}

bool IsBodyName(const std::wstring& identifier) {
    return identifier.empty() || identifier == L"Body" || identifier == L"Facetation" ||
           identifier == L"Tessellation";
}

/// Whether the file gives the product a body, which is more than a plan or an axis.
bool HasBody(const IfcProduct& product) {
    if (!product.m_Representation) return false;
    const auto& all = product.m_Representation->m_Representations;
    return std::any_of(all.begin(), all.end(), [](const auto& representation) {
        return representation && !representation->m_Items.empty() &&
               IsBodyName(TextOf(representation->m_RepresentationIdentifier));
    });
}

bool HasOpenings(const BuildingEntity& object) {
    const auto* const element = dynamic_cast<const IfcElement*>(&object);
    return element != nullptr && !element->m_HasOpenings_inverse.empty();
}

bool HasBooleans(const IfcRepresentation& representation) {
    const auto& items = representation.m_Items;
    return std::any_of(items.begin(), items.end(), [](const auto& item) {
        if (const auto mapped = std::dynamic_pointer_cast<IfcMappedItem>(item)) {
            const auto& source = mapped->m_MappingSource;
            return source && source->m_MappedRepresentation &&
                   std::any_of(source->m_MappedRepresentation->m_Items.begin(),
                               source->m_MappedRepresentation->m_Items.end(), [](const auto& one) {
                                   return dynamic_cast<IfcBooleanResult*>(one.get()) != nullptr;
                               });
        }
        return dynamic_cast<IfcBooleanResult*>(item.get()) != nullptr;
    });
}

/// Whether a body of which nothing is left may be right: something is cut out of it, or out of
/// the whole that it is part of.
bool MayBeCutAway(const IfcProduct& product) {
    if (HasOpenings(product)) return true;
    for (const auto& weakRelation : product.m_Decomposes_inverse) {
        const auto relation = weakRelation.lock();
        if (relation && relation->m_RelatingObject && HasOpenings(*relation->m_RelatingObject)) {
            return true;
        }
    }
    const auto& all = product.m_Representation->m_Representations;
    return std::any_of(all.begin(), all.end(), [](const auto& representation) {
        return representation && HasBooleans(*representation);
    });
}

}  // namespace

void IfcLosses::TakeLoadMessage(const std::string& text) {
    if (Holds(text, "not found")) {
        findings.Add("brokenReference", "lines refer to lines that are not there", true, "");
    } else if (Holds(text, "Wrong parameter count")) {
        findings.Add("damagedLine", WithoutNumbers(text.substr(0, text.find(','))), true, "");
    } else {
        findings.Add("reader", WithoutNumbers(text), true, "");
    }
}

void IfcLosses::TakeText(const StepText& step) {
    for (const std::string& start : step.damaged.first) {
        findings.Add("damagedLine", "lines are damaged and were left out", true, start, 0);
    }
    if (step.damaged.count > 0) {
        findings.Add("damagedLine", "lines are damaged and were left out", true, "",
                     step.damaged.count);
    }
    if (step.cutReferences > 0) {
        findings.Add("brokenReference", "references to what was left out were removed", true, "",
                     step.cutReferences);
    }
    for (const auto& [name, sample] : step.entities) {
        if (sample.known) continue;
        const std::string text = "entities of the type " + name + " are not known here";
        for (const std::string& where : sample.first) {
            findings.Add("unknownEntity", text, true, where, 0);
        }
        findings.Add("unknownEntity", text, true, "", sample.count);
        const bool isObject = !sample.first.front().starts_with('#') && !name.starts_with("IFCREL");
        if (isObject) findings.elements[name].inModel = sample.count;
    }
}

void IfcLosses::Begin(const ModelElement& element) {
    current = ToUtf8(element.globalId);
    failed = false;
}

void IfcLosses::TakeBodyMessage(const std::string& text) {
    failed = true;
    if (Holds(text, "could not be cut")) {
        findings.Add("openingNotCut", "openings could not be cut", true, current);
    } else {
        findings.Add("body", "a part of the body cannot be made: " + WithoutNumbers(text), true,
                     current);
    }
}

void IfcLosses::End(const ModelElement& element, const IfcProduct* source) {
    ImportCount& count = findings.elements[ToUtf8(element.entityType)];
    ++count.inModel;
    ++count.arrived;
    if (!element.shapes.empty()) ++count.withBody;
    const bool bodiless = source && element.shapes.empty() && HasBody(*source);
    if (bodiless && (failed || !MayBeCutAway(*source))) {
        findings.Add("noBody", "elements lost their bodies", true, current);
    } else if (bodiless) {
        findings.Add("emptyBody", "bodies hold no surface", false, current);
    }
}

void IfcLosses::DropValues(const ModelElement& element, std::size_t count) {
    if (count == 0) return;
    findings.Add("valueDropped", "values were dropped as another has the same name", true,
                 ToUtf8(element.globalId), count);
}

}  // namespace ZVSmartModel
