#pragma once

#include <cstddef>

namespace bench {

/// Whose memory an allocation is. What is allocated belongs to whoever is at work on the thread,
/// wherever it is freed.
enum class Owner { host, library, coder };

/// Says who is at work, until the scope ends. The coder's own calls say so themselves.
class AtWork {
  public:
    explicit AtWork(Owner owner);
    ~AtWork();
    AtWork(const AtWork&) = delete;
    AtWork& operator=(const AtWork&) = delete;

  private:
    Owner before;
};

/// The library's bytes now and at their highest since the last `ResetPeak`: what it asked for,
/// without the coder's and without its scratch buffer, which is the one allocation of its kind
/// that begins with 20 MiB and may grow.
std::size_t LibraryBytes();
std::size_t LibraryPeak();
void ResetPeak();

}  // namespace bench
