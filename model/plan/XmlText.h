#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

namespace ZVSmartModel {

/// `text`, well-formed UTF-8, as XML 1.0 character data or the value of an attribute in double
/// quotes: markup is escaped, line breaks and tabs become blanks, and the characters that XML
/// forbids are dropped.
std::string EscapeXml(std::string_view text);

/// A name that is valid as an XML identifier and as an identifier of CSS: ASCII letters, digits,
/// "_" and "-", not beginning with a digit or "-". Every other byte becomes "_". `text` may be
/// anything.
std::string Identifier(std::string_view text);

/// Hands out the identifiers of one document.
class UniqueIdentifiers {
  public:
    /// `Identifier(text)` or, where that is taken, the same with a number behind it.
    std::string Take(std::string_view text);

  private:
    std::set<std::string> taken;
    std::map<std::string, int> lastNumber;
};

}  // namespace ZVSmartModel
