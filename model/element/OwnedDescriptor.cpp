#include "model/element/OwnedDescriptor.h"

#include <unistd.h>

#include <utility>

namespace ZVSmartModel {

OwnedDescriptor& OwnedDescriptor::operator=(OwnedDescriptor&& other) noexcept {
    std::swap(number, other.number);
    return *this;
}

OwnedDescriptor::~OwnedDescriptor() {
    if (number >= 0) close(number);
}

int OwnedDescriptor::Release() {
    return std::exchange(number, -1);
}

}  // namespace ZVSmartModel
