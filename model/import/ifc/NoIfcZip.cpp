#include "model/import/ImportReport.h"
#include "model/import/ifc/IfcZip.h"

namespace ZVSmartModel {

std::string UnpackedIfc(const std::string&) {
    throw ImportError("this build reads no ifcZIP (it needs libzip): unpack the file first");
}

}  // namespace ZVSmartModel
