#pragma once

#include <map>
#include <string>

#include "ZVSmartFormat/Api.h"

namespace ZVSmartFormat {

/// Reads an ini file: UTF-8 (a byte-order mark is skipped), LF or CRLF, `[section]` lines and
/// `name=value` lines split at the first `=`, blanks around each trimmed. Lines that begin with
/// `;` or `#` are comments. Names are case-sensitive; the first of equal names wins.
class ZVFT_API CZVFTIniFile {
  public:
    /// Replaces what was loaded before. `path` is in the file system's narrow encoding. False,
    /// with nothing loaded, where the file cannot be read.
    bool LoadFile(const std::string& path);
    /// Whether a file is loaded.
    bool IsValid() const;
    /// The value of `key` in `section`; empty where there is none.
    std::wstring GetValue(const std::wstring& section, const std::wstring& key) const;

  private:
    bool loaded = false;
    std::map<std::wstring, std::map<std::wstring, std::wstring>> sections;
};

}  // namespace ZVSmartFormat
