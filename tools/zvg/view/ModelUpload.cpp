#include "tools/zvg/view/ModelUpload.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "ZVSmartModel/Pack.h"
#include "model/element/AnonymousFile.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel::Tool {

namespace fs = std::filesystem;

bool ModelUpload::IsGoodName(const std::string& name) {
    constexpr std::size_t mostBytesOfName = 200;
    if (name.empty() || name.size() > mostBytesOfName || name[0] == '.') return false;
    if (ToUtf8(FromUtf8(name)) != name) return false;
    return std::none_of(name.begin(), name.end(), [](unsigned char c) {
        return c < 0x20 || c == 0x7F || c == '/' || c == '\\';
    });
}

ModelUpload::ModelUpload(const std::string& name) : name(name) {
    const char* const temporary = std::getenv("TMPDIR");
    std::string made = temporary && *temporary ? temporary : "/tmp";
    made += "/zvg-view-XXXXXX";
    if (!mkdtemp(made.data())) {
        throw Error(Status::InputOutput,
                    std::string("cannot make a folder: ") + std::strerror(errno));
    }
    folder = made + '/';
    file = OwnedDescriptor(
        open((folder + name).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (file.IsOpen()) return;
    const std::string reason = std::strerror(errno);
    rmdir(folder.c_str());
    throw Error(Status::InputOutput, "cannot keep the model: " + reason);
}

ModelUpload::~ModelUpload() {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

bool ModelUpload::Take(const char* from, std::size_t count) {
    if (!file.IsOpen()) return false;
    const bool isLate = std::chrono::steady_clock::now() - begun > longestTime;
    bool good = !isLate && count <= mostBytes - bytes;
    while (good && count != 0) {
        const ssize_t written = write(file.Number(), from, count);
        if (written < 0 && errno == EINTR) continue;
        good = written > 0;
        if (!good) break;
        from += written;
        count -= static_cast<std::size_t>(written);
        bytes += static_cast<std::uint64_t>(written);
    }
    if (!good) file = OwnedDescriptor();
    return good;
}

OwnedDescriptor ModelUpload::Pack(const std::atomic<bool>& cancelled) {
    file = OwnedDescriptor();
    OwnedDescriptor block(OpenAnonymousFile());
    PackOptions options;
    options.drawPreview = false;  // the viewer draws the model itself
    options.progress = [&cancelled](const std::string&, double) { return !cancelled; };
    try {
        PackModelFile(folder + name, block.Number(), BlockName(), options);
    } catch (const Error& error) {
        std::string reason = error.what();
        for (std::size_t at = reason.find(folder); at != std::string::npos;
             at = reason.find(folder, at)) {
            reason.erase(at, folder.size());
        }
        throw Error(error.GetStatus(), reason);
    }
    return block;
}

std::string ModelUpload::BlockName() const {
    return fs::path(name).stem().string() + ".zvg";
}

}  // namespace ZVSmartModel::Tool
