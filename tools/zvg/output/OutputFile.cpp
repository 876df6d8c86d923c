#include "tools/zvg/output/OutputFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <optional>

#include "model/element/AnonymousFile.h"
#include "model/element/FileSink.h"
#include "model/element/NewFile.h"
#include "tools/zvg/Command.h"
#include "tools/zvg/output/SignalCleanup.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace fs = std::filesystem;

namespace {

/// By device and number, as one file may have many names.
bool IsFile(const std::string& path, const struct stat& file) {
    struct stat status = {};
    const int failed = path == "-" ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status);
    return failed == 0 && status.st_dev == file.st_dev && status.st_ino == file.st_ino;
}

}  // namespace

OutputFile::OutputFile(const std::string& target, bool force,
                       const std::vector<std::string>& inputs)
    : target(target), force(force) {
    if (target == "-") {
        if (isatty(STDOUT_FILENO)) {
            throw Error(Status::Usage, "standard output is a terminal: name a file, or pipe it on");
        }
        nameless = OpenAnonymousFile();
        return;
    }
    this->target = FollowLinks(target);
    struct stat status = {};
    if (stat(this->target.c_str(), &status) == 0) {
        for (const std::string& input : inputs) {
            if (IsFile(input, status)) Fail("it is what is read");
        }
        if (!S_ISREG(status.st_mode)) Fail("it is not a regular file");
        if (!force) Fail("it exists (--force replaces it)");
    }
    if (!file.Create(this->target)) Fail(std::strerror(errno));
}

OutputFile::~OutputFile() {
    if (nameless >= 0) close(nameless);
}

int OutputFile::Descriptor() const {
    return nameless >= 0 ? nameless : file.Descriptor();
}

bool OutputFile::Replaces() const {
    std::error_code ignored;
    return nameless < 0 && fs::exists(target, ignored);
}

void OutputFile::Fill(const std::function<void(ZVSmartFormat::CZVFTOutStream&)>& write) const {
    FileSink sink(dup(Descriptor()));
    try {
        write(sink);
    } catch (const Error&) {
        if (sink.Failure() != 0) Fail(std::strerror(sink.Failure()));
        throw;
    }
    if (!sink.Close()) Fail(std::strerror(sink.Failure()));
}

void OutputFile::Commit() {
    Finish();
    if (nameless >= 0) return CopyToStandardOutput();
    Place(false);
    SyncFolder();
}

void OutputFile::CommitTogether(const std::vector<OutputFile*>& files) {
    for (OutputFile* const file : files) file->Finish();
    std::vector<OutputFile*> named;
    for (OutputFile* const file : files) {
        if (file->nameless < 0) {
            named.push_back(file);
        } else {
            file->CopyToStandardOutput();
        }
    }
    std::optional<SignalsHeld> held;  // by which a part of them could be left
    if (named.size() > 1) held.emplace();
    std::size_t placed = 0;
    try {
        for (; placed < named.size(); ++placed) named[placed]->Place(placed + 1 < named.size());
    } catch (const Error&) {
        std::exception_ptr failure = std::current_exception();
        while (placed-- > 0) {
            try {
                named[placed]->TakeBack();
            } catch (const Error&) {
                failure = std::current_exception();
            }
        }
        std::rethrow_exception(failure);
    }
    for (OutputFile* const file : named) file->file.ForgetOld();
    for (OutputFile* const file : named) file->SyncFolder();
}

void OutputFile::Finish() {
    struct stat status = {};
    if (fstat(Descriptor(), &status) != 0) Fail(std::strerror(errno));
    bytes = static_cast<unsigned long long>(status.st_size);
    if (nameless < 0 && !file.Sync()) Fail(std::strerror(errno));
}

void OutputFile::Place(bool keepOld) {
    if (!file.Place(force, keepOld)) Fail(std::strerror(errno));
}

void OutputFile::TakeBack() {
    if (file.TakeBack()) return;
    const std::string reason = std::strerror(errno);
    Fail(reason + (file.OldName().empty() ? "" : "; what it was is now " + file.OldName()));
}

void OutputFile::SyncFolder() {
    if (!file.SyncFolder()) Fail(std::strerror(errno));
}

void OutputFile::CopyToStandardOutput() {
    std::string piece(1 << 16, '\0');
    for (off_t position = 0;;) {
        const ssize_t count = pread(nameless, piece.data(), piece.size(), position);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) Fail(std::strerror(errno));
        if (count == 0) break;
        WriteOutput({piece.data(), static_cast<std::size_t>(count)});
        position += count;
    }
    FinishOutput();
}

void OutputFile::Fail(const std::string& reason) const {
    throw Error(Status::InputOutput, "cannot write " + TargetName(target) + ": " + reason);
}

std::string TargetName(const std::string& target) {
    return target == "-" ? "standard output" : target;
}

}  // namespace ZVSmartModel::Tool
