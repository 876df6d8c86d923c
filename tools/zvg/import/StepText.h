#pragma once

#include <string>
#include <string_view>

/// A STEP file (ISO 10303-21) made safe for a reader that knows only part of the encoding.
struct StepText {
    std::string text;
    std::string schema;                  ///< the first name of FILE_SCHEMA as the file gives it
    bool dataEnds = false;               ///< whether the data section is closed
    bool entityNumbersTooLarge = false;  ///< whether an entity number is above 2^31 − 1
};

/// Rewrites `source` so that such a reader gets every string whole: comments go; within strings,
/// characters that it takes for punctuation become placeholders, text beyond ASCII (UTF-8, or
/// Latin-1 where it is not UTF-8) and \X4\ become \X2\, line breaks go. A schema named IFC4 or
/// later is called IFC2X4, which stands for the same entities with lenient argument counts.
StepText PrepareStepText(std::string_view source);

/// The text of a string that was read from a prepared file: placeholders become their characters
/// and surrogate pairs one character where `wchar_t` has 32 bits.
std::wstring FinishStepString(std::wstring_view text);
