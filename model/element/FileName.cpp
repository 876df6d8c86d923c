#include "model/element/FileName.h"

#include <algorithm>

namespace ZVSmartModel {

std::string ExtensionOf(std::string_view path) {
    const std::size_t end = path.find_last_of("./");
    if (end == std::string_view::npos || path[end] == '/') return {};
    std::string extension(path.substr(end + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return extension;
}

}  // namespace ZVSmartModel
