#include "model/import/ifc/StepText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <unordered_set>

#include "model/element/Utf8.h"
#include "model/import/ifc/StepNames.h"
#include "model/import/ifc/StepStatement.h"

namespace ZVSmartModel {

namespace {

/// The characters that a reader may take for punctuation although they stand in a string. Their
/// placeholders are the noncharacters U+FDD0 and following, which no text holds.
constexpr std::string_view maskedCharacters = "'\\/(),;";
constexpr char32_t firstPlaceholder = 0xFDD0;

/// The characters that strings, comments, statements and the words that are looked for begin or end
/// with.
constexpr std::array<bool, 256> beginsOrEnds = [] {
    std::array<bool, 256> marks = {};
    for (const char c : std::string_view("'/#;FDE")) marks[static_cast<unsigned char>(c)] = true;
    return marks;
}();

/// Rewrites one file; `at` is what comes next.
class Rewriter {
  public:
    Rewriter(std::string_view source, const std::function<bool(const std::string&)>& isKnown)
        : source(source), isKnown(isKnown) {
        result.text.reserve(source.size() + source.size() / 8);
    }

    StepText Run() {
        while (at < source.size()) {
            if (source[at] == '\'') {
                RewriteString();
            } else if (Ahead("/*")) {
                SkipComment();
            } else {
                CopyCharacter();
                CopyOthers();
            }
        }
        if (!leftOut.empty()) {
            result.cutReferences = CutReferences(result.text, leftOut);
        }
        return std::move(result);
    }

  private:
    static bool IsLineEnd(char c) { return c == '\r' || c == '\n'; }
    bool Ahead(std::string_view word) const { return source.substr(at, word.size()) == word; }

    void SkipComment() {
        const std::size_t end = source.find("*/", at + 2);
        at = end == std::string_view::npos ? source.size() : end + 2;
        result.text += ' ';
    }

    void CopyCharacter() {
        switch (source[at]) {
            case '#':
                CheckEntityNumber();
                break;
            case 'F':
                if (Ahead("FILE_SCHEMA")) inSchema = true;
                break;
            case 'D':
                if (Ahead("DATA;") || Ahead("DATA(") || Ahead("DATA ")) inData = true;
                break;
            case 'E':
                if (Ahead("ENDSEC")) EndData();
                break;
            default:
                break;
        }
        result.text += source[at++];
        if (result.text.back() == ';') EndStatement();
    }

    void CopyOthers() {
        const std::size_t begin = at;
        while (at < source.size() && !beginsOrEnds[static_cast<unsigned char>(source[at])]) ++at;
        result.text += source.substr(begin, at - begin);
    }

    /// What stands before the end of the section without a semicolon is judged as well.
    void EndData() {
        result.dataEnds = inData;
        if (!inData || result.text.find('#', statementBegin) == std::string::npos) return;
        result.text += ';';
        EndStatement();
    }

    void EndStatement() {
        const std::size_t number = result.text.find('#', statementBegin);
        if (inData && number != std::string::npos) {
            std::string statements = result.text.substr(statementBegin);
            result.text.resize(statementBegin);
            statements.pop_back();
            AddStatements(statements, number - statementBegin + 1);
        }
        statementBegin = result.text.size();
    }

    /// One statement, unless a semicolon is missing before its end.
    void AddStatements(std::string_view text, std::size_t behindFirst) {
        std::size_t begin = 0;
        for (std::size_t next = NextStatement(text, behindFirst); next != std::string_view::npos;
             next = NextStatement(text, begin + 1)) {
            AddStatement(text.substr(begin, next - begin));
            begin = next;
        }
        AddStatement(text.substr(begin));
    }

    void AddStatement(std::string_view text) {
        StepStatement statement;
        if (!ParseStatement(text, statement)) {
            result.damaged.Add(Start(text));
            if (statement.number > 0) leftOut.insert(statement.number);
            return;
        }
        const StepAlias* alias = AliasOf(statement.name);
        if (!Count(statement, alias != nullptr)) {
            leftOut.insert(statement.number);
        } else if (alias) {
            AddAliased(statement, *alias);
        } else {
            result.text += text;
            result.text += ';';
        }
    }

    /// How a damaged statement begins, on one line.
    static std::string Start(std::string_view text) {
        text.remove_prefix(std::min(text.find('#'), text.size()));
        std::string start(text.substr(0, mostOfDamaged));
        std::replace_if(start.begin(), start.end(), IsLineEnd, ' ');
        return start;
    }

    /// Whether the reader knows such a statement.
    bool Count(const StepStatement& statement, bool hasAlias) {
        auto counted = result.entities.find(statement.name);
        if (counted == result.entities.end()) {
            const std::string name(statement.name);
            counted = result.entities.emplace(name, StepEntity()).first;
            counted->second.known = hasAlias || !isKnown || isKnown(name);
        }
        if (counted->second.first.size() == StepSample::longest) {
            ++counted->second.count;
            return counted->second.known;
        }
        constexpr std::size_t globalIdBytes = 22;
        const std::string_view first = statement.arguments.substr(0, globalIdBytes + 2);
        const bool isGlobalId = first.size() == globalIdBytes + 2 && first.front() == '\'' &&
                                first.find('\'', 1) == globalIdBytes + 1;
        counted->second.Add(isGlobalId ? std::string(first.substr(1, globalIdBytes))
                                       : '#' + std::to_string(statement.number));
        return counted->second.known;
    }

    void AddAliased(const StepStatement& statement, const StepAlias& alias) {
        const std::vector<std::string_view> arguments = ArgumentsOf(statement);
        StepTrueName trueName = {alias.name, ""};
        result.text += "\n#" + std::to_string(statement.number) + '=' + alias.known + '(';
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            if (i >= alias.argumentCount && arguments[i].starts_with('.')) {
                trueName.predefinedType = arguments[i].substr(1, arguments[i].size() - 2);
            }
            if (i >= alias.argumentCount) continue;
            if (i > 0) result.text += ',';
            result.text += arguments[i];
        }
        for (std::size_t i = arguments.size(); i < alias.argumentCount; ++i) result.text += ",$";
        result.text += alias.more;
        result.text += ");";
        result.trueNames.emplace(statement.number, std::move(trueName));
    }

    void CheckEntityNumber() {
        std::int32_t number = 0;
        const char* first = source.data() + at + 1;
        const char* last = source.data() + source.size();
        if (std::from_chars(first, last, number).ec == std::errc::result_out_of_range) {
            result.entityNumbersTooLarge = true;
        }
    }

    /// Ends behind the closing apostrophe, at the end of a file that is cut short, or where the
    /// next statement begins: no string holds a line that looks like one.
    void RewriteString() {
        const std::size_t begin = result.text.size();
        result.text += '\'';
        ++at;
        bool lost = false;
        while (at < source.size() && !(source[at] == '\'' && !Ahead("''")) && !lost) {
            lost = source[at] == '\n' &&
                   NextStatement(source.substr(at, longestStart), 0) != std::string_view::npos;
            if (!lost) RewriteCharacter();
        }
        if (at < source.size()) {
            result.text += '\'';
            if (!lost) ++at;
        }
        if (inSchema) NameSchema(begin);
    }

    void RewriteCharacter() {
        if (Ahead("''") || Ahead("\\\\")) {
            Put(static_cast<char32_t>(source[at]));
            at += 2;
        } else if (Ahead("\\X4\\")) {
            at += 4;
            RewriteGroups(8);
        } else if (Ahead("\\X2\\")) {
            at += 4;
            RewriteGroups(4);
        } else if (Ahead("\\X\\")) {
            at += 3;
            RewriteGroup(2);
        } else if (Ahead("\\S\\")) {
            RewriteShifted();
        } else if (source[at] == '\\') {
            Copy(1);  // the alphabet directive \PA\, or a stray backslash
        } else if (IsLineEnd(source[at])) {
            ++at;
        } else if (static_cast<unsigned char>(source[at]) >= 0x80) {
            RewriteBytes();
        } else {
            Put(static_cast<char32_t>(source[at++]));
        }
    }

    /// `\S\` and a character, which stands for the one 128 above it. An apostrophe is doubled
    /// there too, and else ends the string. The reader knows the alphabets; but what looks like
    /// punctuation goes as the character that it is in the first of them.
    void RewriteShifted() {
        constexpr std::size_t prefix = 3;
        const std::string_view next = source.substr(at + prefix, 2);
        if (next == "''") {
            Put(U'\xA7');
            at += prefix + 2;
        } else if (next.starts_with('\'')) {
            at += prefix;
        } else if (!next.empty() && maskedCharacters.find(next[0]) != std::string_view::npos) {
            Put(static_cast<char32_t>(next[0]) + 0x80);
            at += prefix + 1;
        } else {
            Copy(prefix + 1);
        }
    }

    /// Groups of hexadecimal digits up to `\X0\`.
    void RewriteGroups(std::size_t digitCount) {
        while (!Ahead("\\X0\\")) {
            if (!RewriteGroup(digitCount)) return;
        }
        at += 4;
    }

    bool RewriteGroup(std::size_t digitCount) {
        const std::string_view digits = source.substr(at, digitCount);
        const char* last = digits.data() + digits.size();
        std::uint32_t value = 0;
        const bool good = digits.size() == digitCount &&
                          std::from_chars(digits.data(), last, value, 16).ptr == last;
        if (!good) return false;
        Put(value > 0x10FFFF ? 0xFFFD : static_cast<char32_t>(value));
        at += digitCount;
        return true;
    }

    /// A run of bytes from 0x80 on.
    void RewriteBytes() {
        std::size_t end = at;
        while (end < source.size() && static_cast<unsigned char>(source[end]) >= 0x80) ++end;
        const std::string_view bytes = source.substr(at, end - at);
        const std::wstring characters = FromUtf8(bytes);
        if (characters.find(L'\xFFFD') == std::wstring::npos) {
            for (const wchar_t character : characters) Put(static_cast<char32_t>(character));
        } else {
            for (const char byte : bytes) Put(static_cast<unsigned char>(byte));
        }
        at = end;
    }

    void Copy(std::size_t count) {
        const std::string_view piece = source.substr(at, count);
        result.text += piece;
        at += piece.size();
    }

    /// Writes one character of a string, as itself where that is safe.
    void Put(char32_t character) {
        if (character > 0xFFFF) {
            PutUnits({0xD800 + ((character - 0x10000) >> 10), 0xDC00 + (character & 0x3FF)});
        } else if (character >= 0x80) {
            PutUnits({character});
        } else if (const auto i = maskedCharacters.find(static_cast<char>(character));
                   i != std::string_view::npos) {
            PutUnits({firstPlaceholder + static_cast<char32_t>(i)});
        } else {
            result.text += static_cast<char>(character);
        }
    }

    void PutUnits(std::initializer_list<char32_t> units) {
        result.text += "\\X2\\";
        for (const char32_t unit : units) {
            char digits[9];
            std::snprintf(digits, sizeof digits, "%04X", static_cast<unsigned int>(unit));
            result.text += digits;
        }
        result.text += "\\X0\\";
    }

    /// Takes the schema's name from the string that begins at `begin` and gives it the name that
    /// the reader knows.
    void NameSchema(std::size_t begin) {
        result.schema = result.text.substr(begin + 1, result.text.size() - begin - 2);
        std::string known = result.schema;
        std::transform(known.begin(), known.end(), known.begin(),
                       [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
        if (known.starts_with("IFC4") || known.starts_with("IFC5")) known = "IFC2X4";
        if (known.starts_with("IFC2X3")) known = "IFC2X3";
        result.text.replace(begin, std::string::npos, '\'' + known + '\'');
        inSchema = false;
    }

    static constexpr std::size_t mostOfDamaged = 60;
    static constexpr std::size_t longestStart = 64;  ///< of a line that begins a statement

    std::string_view source;
    const std::function<bool(const std::string&)>& isKnown;
    std::unordered_set<int> leftOut;  ///< the numbers of entities
    std::size_t at = 0;
    std::size_t statementBegin = 0;  ///< in the result's text
    bool inSchema = false;
    bool inData = false;
    StepText result;
};

char32_t FromPlaceholder(char32_t character) {
    const bool placeholder =
        character >= firstPlaceholder && character < firstPlaceholder + maskedCharacters.size();
    if (!placeholder) return character;
    return static_cast<char32_t>(maskedCharacters[character - firstPlaceholder]);
}

}  // namespace

void StepSample::Add(const std::string& one) {
    ++count;
    if (first.size() < longest) first.push_back(one);
}

StepText PrepareStepText(std::string_view source,
                         const std::function<bool(const std::string& name)>& isKnown) {
    return Rewriter(source, isKnown).Run();
}

std::wstring FinishStepString(std::wstring_view text) {
    const auto isAscii = [](wchar_t unit) { return static_cast<char32_t>(unit) < 0x80; };
    if (std::all_of(text.begin(), text.end(), isAscii)) return std::wstring(text);
    std::wstring units;
    units.reserve(text.size());
    for (const wchar_t unit : text) {
        units.push_back(static_cast<wchar_t>(FromPlaceholder(static_cast<char32_t>(unit))));
    }
    return FromUtf8(ToUtf8(units));
}

}  // namespace ZVSmartModel
