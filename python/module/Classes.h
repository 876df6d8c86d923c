#pragma once

#include <pybind11/pybind11.h>

namespace ZVSmartModel::Python {

/// Each adds its classes and functions to the module.
/// @{
void AddElementClass(pybind11::module_& module);
void AddBodyClasses(pybind11::module_& module);
void AddModelClass(pybind11::module_& module);
void AddDifferenceClasses(pybind11::module_& module);
void AddDocumentClasses(pybind11::module_& module);
void AddQueryClasses(pybind11::module_& module);
void AddPacking(pybind11::module_& module);
void AddWriterClass(pybind11::module_& module);
/// @}

}  // namespace ZVSmartModel::Python
