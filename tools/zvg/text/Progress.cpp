#include "tools/zvg/text/Progress.h"

#include <unistd.h>

#include <cstdio>
#include <string_view>

namespace ZVSmartModel::Tool {

Progress::Progress(bool quiet) : wanted(!quiet && isatty(STDERR_FILENO)) {}

/// Whether the line is to be printed: the first one of some work always is.
bool Progress::Begin(const std::string& verb) {
    if (!wanted) return false;
    const Clock::time_point now = Clock::now();
    constexpr std::chrono::milliseconds pause(200);
    const bool isNew = verb != current;
    if (isNew) begun = now;
    if (!isNew && now - printed < pause) return false;
    current = verb;
    printed = now;
    shown = true;
    std::fprintf(stderr, "\r\033[K%s", verb.c_str());
    return true;
}

void Progress::Show(const std::string& verb) {
    if (verb != current) Begin(verb);
}

void Progress::Show(const std::string& verb, double done, double total, const char* unit) {
    if (total <= 0 || !Begin(verb)) return;
    std::fprintf(stderr, " %.0f %%", done / total * 100);
    const double seconds = std::chrono::duration<double>(printed - begun).count();
    constexpr double soonestGuess = 0.5;
    if (seconds < soonestGuess || done <= 0) return;
    const double rate = done / seconds;
    const bool inBytes = std::string_view(unit) == "MB";
    std::fprintf(stderr, ", %.*f %s/s, %.0f s left", inBytes ? 1 : 0, inBytes ? rate / 1e6 : rate,
                 unit, (total - done) / rate);
}

void Progress::ShowShare(const std::string& verb, double share) {
    constexpr double percent = 100;
    if (share < 0) {
        Show(verb);
    } else {
        Show(verb, share * percent, percent, "%");
    }
}

std::function<bool(const std::string& verb, double share)> Progress::Shares() {
    return [this](const std::string& verb, double share) {
        ShowShare(verb, share);
        return true;
    };
}

void Progress::Clear() {
    if (shown) std::fputs("\r\033[K", stderr);
    shown = false;
}

}  // namespace ZVSmartModel::Tool
