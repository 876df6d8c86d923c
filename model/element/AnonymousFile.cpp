#include "model/element/AnonymousFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "ZVSmartModel/Error.h"

namespace ZVSmartModel {

int OpenAnonymousFile() {
    const char* const chosen = std::getenv("TMPDIR");
    const std::string folder = chosen && *chosen ? chosen : "/tmp";
    int descriptor = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (descriptor >= 0) return descriptor;
    // Not every file system knows files without names.
    std::string path = folder + "/zvg-XXXXXX";
    descriptor = mkostemp(path.data(), O_CLOEXEC);
    if (descriptor < 0) {
        throw Error(Status::InputOutput,
                    "cannot make a temporary file in " + folder + ": " + std::strerror(errno));
    }
    unlink(path.c_str());
    return descriptor;
}

}  // namespace ZVSmartModel
