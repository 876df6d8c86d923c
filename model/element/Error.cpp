#include "ZVSmartModel/Error.h"

namespace ZVSmartModel {

Error::Error(Status status, const std::string& message, const std::string& path,
             std::uint64_t position)
    : std::runtime_error(message), status(status), path(path), position(position) {}

Error::~Error() = default;

}  // namespace ZVSmartModel
