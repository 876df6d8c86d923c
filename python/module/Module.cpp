// The extension module behind the package zvg: the model library's values and calls as Python's.

#include "Classes.h"
#include "PythonCalls.h"

PYBIND11_MODULE(_zvg, module) {
    using namespace ZVSmartModel::Python;
    pybind11::options options;
    options.disable_function_signatures();
    module.doc() = "The compiled part of zvg.";
    module.attr("__version__") = ZVG_VERSION;
    RegisterErrors();
    AddElementClass(module);
    AddBodyClasses(module);
    AddModelClass(module);
    AddDocumentClasses(module);
    AddDifferenceClasses(module);
    AddQueryClasses(module);
    AddPacking(module);
    AddWriterClass(module);
}
