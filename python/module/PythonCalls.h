#pragma once

#include <pybind11/pybind11.h>

#include <optional>
#include <type_traits>
#include <utility>

#include "ZVSmartModel/Error.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel::Python {

namespace py = pybind11;

/// What Python code has raised while the library was asking it, on this thread: the library knows
/// no Python exceptions, so they wait here until the call is over. All with the interpreter's lock.
class Raised {
  public:
    /// Keeps the first one.
    static void Keep(const py::error_already_set& error);
    static bool IsKept();

    /// One for each call, so that a call within a callback does not raise what is not its own.
    Raised();
    ~Raised();
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;
    /// Throws what was kept, if anything was.
    static void Throw();

  private:
    std::optional<py::error_already_set> outer;
};

/// Does `act()` without the interpreter's lock. What Python code raised meanwhile is thrown in
/// place of whatever became of it.
template <class Act>
auto Freely(Act act) {
    const Raised raised;
    const auto unlocked = [&act] {
        const py::gil_scoped_release released;
        return act();
    };
    try {
        if constexpr (std::is_void_v<decltype(act())>) {
            unlocked();
            Raised::Throw();
        } else {
            auto result = unlocked();
            Raised::Throw();
            return result;
        }
    } catch (const py::error_already_set&) {
        throw;
    } catch (...) {
        Raised::Throw();
        throw;
    }
}

/// Tells `callback(work, fraction)` how far a call is; None is told nothing. What it raises, what a
/// signal raises and an answer of False end the call. `callback` is borrowed.
Progress ProgressFor(py::handle callback);

/// Has the library's errors raised as those of zvg.
void RegisterErrors();
/// Raises IndexError in place of KeyError where `error` is about a place that is not there.
[[noreturn]] void RaiseAsIndex(const Error& error);

}  // namespace ZVSmartModel::Python
