#include "tools/zvg/import/ChildProcess.h"

#include <fcntl.h>
#include <sys/personality.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

#include "tools/zvg/Command.h"
#include "tools/zvg/output/SignalCleanup.h"

namespace {

constexpr const char* childFlag = "--child-of-zvg";
constexpr int childMessages = 3;
constexpr int cannotStart = 127;

[[noreturn]] void ThrowCannotStart() {
    throw ToolError(ExitStatus::InputOutput,
                    std::string("cannot start the import process: ") + std::strerror(errno));
}

/// The reading and the writing end of a pipe; closed with this object.
struct Pipe {
    Pipe() {
        if (pipe2(ends, O_CLOEXEC) != 0) ThrowCannotStart();
    }
    ~Pipe() {
        close(ends[0]);
        CloseWriting();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void CloseWriting() {
        if (ends[1] >= 0) close(ends[1]);
        ends[1] = -1;
    }

    int ends[2] = {-1, -1};
};

/// Makes `target` the number of the file that `source` is, over exec as well.
bool GiveNumber(int source, int target) {
    return dup2(source, target) == target;
}

/// Becomes the child; only what is safe between fork and exec. Does not return.
[[noreturn]] void BecomeChild(char* const* arguments, int messages, int output) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // Nothing random is left for an importer to depend on. Where this is refused, as in some
    // containers, the work is done all the same.
    const int current = personality(0xFFFFFFFF);
    if (current != -1) personality(static_cast<unsigned long>(current) | ADDR_NO_RANDOMIZE);
    // Out of the way of the numbers that are given below.
    constexpr int firstFree = 10;
    messages = fcntl(messages, F_DUPFD_CLOEXEC, firstFree);
    output = fcntl(output, F_DUPFD_CLOEXEC, firstFree);
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    const bool ready = GiveNumber(nowhere, STDIN_FILENO) && GiveNumber(nowhere, STDOUT_FILENO) &&
                       GiveNumber(nowhere, STDERR_FILENO) && GiveNumber(messages, childMessages) &&
                       GiveNumber(output, childOutput);
    if (ready) execv("/proc/self/exe", arguments);
    _exit(cannotStart);
}

pid_t Start(const std::vector<std::string>& arguments, int messages, int output) {
    std::vector<std::string> words = {"zvg", childFlag};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const pid_t child = fork();
    if (child < 0) ThrowCannotStart();
    if (child == 0) BecomeChild(pointers.data(), messages, output);
    return child;
}

void HandOn(std::string_view line,
            const std::function<void(ChildMessage, const std::string&)>& listener) {
    if (!line.empty()) listener(static_cast<ChildMessage>(line[0]), std::string(line.substr(1)));
}

/// Reads lines until the child closes its end.
void Listen(int messages, const std::function<void(ChildMessage, const std::string&)>& listener) {
    std::string pending;
    char bytes[4096];
    while (true) {
        const ssize_t count = read(messages, bytes, sizeof bytes);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        pending.append(bytes, static_cast<std::size_t>(count));
        std::size_t begin = 0;
        for (std::size_t end = pending.find('\n'); end != std::string::npos;
             end = pending.find('\n', begin)) {
            HandOn(std::string_view(pending).substr(begin, end - begin), listener);
            begin = end + 1;
        }
        pending.erase(0, begin);
    }
}

/// Kills and buries a child that is still there when its parent has no more use for it.
class Burial {
  public:
    explicit Burial(pid_t child) : child(child) { KillOnSignal(child); }
    ~Burial() {
        if (child == 0) return;
        kill(child, SIGKILL);
        Wait();
    }
    Burial(const Burial&) = delete;
    Burial& operator=(const Burial&) = delete;

    /// Waits for the child's end and returns its status as `waitpid` gives it.
    int Wait() {
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
        KillOnSignal(0);
        child = 0;
        return status;
    }

  private:
    pid_t child;
};

[[noreturn]] void ThrowDied(int signal) {
    const std::string name = strsignal(signal);
    throw ToolError(ExitStatus::InputOutput,
                    signal == SIGKILL ? "the importer was killed (perhaps for lack of memory)"
                                      : "the importer crashed (" + name + ')');
}

}  // namespace

int RunInChild(const std::vector<std::string>& arguments, int output,
               const std::function<void(ChildMessage, const std::string&)>& listener) {
    Pipe messages;
    Burial child(Start(arguments, messages.ends[1], output));
    messages.CloseWriting();
    Listen(messages.ends[0], listener);
    const int status = child.Wait();
    if (WIFSIGNALED(status)) ThrowDied(WTERMSIG(status));
    if (WEXITSTATUS(status) == cannotStart) {
        throw ToolError(ExitStatus::Internal, "cannot start the import process");
    }
    return WEXITSTATUS(status);
}

std::optional<std::vector<std::string_view>> ChildArguments(int argc, char** argv) {
    if (argc < 2 || std::strcmp(argv[1], childFlag) != 0) return std::nullopt;
    return std::vector<std::string_view>(argv + 2, argv + argc);
}

void TellParent(ChildMessage kind, std::string_view text) {
    std::string line = static_cast<char>(kind) + std::string(text);
    for (char& c : line) {
        if (c == '\n' || c == '\r') c = ' ';
    }
    line += '\n';
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t count = write(childMessages, rest.data(), rest.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;  // nobody listens any more
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
}
