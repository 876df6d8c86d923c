#include "tools/zvg/text/Progress.h"

#include <unistd.h>

#include <cstdio>
#include <string_view>

Progress::Progress(bool quiet) : wanted(!quiet && isatty(STDERR_FILENO)) {}

void Progress::Show(const std::string& verb, double done, double total, const char* unit) {
    if (!wanted || total <= 0) return;
    const Clock::time_point now = Clock::now();
    if (verb != current) {
        current = verb;
        begun = now;
    }
    constexpr std::chrono::milliseconds pause(200);
    if (now - printed < pause) return;
    printed = now;
    shown = true;
    std::fprintf(stderr, "\r\033[K%s %.0f %%", verb.c_str(), done / total * 100);
    const double seconds = std::chrono::duration<double>(now - begun).count();
    constexpr double soonestGuess = 0.5;
    if (seconds < soonestGuess || done <= 0) return;
    const double rate = done / seconds;
    const bool inBytes = std::string_view(unit) == "MB";
    std::fprintf(stderr, ", %.*f %s/s, %.0f s left", inBytes ? 1 : 0, inBytes ? rate / 1e6 : rate,
                 unit, (total - done) / rate);
}

void Progress::Clear() {
    if (shown) std::fputs("\r\033[K", stderr);
    shown = false;
}
