#include "tools/zvg-import/ParentLink.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

#include "model/pack/FilePassing.h"
#include "model/pack/ImportProcess.h"

namespace ZVSmartModel::Tool {

void TellParent(ChildMessage kind, std::string_view text) {
    const std::string line = MessageLine(kind, text);
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t count = write(childMessages, rest.data(), rest.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;  // nobody listens any more
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
}

std::optional<ModelFile> AskParentFor(const std::string& name) {
    TellParent(ChildMessage::Open, name);
    OwnedDescriptor file = TakePassedFile(childMessages);
    if (!file.IsOpen()) return std::nullopt;
    return ModelFile(std::move(file));
}

}  // namespace ZVSmartModel::Tool
