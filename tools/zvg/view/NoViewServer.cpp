#include "ZVSmartModel/Error.h"
#include "tools/zvg/view/ViewServer.h"

namespace ZVSmartModel::Tool {

bool CanServe() {
    return false;
}

void ServeUntilSignal(const ViewerPage&, ServedFiles&, std::uint16_t,
                      const std::function<void(const std::string&)>&) {
    throw Error(Status::Usage, "this build serves no pages (it needs libmicrohttpd)");
}

}  // namespace ZVSmartModel::Tool
