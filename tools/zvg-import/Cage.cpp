#include "tools/zvg-import/Cage.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>

#ifdef ZVG_HAVE_SECCOMP
#include <linux/seccomp.h>
#include <sched.h>
#include <seccomp.h>
#endif

namespace ZVSmartModel::Tool {

namespace {

// Kernels older than the headers, and headers older than the kernel, are both common: the calls
// have had these numbers on every architecture from the first.
constexpr long landlockCreateRuleset = 444;
constexpr long landlockRestrictSelf = 446;
constexpr unsigned int landlockAskVersion = 1;

/// As the kernel's `landlock_ruleset_attr`, of which older kernels know only the beginning.
struct LandlockRuleset {
    std::uint64_t files = 0;
    std::uint64_t network = 0;
    std::uint64_t scopes = 0;
};

constexpr std::uint64_t LowBits(unsigned int count) {
    return (std::uint64_t{1} << count) - 1;
}

long LandlockVersion() {
    return syscall(landlockCreateRuleset, nullptr, 0, landlockAskVersion);
}

/// Everything that the kernel can refuse.
bool RefuseFiles() {
    const long version = LandlockVersion();
    if (version < 1) return false;
    LandlockRuleset refused;
    constexpr unsigned int fileRights[] = {13, 14, 15, 15, 16};  // by version, from 1
    refused.files = LowBits(fileRights[std::min(version, 5L) - 1]);
    if (version >= 4) refused.network = LowBits(2);  // TCP
    if (version >= 6) refused.scopes = LowBits(2);   // abstract sockets, signals
    const std::size_t size = version >= 6   ? sizeof refused
                             : version >= 4 ? offsetof(LandlockRuleset, scopes)
                                            : offsetof(LandlockRuleset, network);
    const long rules = syscall(landlockCreateRuleset, &refused, size, 0);
    if (rules < 0) return false;
    const bool done = syscall(landlockRestrictSelf, rules, 0) == 0;
    close(static_cast<int>(rules));
    return done;
}

#ifdef ZVG_HAVE_SECCOMP

/// Frees a filter that is in force or was given up.
class Filter {
  public:
    Filter() : context(seccomp_init(SCMP_ACT_ERRNO(EPERM))) {}
    ~Filter() {
        if (context != nullptr) seccomp_release(context);
    }
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;

    /// A call that this architecture does not have needs no rule.
    template <typename... Conditions>
    void Allow(int call, Conditions... conditions) {
        seccomp_rule_add(context, SCMP_ACT_ALLOW, call, sizeof...(conditions), conditions...);
    }
    /// As if the kernel did not know the call, so that the caller takes an older one.
    void Unknown(int call) { seccomp_rule_add(context, SCMP_ACT_ERRNO(ENOSYS), call, 0); }

    bool Load() { return context != nullptr && seccomp_load(context) == 0; }
    bool IsThere() const { return context != nullptr; }

  private:
    scmp_filter_ctx context;
};

/// Whether all bits of `mask` in the argument are those of `value`.
scmp_arg_cmp Masked(unsigned int argument, std::uint64_t mask, std::uint64_t value) {
    return {argument, SCMP_CMP_MASKED_EQ, mask, value};
}

scmp_arg_cmp Is(unsigned int argument, std::uint64_t value) {
    return {argument, SCMP_CMP_EQ, value, 0};
}

void AllowComputing(Filter& filter) {
    for (const int call : {SCMP_SYS(brk),
                           SCMP_SYS(munmap),
                           SCMP_SYS(mremap),
                           SCMP_SYS(madvise),
                           SCMP_SYS(futex),
                           SCMP_SYS(futex_time64),
                           SCMP_SYS(set_robust_list),
                           SCMP_SYS(rseq),
                           SCMP_SYS(membarrier),
                           SCMP_SYS(rt_sigaction),
                           SCMP_SYS(rt_sigprocmask),
                           SCMP_SYS(rt_sigreturn),
                           SCMP_SYS(sigaltstack),
                           SCMP_SYS(sched_getaffinity),
                           SCMP_SYS(sched_yield),
                           SCMP_SYS(getcpu),
                           SCMP_SYS(getpid),
                           SCMP_SYS(gettid),
                           SCMP_SYS(getrusage),
                           SCMP_SYS(getrandom),
                           SCMP_SYS(sysinfo),
                           SCMP_SYS(uname),
                           SCMP_SYS(clock_gettime),
                           SCMP_SYS(clock_getres),
                           SCMP_SYS(clock_nanosleep),
                           SCMP_SYS(nanosleep),
                           SCMP_SYS(gettimeofday),
                           SCMP_SYS(time),
                           SCMP_SYS(restart_syscall),
                           SCMP_SYS(exit),
                           SCMP_SYS(exit_group)}) {
        filter.Allow(call);
    }
    for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mmap2), SCMP_SYS(mprotect)}) {
        filter.Allow(call, Masked(2, PROT_EXEC, 0));
    }
    filter.Allow(SCMP_SYS(prlimit64), Is(2, 0));  // asking, not setting
    filter.Allow(SCMP_SYS(tgkill), Is(0, static_cast<std::uint64_t>(getpid())));  // abort
    // Threads, but no processes. The flags of clone3 lie in memory, where no filter sees them.
    constexpr std::uint64_t thread = CLONE_VM | CLONE_THREAD | CLONE_SIGHAND;
    filter.Allow(SCMP_SYS(clone), Masked(0, thread, thread));
    filter.Unknown(SCMP_SYS(clone3));
}

void AllowOpenFiles(Filter& filter) {
    for (const int call :
         {SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(pread64), SCMP_SYS(preadv), SCMP_SYS(write),
          SCMP_SYS(writev), SCMP_SYS(pwrite64), SCMP_SYS(lseek), SCMP_SYS(_llseek), SCMP_SYS(close),
          SCMP_SYS(fstat), SCMP_SYS(fstat64), SCMP_SYS(ftruncate), SCMP_SYS(ftruncate64),
          SCMP_SYS(fallocate), SCMP_SYS(fsync), SCMP_SYS(fdatasync), SCMP_SYS(fadvise64),
          SCMP_SYS(recvmsg)}) {
        filter.Allow(call);
    }
    filter.Allow(SCMP_SYS(newfstatat), Masked(3, AT_EMPTY_PATH, AT_EMPTY_PATH));
    for (const int call : {SCMP_SYS(fcntl), SCMP_SYS(fcntl64)}) {
        for (const int command : {F_GETFD, F_SETFD, F_GETFL}) {
            filter.Allow(call, Is(1, static_cast<std::uint64_t>(command)));
        }
    }
}

bool RefuseCalls() {
    Filter filter;
    if (!filter.IsThere()) return false;
    AllowComputing(filter);
    AllowOpenFiles(filter);
    return filter.Load();
}

bool CanRefuseCalls() {
    const std::uint32_t action = SECCOMP_RET_ERRNO;
    return syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

#else

bool RefuseCalls() {
    return false;
}

bool CanRefuseCalls() {
    return false;
}

#endif

}  // namespace

CageParts AvailableCage() {
    return {CanRefuseCalls(), LandlockVersion() >= 1};
}

CageParts EnterCage(CageParts wanted) {
    // A core dump that the system pipes to a program asks for no limit, but for this.
    prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    // Without it neither part is given to those who are not root.
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return {};
    CageParts parts;
    parts.files = wanted.files && RefuseFiles();
    parts.calls = wanted.calls && RefuseCalls();
    return parts;
}

std::string CageText(CageParts parts) {
    if (!parts.calls && !parts.files) return "none";
    if (parts.calls && parts.files) return "seccomp, Landlock";
    return parts.calls ? "seccomp" : "Landlock";
}

}  // namespace ZVSmartModel::Tool
