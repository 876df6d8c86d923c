#pragma once

#include <string>

#include "ZVSmartFormat/Stream.h"

// Text between the platform's wide encoding and big-endian UTF-16, the form in files and keys.

namespace ZVSmartFormat {

/// The UTF-16 units that `text` takes.
u64 Utf16UnitCount(const std::wstring& text);

/// Appends `text` to `bytes`, two bytes a unit. Where `wchar_t` has 32 bits, a character above
/// U+FFFF becomes a surrogate pair, a lone surrogate passes, and what is no character becomes
/// U+FFFD.
void AppendUtf16(const std::wstring& text, std::string& bytes);

/// Writes the same units to `bytes`, which has room for `Utf16UnitCount(text)` of them.
void StoreUtf16(const std::wstring& text, u8* bytes);

/// Replaces `text` by `unitCount` units at `bytes`. Where `wchar_t` has 32 bits, a surrogate
/// pair becomes one character.
void LoadUtf16(const u8* bytes, u64 unitCount, std::wstring& text);

}  // namespace ZVSmartFormat
