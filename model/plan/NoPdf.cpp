#include "ZVSmartModel/Error.h"
#include "model/plan/PdfCanvas.h"

namespace ZVSmartModel {

std::unique_ptr<Canvas> MakePdfCanvas(const std::string&) {
    throw Error(Status::Usage, "this build writes no PDF: it has no cairo");
}

}  // namespace ZVSmartModel
