#pragma once

#include <string>
#include <string_view>

#include "ZVSmartZvg/CompView.h"

namespace ZVSmartModel {

/// `text` in UTF-8. A surrogate pair becomes one character whatever the width of `wchar_t`;
/// lone surrogates and what is no character become U+FFFD.
std::string ToUtf8(std::wstring_view text);

/// The same behind what `out` holds.
void AppendUtf8(std::string& out, std::wstring_view text);

/// The same of a text where a file has it.
void AppendUtf8(std::string& out, const ZVSmartZvg::SZVLGTextView& text);

/// The same into memory at `to`, which has room for 3 bytes a unit and 8 more. Returns where the
/// text ends.
char* StoreUtf8(const ZVSmartZvg::SZVLGTextView& text, char* to);

/// The same text in the platform's wide characters.
std::wstring WideText(const ZVSmartZvg::SZVLGTextView& text);

/// UTF-8 as the platform's wide text. Each byte that belongs to no well-formed sequence becomes
/// U+FFFD.
std::wstring FromUtf8(std::string_view text);

/// `text`, UTF-8, safe to print on one line of a terminal: control characters and the characters
/// that end lines or turn the direction of writing become `\n`, `\t`, `\x1B` or `\u202E`, and
/// malformed bytes become U+FFFD.
std::string EscapeControls(std::string_view text);

}  // namespace ZVSmartModel
