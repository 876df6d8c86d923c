#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace ZVSmartModel::Tool {

/// One line on standard error that says how far a piece of work is, how fast it goes and how long
/// it will take; on a terminal only. It goes with this object.
class Progress {
  public:
    /// Shows nothing where `quiet` is set.
    explicit Progress(bool quiet);
    ~Progress() { Clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// `done` of `total` of what `unit` names, in the work that `verb` names; the unit "MB" takes
    /// bytes. A new verb starts the clock anew. Prints a few times a second at most.
    void Show(const std::string& verb, double done, double total, const char* unit);

    /// The same for work of which nobody knows how far it is.
    void Show(const std::string& verb);

    /// The same for a share of the work, 0 to 1, or below 0 where nobody knows.
    void ShowShare(const std::string& verb, double share);

    /// Shows what a call of the model library tells of its progress, and lets it go on; not after
    /// this object.
    std::function<bool(const std::string& verb, double share)> Shares();

    /// Removes the line, so that another one may be printed.
    void Clear();

  private:
    using Clock = std::chrono::steady_clock;

    bool Begin(const std::string& verb);

    bool wanted;
    bool shown = false;
    std::string current;
    Clock::time_point begun, printed;
};

}  // namespace ZVSmartModel::Tool
