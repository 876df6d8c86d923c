// What a process can still do once it sits in the importers' cage, seen from inside.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "tools/zvg-import/Cage.h"

using namespace ZVSmartModel::Tool;

namespace {

struct Attempt {
    const char* name;
    bool filesAlone;  ///< refused by Landlock without seccomp as well
    bool (*succeeds)();
};

bool Connects() {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(9);
    const int connection = socket(AF_INET, SOCK_STREAM, 0);
    if (connection < 0) return false;
    connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address);
    return errno != EPERM && errno != EACCES;
}

bool Forks() {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    return child > 0;
}

/// A name that can be run and is no program: the answer is ENOENT, unless running is refused.
bool Executes() {
    execl("/nowhere", "nowhere", nullptr);
    return errno == ENOENT;
}

bool MapsCode() {
    void* const code =
        mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return code != MAP_FAILED;
}

// In this order: what ends the process or makes others comes last.
const Attempt attempts[] = {
    {"open /etc/passwd", true, [] { return open("/etc/passwd", O_RDONLY) >= 0; }},
    {"open /proc/self/environ", true, [] { return open("/proc/self/environ", O_RDONLY) >= 0; }},
    {"create a file", true, [] { return open("/tmp/cage_test", O_CREAT | O_WRONLY, 0600) >= 0; }},
    {"unlink", true, [] { return unlink("/tmp/cage_test_victim") == 0; }},
    {"socket, connect", false, Connects},
    {"signal its parent", false, [] { return kill(getppid(), 0) == 0; }},
    {"map code", false, MapsCode},
    {"exec", false, Executes},
    {"fork", false, Forks},
};

/// What computing needs works in every cage.
bool StillComputes() {
    std::vector<char> memory(32 << 20, 1);
    int sum = 0;
    std::thread([&] { sum = memory[1 << 20] + memory[2 << 20]; }).join();
    return sum == 2;
}

/// A letter for each attempt: 's'ucceeded or 'r'efused; then one for StillComputes.
std::string SeenFromInside(CageParts wanted) {
    int ends[2] = {};
    if (pipe(ends) != 0) return {};
    const pid_t child = fork();
    if (child == 0) {
        const CageParts inForce = EnterCage(wanted);
        bool well = inForce.calls == wanted.calls && inForce.files == wanted.files;
        std::string seen;
        for (const Attempt& attempt : attempts) seen += attempt.succeeds() ? 's' : 'r';
        well = well && StillComputes();
        seen += well ? 's' : 'r';
        const bool told = write(ends[1], seen.data(), seen.size()) > 0;
        _exit(told ? 0 : 1);
    }
    close(ends[1]);
    char seen[64] = {};
    const ssize_t count = read(ends[0], seen, sizeof seen);
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return {seen, static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

TEST(Cage, RefusesFromInside) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizers look at their own process in ways that the cage refuses";
#endif
    const CageParts available = AvailableCage();
    for (const CageParts wanted :
         {CageParts{}, CageParts{false, true}, CageParts{true, false}, CageParts{true, true}}) {
        if ((wanted.calls && !available.calls) || (wanted.files && !available.files)) continue;
        close(open("/tmp/cage_test_victim", O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
        const std::string seen = SeenFromInside(wanted);
        std::cout << "cage: " << CageText(wanted) << '\n';
        ASSERT_EQ(seen.size(), std::size(attempts) + 1);
        for (std::size_t i = 0; i < std::size(attempts); ++i) {
            const bool refused = wanted.calls || (wanted.files && attempts[i].filesAlone);
            const bool counts = refused || !(wanted.files || wanted.calls);
            std::cout << "  " << attempts[i].name << ": "
                      << (seen[i] == 'r' ? "refused" : "succeeds") << '\n';
            if (!counts) continue;
            EXPECT_EQ(seen[i], refused ? 'r' : 's') << attempts[i].name;
        }
        EXPECT_EQ(seen.back(), 's') << "memory and threads";
    }
    unlink("/tmp/cage_test_victim");
    unlink("/tmp/cage_test");
}

}  // namespace
