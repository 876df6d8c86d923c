#include "tools/zvg/reading/StandardInput.h"

#include <unistd.h>

#include "model/element/BlockFileImp.h"
#include "model/element/InputSource.h"

namespace ZVSmartModel::Tool {

namespace {

constexpr const char* standardInput = "standard input";

const InputStream& ReadStandardInput() {
    static const std::unique_ptr<InputStream> shared = [] {
        if (isatty(STDIN_FILENO)) {
            throw Error(Status::Usage,
                        "standard input is a terminal: pipe a block file into it or name one");
        }
        return OpenInput(STDIN_FILENO, standardInput);
    }();
    return *shared;
}

}  // namespace

std::string InputName(const std::string& path) {
    return path == "-" ? standardInput : path;
}

OpenedFile OpenNamed(const std::string& path) {
    if (path != "-") return OpenedFile(OpenInput(path), path);
    return OpenedFile(ReadStandardInput().Again(), standardInput);
}

OpenOptions OptionsOf(const CommonOptions& common) {
    OpenOptions options;
    options.unlimited = common.noLimit;
    options.threads = common.threads;
    return options;
}

BlockFile OpenBlockFile(const std::string& path, const CommonOptions& common) {
    return BlockFile::Imp::Open(OpenNamed(path), OptionsOf(common), "--no-limit");
}

}  // namespace ZVSmartModel::Tool
