#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "ZVSmartModel/Pack.h"

namespace ZVSmartModel {

// How a child speaks to its parent: lines, of which the first byte tells the kind. Where a line
// holds several texts, tabs stand between them.

enum class ChildMessage : char {
    Warning = 'W',
    Progress = 'P',  ///< how far: DONE/TOTAL and the work under way; 0/0 where nobody knows
    Schema = 'S',    ///< of the model
    Type = 'T',      ///< how many elements of one type there are
    Finding = 'K',   ///< something to report of the model
    Result = 'R',    ///< what was written: floors, components, shapes, placements
    About = 'A',     ///< a format that this importer reads, and at last what its cage is made of
    Failure = 'F',   ///< why nothing was; the last words of a child that fails
    NoMemory = 'M',  ///< the same, where memory ran out
    Open = 'O',      ///< asks for a file of the model by the name that the model gives
};

/// The line that tells `text`; line ends in it become blanks.
std::string MessageLine(ChildMessage kind, std::string_view text);

/// What a child tells of a model, as the text of a message and back; nothing where the text is no
/// such thing.
/// @{
std::string TextOf(const PackTypeCount& count);
std::string TextOf(const PackWarning& finding);
std::optional<PackTypeCount> TypeCountOf(const std::string& text);
std::optional<PackWarning> FindingOf(const std::string& text);
/// @}

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

}  // namespace ZVSmartModel
