#pragma once

#include "tools/zvg/import/Model.h"

class IfcElement;

/// What a file says about an element: its own texts as "Element.Name" and so on, then the
/// properties and quantities of its sets as "set.property", then those of its type that it does
/// not give another value. Values are in the file's units.
ModelProperties PropertiesOf(const IfcElement& element);
