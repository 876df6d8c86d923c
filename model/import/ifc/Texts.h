#pragma once

#include <ifcpp/model/BuildingObject.h>

#include <string>

#include "model/import/ifc/StepText.h"

namespace ZVSmartModel {

/// The text of a label, an identifier or the like; empty where there is none.
template <typename Label>
std::wstring TextOf(const std::shared_ptr<Label>& label) {
    return label ? FinishStepString(label->m_value) : std::wstring();
}

/// A value, a measure or an enumerator as a person would write it: numbers in full precision
/// and in the file's units, truth values as "true", "false" or "unknown".
std::wstring ValueText(const BuildingObject& value);

/// The enumerator that the attribute `name` of `entity` holds; empty where it has none.
std::wstring EnumeratorOf(const BuildingEntity& entity, const char* name);

}  // namespace ZVSmartModel
