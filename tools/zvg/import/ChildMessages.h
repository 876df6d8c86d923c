#pragma once

#include <functional>
#include <string>
#include <string_view>

// How a child speaks to its parent: lines, of which the first byte tells the kind.

enum class ChildMessage : char {
    Warning = 'W',
    Progress = 'P',  ///< how far: DONE/TOTAL and the work under way; 0/0 where nobody knows
    Result = 'R',    ///< what was done
    Report = 'J',    ///< a piece of the report on the model
    Failure = 'F',   ///< why it was not; the last words of a child that fails
    NoMemory = 'M',  ///< the same, where memory ran out
    Open = 'O',      ///< asks for a file of the model by the name that the model gives
};

/// The line that tells `text`; line ends in it become blanks.
std::string MessageLine(ChildMessage kind, std::string_view text);

/// Puts together what comes in pieces. Whatever the bytes are, little of them is kept.
class MessageReader {
  public:
    using Listener = std::function<void(ChildMessage, const std::string&)>;

    /// Bytes of a line beyond these are dropped.
    static constexpr std::size_t longestLine = 64 << 10;

    /// Hands each line that ends in `bytes` to `listener`; empty ones are passed over.
    void Take(std::string_view bytes, const Listener& listener);

  private:
    std::string line;
};
