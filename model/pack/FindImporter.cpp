#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>

#include "ZVSmartModel/Error.h"
#include "model/pack/ImportProcess.h"

namespace ZVSmartModel {

namespace {

/// The folder, with a slash behind it, of the library or program that this code is in.
std::string OwnFolder() {
    Dl_info own = {};
    if (dladdr(reinterpret_cast<void*>(&FindImporter), &own) == 0 || own.dli_fname == nullptr) {
        return "";
    }
    const std::string path = own.dli_fname;
    // A program that was found in the search path may know itself by its name alone.
    if (path.find('/') == std::string::npos) return "";
    return path.substr(0, path.rfind('/') + 1);
}

std::string ProgramFolder() {
    char path[4096];
    const ssize_t count = readlink("/proc/self/exe", path, sizeof path);
    const std::string whole(path, static_cast<std::size_t>(count > 0 ? count : 0));
    return whole.substr(0, whole.rfind('/') + 1);
}

}  // namespace

std::string FindImporter(const std::string& given) {
    if (!given.empty()) return given;
    const char* const named = std::getenv("ZVG_IMPORT");
    if (named != nullptr && *named != '\0') return named;
    for (const std::string& folder : {OwnFolder(), ProgramFolder()}) {
        if (folder.empty()) continue;
        for (const char* place : {"zvg-import", ZVG_IMPORT_FROM_LIBRARY, ZVG_IMPORT_FROM_PROGRAM}) {
            std::string path = folder + place;
            if (access(path.c_str(), X_OK) == 0) return path;
        }
    }
    throw Error(Status::Internal,
                "the program zvg-import is missing (ZVG_IMPORT may say where it is)");
}

}  // namespace ZVSmartModel
