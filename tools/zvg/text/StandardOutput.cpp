#include "tools/zvg/text/StandardOutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

#include "model/element/Utf8.h"
#include "tools/zvg/Command.h"
#include "tools/zvg/output/SignalCleanup.h"
#include "tools/zvg/text/Colour.h"

namespace ZVSmartModel::Tool {

namespace {

bool endsWithReader = false;  // unless the caller ignores SIGPIPE
std::string linePrefix;
bool lineBegins = true;

/// What a reader that has read enough leaves behind is no failure.
void EndAsReaderWentAway() {
    RemoveUnfinished();
    std::signal(SIGPIPE, SIG_DFL);
    std::raise(SIGPIPE);
}

[[noreturn]] void ThrowWriteFailure() {
    if (errno == EPIPE && endsWithReader) EndAsReaderWentAway();
    throw Error(Status::InputOutput, std::string("standard output: ") + std::strerror(errno));
}

void WriteBytes(std::string_view data) {
    if (std::fwrite(data.data(), 1, data.size(), stdout) != data.size()) ThrowWriteFailure();
}

}  // namespace

void PrepareStandardStreams() {
    for (int number = 0; number <= 2; ++number) {
        if (fcntl(number, F_GETFD) != -1 || errno != EBADF) continue;
        // Takes the lowest free number, which is this one; writing to it fails.
        if (open("/dev/null", O_RDONLY) != number) return;
    }
    endsWithReader = std::signal(SIGPIPE, SIG_IGN) != SIG_IGN;
    std::signal(SIGXFSZ, SIG_IGN);
}

void WriteOutput(std::string_view data) {
    if (linePrefix.empty()) return WriteBytes(data);
    while (!data.empty()) {
        if (lineBegins) WriteBytes(linePrefix);
        const std::size_t end = data.find('\n');
        lineBegins = end != std::string_view::npos;
        const std::string_view line = data.substr(0, lineBegins ? end + 1 : data.size());
        WriteBytes(line);
        data.remove_prefix(line.size());
    }
}

OutputPrefix::OutputPrefix(const std::string& prefix) {
    linePrefix = prefix;
    lineBegins = true;
}

OutputPrefix::~OutputPrefix() {
    linePrefix.clear();
}

void FinishOutput() {
    if (std::fflush(stdout) != 0) ThrowWriteFailure();
}

void WriteMessage(std::string_view message) {
    const std::string line = "zvg: " + EscapeControls(message) + '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

void WriteError(std::string_view message) {
    const std::string text = "zvg: " + EscapeControls(message);
    const std::string line = Painted(Paint::Error, text, STDERR_FILENO) + '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace ZVSmartModel::Tool
