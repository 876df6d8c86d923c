#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ZVSmartModel {

/// How often something occurs, and the first few of what it is.
struct StepSample {
    std::size_t count = 0;
    std::vector<std::string> first;  ///< GlobalIds, or else entity numbers as "#12"

    static constexpr std::size_t longest = 100;
    void Add(const std::string& one);
};

/// One type of entity of a file.
struct StepEntity : StepSample {
    bool known = true;  ///< to the reader, under this name or another
};

/// What an entity is that got the name of another one.
struct StepTrueName {
    const char* name = "";       ///< as people write it
    std::string predefinedType;  ///< its enumerator; empty where it has none
};

/// A STEP file (ISO 10303-21) made safe for a reader that knows only part of the encoding.
struct StepText {
    std::string text;
    std::string schema;                  ///< the first name of FILE_SCHEMA as the file gives it
    bool dataEnds = false;               ///< whether the data section is closed
    bool entityNumbersTooLarge = false;  ///< whether an entity number is above 2^31 − 1
    std::map<std::string, StepEntity, std::less<>> entities;  ///< by their names in the file
    std::map<int, StepTrueName> trueNames;                    ///< by entity number
    StepSample damaged;             ///< statements that were left out as they are none
    std::size_t cutReferences = 0;  ///< to what was left out
};

/// Rewrites `source` so that such a reader gets every string whole: comments go; within strings,
/// characters that it takes for punctuation become placeholders, text beyond ASCII (UTF-8, or
/// Latin-1 where it is not UTF-8) and \X4\ become \X2\, line breaks go. A schema named IFC4 or
/// later is called IFC2X4, which stands for the same entities with lenient argument counts, and
/// entities of later schemas get the names of what they are most like (StepNames.h). A statement
/// that is none is left out; one that lacks its end ends where the next begins. What `isKnown` does
/// not know by its name in capitals is left out as well, and so is every reference to what was:
/// the reader would give up all that a list holds for one reference that leads nowhere.
StepText PrepareStepText(std::string_view source,
                         const std::function<bool(const std::string& name)>& isKnown = nullptr);

/// The text of a string that was read from a prepared file: placeholders become their characters
/// and surrogate pairs one character where `wchar_t` has 32 bits.
std::wstring FinishStepString(std::wstring_view text);

}  // namespace ZVSmartModel
