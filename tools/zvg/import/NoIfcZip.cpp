#include "tools/zvg/import/IfcZip.h"
#include "tools/zvg/import/ImportReport.h"

std::string UnpackedIfc(const std::string&) {
    throw ImportError("this build reads no ifcZIP (it needs libzip): unpack the file first");
}
