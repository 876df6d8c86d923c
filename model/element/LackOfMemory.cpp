#include "model/element/LackOfMemory.h"

#include <new>
#include <string_view>

namespace ZVSmartModel {

bool IsOutOfMemory(const std::exception& error) {
    const std::string_view text = error.what();
    return dynamic_cast<const std::bad_alloc*>(&error) != nullptr || text == "bad malloc memory" ||
           text == "bad relloc memory";
}

}  // namespace ZVSmartModel
