#include "model/import/ModelFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "model/import/ImportReport.h"

namespace ZVSmartModel {

ModelFile::ModelFile(OwnedDescriptor file) : file(std::move(file)) {
    struct stat status = {};
    if (fstat(this->file.Number(), &status) != 0) throw ImportError(std::strerror(errno));
    size = static_cast<std::uint64_t>(std::max<off_t>(status.st_size, 0));
}

std::size_t ModelFile::Read(std::uint64_t position, char* bytes, std::size_t byteCount) const {
    if (position >= size) return 0;
    const std::uint64_t wanted = std::min<std::uint64_t>(byteCount, size - position);
    std::uint64_t done = 0;
    while (done < wanted) {
        const ssize_t count =
            pread(file.Number(), bytes + done, wanted - done, static_cast<off_t>(position + done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw ImportError(std::strerror(errno));
        if (count == 0) break;  // cut short meanwhile
        done += static_cast<std::uint64_t>(count);
    }
    return static_cast<std::size_t>(done);
}

std::string ModelFile::Bytes(std::uint64_t position, std::uint64_t most) const {
    if (position >= size) return {};
    std::string bytes(std::min(most, size - position), '\0');
    bytes.resize(Read(position, bytes.data(), bytes.size()));
    return bytes;
}

}  // namespace ZVSmartModel
