#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace ZVSmartModel {

/// An entity's line of a STEP file: #NUMBER=NAME(ARGUMENTS). Views into its text.
struct StepStatement {
    int number = 0;
    std::string_view name;
    std::string_view arguments;  ///< what is between the parentheses
};

/// Takes apart a statement without its semicolon; its strings hold no punctuation. False for
/// anything else, and for one whose parentheses do not match.
bool ParseStatement(std::string_view text, StepStatement& statement);

/// The arguments, parted at the commas that no list holds.
std::vector<std::string_view> ArgumentsOf(const StepStatement& statement);

/// Where in `text` another statement begins although no semicolon ended the one before: behind
/// `from`, at a line's beginning; npos where none does.
std::size_t NextStatement(std::string_view text, std::size_t from);

/// Takes the references to these entities out of the lists that hold them, and sets attributes that
/// are such a reference to nothing. Returns how many there were. The strings of `text` hold no
/// punctuation.
std::size_t CutReferences(std::string& text, const std::unordered_set<int>& entities);

}  // namespace ZVSmartModel
