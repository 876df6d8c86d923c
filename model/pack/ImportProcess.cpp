#include "model/pack/ImportProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>

#include "ZVSmartModel/Error.h"
#include "model/pack/FilePassing.h"

namespace ZVSmartModel {

namespace {

constexpr int cannotStart = 127;

[[noreturn]] void ThrowCannotStart() {
    throw Error(Status::InputOutput,
                std::string("cannot start the import process: ") + std::strerror(errno));
}

/// The two ends of a connection.
struct Connection {
    Connection() {
        int ends[2] = {-1, -1};
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) ThrowCannotStart();
        parent = OwnedDescriptor(ends[0]);
        child = OwnedDescriptor(ends[1]);
    }
    OwnedDescriptor parent, child;
};

/// Pointers to texts, and a null pointer behind them, as exec takes them.
std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// What the loader and the allocator go by; the rest of the environment is not a model's business.
std::vector<std::string> ChildEnvironment() {
    std::vector<std::string> kept;
    for (char** each = environ; *each != nullptr; ++each) {
        const std::string_view text = *each;
        for (const std::string_view name : {"LD_", "MALLOC_", "GLIBC_TUNABLES="}) {
            if (text.starts_with(name)) kept.emplace_back(text);
        }
    }
    return kept;
}

/// What a new child is given; made before fork, since nothing may be allocated after it.
struct ChildStart {
    const char* program;
    pid_t parent;
    std::vector<char*> arguments, environment;
    int messages, output;
    std::uint64_t memoryBytes;
};

/// Makes `target` the number of the file that `source` is, over exec as well.
bool GiveNumber(int source, int target) {
    return dup2(source, target) == target;
}

/// Becomes the child; only what is safe between fork and exec. Does not return.
[[noreturn]] void BecomeChild(const ChildStart& start) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != start.parent) _exit(cannotStart);  // it died before
    setpgid(0, 0);
    LimitOwnMemory(start.memoryBytes);
    // Out of the way of the numbers that are given below.
    constexpr int firstFree = 10;
    const int messages = fcntl(start.messages, F_DUPFD_CLOEXEC, firstFree);
    const int output = fcntl(start.output, F_DUPFD_CLOEXEC, firstFree);
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    const bool ready = GiveNumber(nowhere, STDIN_FILENO) && GiveNumber(nowhere, STDOUT_FILENO) &&
                       GiveNumber(nowhere, STDERR_FILENO) && GiveNumber(messages, childMessages) &&
                       GiveNumber(output, childOutput);
    closefrom(childOutput + 1);
    if (ready) execve(start.program, start.arguments.data(), start.environment.data());
    _exit(cannotStart);
}

pid_t Start(const std::string& program, const std::vector<std::string>& arguments, int messages,
            int output, std::uint64_t memoryBytes) {
    std::vector<std::string> words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = ChildEnvironment();
    const ChildStart start = {program.c_str(), getpid(), Pointers(words), Pointers(variables),
                              messages,        output,   memoryBytes};
    const pid_t child = fork();
    if (child < 0) ThrowCannotStart();
    if (child == 0) BecomeChild(start);
    setpgid(child, child);  // whoever comes first
    return child;
}

/// A child process; killed where it is still there when its parent has no more use for it.
class OwnedProcess {
  public:
    explicit OwnedProcess(pid_t child) : child(child) {}
    ~OwnedProcess() {
        if (child == 0) return;
        kill(-child, SIGKILL);
        while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) continue;
    }
    OwnedProcess(const OwnedProcess&) = delete;
    OwnedProcess& operator=(const OwnedProcess&) = delete;

    /// Waits for the child's end, under watch, and returns its status as `waitpid` gives it.
    int Wait(Watch& watch) {
        int status = 0;
        for (int pause = 0; waitpid(child, &status, WNOHANG) != child; pause = 1) {
            poll(nullptr, 0, pause);
            watch.Check();
        }
        child = 0;
        return status;
    }

  private:
    pid_t child;
};

/// Hears a child until it closes its end.
class Hearing {
  public:
    Hearing(int connection, const ModelFolder* folder, Watch& watch,
            const MessageReader::Listener& listener)
        : connection(connection), folder(folder), watch(watch), listener(listener) {}

    /// Whether the child's last words were that it has no memory.
    bool Listen() {
        MessageReader reader;
        std::array<char, 4096> bytes;
        while (true) {
            pollfd waiting = {connection, POLLIN, 0};
            const int ready = poll(&waiting, 1, Watch::pauseMilliseconds);
            if (ready > 0) {
                const ssize_t count = read(connection, bytes.data(), bytes.size());
                if (count == 0 || (count < 0 && errno != EINTR)) return noMemory;
                if (count < 0) continue;
                reader.Take(
                    {bytes.data(), static_cast<std::size_t>(count)},
                    [this](ChildMessage kind, const std::string& text) { Take(kind, text); });
            }
            watch.Check();
        }
    }

  private:
    void Take(ChildMessage kind, const std::string& text) {
        if (kind == ChildMessage::Progress) watch.NoteProgress();
        if (kind == ChildMessage::NoMemory) {
            noMemory = true;
        } else if (kind != ChildMessage::Open) {
            listener(kind, text);
        } else if (folder == nullptr || !PassFile(connection, folder->Open(text))) {
            throw Error(Status::InputOutput, "the importer takes no answers");
        }
    }

    int connection;
    const ModelFolder* folder;
    Watch& watch;
    const MessageReader::Listener& listener;
    bool noMemory = false;
};

[[noreturn]] void ThrowDied(int signal) {
    const std::string name = strsignal(signal);
    if (signal == SIGKILL || signal == SIGTERM || signal == SIGXCPU) {
        throw Error(Status::InputOutput, "the importer was killed (perhaps for lack of memory)");
    }
    throw Error(Status::Damaged, "the importer crashed (" + name + ')');
}

}  // namespace

int RunImporter(const std::string& program, const std::vector<std::string>& words, int output,
                const ModelFolder* folder, const ImportLimits& limits,
                const MessageReader::Listener& listener) {
    Connection connection;
    const pid_t pid = Start(program, words, connection.child.Number(), output, limits.memoryBytes);
    OwnedProcess child(pid);
    connection.child = OwnedDescriptor();
    Watch watch(pid, limits);
    const bool noMemory = Hearing(connection.parent.Number(), folder, watch, listener).Listen();
    const int status = child.Wait(watch);
    if (WIFSIGNALED(status)) ThrowDied(WTERMSIG(status));
    if (WEXITSTATUS(status) == cannotStart) {
        throw Error(Status::Internal,
                    "cannot start the importer " + program +
                        " (perhaps a library that it needs is missing, or memory)");
    }
    if (noMemory) ThrowNoMemory(limits);
    return WEXITSTATUS(status);
}

}  // namespace ZVSmartModel
