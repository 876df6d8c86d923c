#include "tools/zvg/output/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "tools/zvg/Command.h"
#include "tools/zvg/output/AnonymousFile.h"
#include "tools/zvg/output/FileSink.h"
#include "tools/zvg/output/SignalCleanup.h"
#include "tools/zvg/text/StandardOutput.h"

namespace fs = std::filesystem;

namespace {

/// Where `path` leads if it is a symbolic link; a dangling link leads to the file it would make.
fs::path FollowLinks(fs::path path) {
    constexpr int mostLinks = 40;
    std::error_code ignored;
    for (int i = 0; i < mostLinks && fs::is_symlink(path, ignored); ++i) {
        path = path.parent_path() / fs::read_symlink(path, ignored);
    }
    return path;
}

}  // namespace

OutputFile::OutputFile(const std::string& target, bool force)
    : target(target), force(force), toStandardOutput(target == "-") {
    if (toStandardOutput) {
        if (isatty(STDOUT_FILENO)) {
            throw ToolError(ExitStatus::Usage,
                            "standard output is a terminal: name a file, or pipe it on");
        }
        descriptor = OpenAnonymousFile();
        return;
    }
    this->target = FollowLinks(target).string();
    std::error_code ignored;
    const fs::file_status status = fs::status(this->target, ignored);
    if (fs::exists(status) && !fs::is_regular_file(status)) Fail("it is not a regular file");
    if (fs::exists(status) && !force) Fail("it exists (--force replaces it)");
    CreateTemporary();
}

OutputFile::~OutputFile() {
    if (descriptor >= 0) close(descriptor);
    if (temporary.empty()) return;
    unlink(temporary.c_str());
    KeepOnSignal(temporary.c_str());
}

void OutputFile::CreateTemporary() {
    const fs::path path(target);
    const std::string stem = '.' + path.filename().string() + '.' + std::to_string(getpid());
    constexpr int mostTries = 100;  // a process of this number may have died here before
    for (int i = 0; descriptor < 0 && i < mostTries; ++i) {
        temporary = (path.parent_path() / (stem + '-' + std::to_string(i) + ".tmp")).string();
        descriptor = open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0 && errno != EEXIST) break;
    }
    if (descriptor < 0) Fail(std::strerror(errno));
    RemoveOnSignal(temporary.c_str());
}

void OutputFile::Fill(const std::function<void(ZVSmartFormat::CZVFTOutStream&)>& write) const {
    FileSink sink(dup(descriptor));
    write(sink);
    if (!sink.Close()) Fail(std::strerror(sink.Failure()));
}

void OutputFile::Commit() {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) Fail(std::strerror(errno));
    bytes = static_cast<unsigned long long>(status.st_size);
    if (toStandardOutput) {
        CopyToStandardOutput();
        Close();
        return;
    }
    Close();
    Rename();
    KeepOnSignal(temporary.c_str());
    temporary.clear();
}

void OutputFile::CopyToStandardOutput() {
    std::string piece(1 << 16, '\0');
    for (off_t position = 0;;) {
        const ssize_t count = pread(descriptor, piece.data(), piece.size(), position);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) Fail(std::strerror(errno));
        if (count == 0) break;
        WriteOutput({piece.data(), static_cast<std::size_t>(count)});
        position += count;
    }
    FinishOutput();
}

void OutputFile::Close() {
    const int closing = descriptor;
    descriptor = -1;
    if (close(closing) != 0) Fail(std::strerror(errno));
}

/// Without `force` a target that has appeared meanwhile is not replaced, where the file system
/// can promise that.
void OutputFile::Rename() {
    const char* from = temporary.c_str();
    if (!force) {
        if (renameat2(AT_FDCWD, from, AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return;
        if (errno != EINVAL && errno != ENOSYS) Fail(std::strerror(errno));
    }
    if (std::rename(from, target.c_str()) != 0) Fail(std::strerror(errno));
}

void OutputFile::Fail(const std::string& reason) const {
    throw ToolError(ExitStatus::InputOutput, "cannot write " + TargetName(target) + ": " + reason);
}

std::string TargetName(const std::string& target) {
    return target == "-" ? "standard output" : target;
}
