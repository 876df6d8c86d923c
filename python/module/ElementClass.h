#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <optional>

#include "OpenModel.h"
#include "ZVSmartModel/Body.h"
#include "ZVSmartModel/Element.h"

namespace ZVSmartModel::Python {

/// An element of a model that is open: its values, and the way back to what else the file has.
struct ModelElement {
    ModelElement(std::shared_ptr<OpenModel> model, Element values)
        : model(std::move(model)), values(std::move(values)) {}

    std::shared_ptr<OpenModel> model;
    Element values;
    py::object properties;             ///< a dict, made when first asked for
    std::optional<Measures> measures;  ///< likewise
};

/// The element at a place.
ModelElement ElementAt(const std::shared_ptr<OpenModel>& model, ElementIndex index);
/// The element of a GUID; none where there is none.
std::optional<ModelElement> ElementOfGuid(const std::shared_ptr<OpenModel>& model,
                                          const std::string& guid);

}  // namespace ZVSmartModel::Python
