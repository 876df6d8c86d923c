#include "tools/zvg/text/Document.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <utility>
#include <vector>

#include "model/element/Utf8.h"
#include "tools/zvg/text/Colour.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace {

constexpr std::size_t inlineMembers = 3;

bool IsNumber(const Document& value) {
    return value.is_number();
}

bool IsScalar(const Document& value) {
    return value.is_primitive();
}

bool IsNumberRow(const Document& value) {
    return value.is_array() && std::all_of(value.begin(), value.end(), IsNumber);
}

bool FitsOneLine(const Document& value) {
    if (IsScalar(value) || value.empty() || IsNumberRow(value)) return true;
    if (value.is_array()) return std::all_of(value.begin(), value.end(), IsNumberRow);
    return value.size() <= inlineMembers && std::all_of(value.begin(), value.end(), IsScalar);
}

std::string ScalarText(const Document& value) {
    if (value.is_null()) return "none";
    if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
    if (!value.is_string()) return value.dump();
    const auto& text = value.get_ref<const std::string&>();
    return text.empty() ? "\"\"" : EscapeControls(text);
}

std::string OneLine(const Document& value) {
    if (IsScalar(value)) return ScalarText(value);
    if (value.empty()) return "none";
    if (value.is_array()) return value.dump();
    std::string line;
    for (const auto& [name, member] : value.items()) {
        line += (line.empty() ? "{" : ", ") + name + ": " + ScalarText(member);
    }
    return line + '}';
}

/// A value that waits to be printed.
struct Pending {
    const Document* value;
    std::string margin;  ///< what its first line begins with; later lines begin with blanks
    std::string name;    ///< its name in an object, else empty
};

void PushChildren(std::vector<Pending>& stack, const Document& value,
                  const std::string& firstMargin) {
    const std::size_t begin = stack.size();
    std::string margin = firstMargin;
    for (const auto& [name, child] : value.items()) {
        const bool inArray = value.is_array();
        stack.push_back({&child, inArray ? margin + "- " : margin, inArray ? "" : name});
        margin.assign(firstMargin.size(), ' ');
    }
    std::reverse(stack.begin() + static_cast<std::ptrdiff_t>(begin), stack.end());
}

}  // namespace

Document NewDocument(const std::string& path) {
    Document document;
    document["schema"] = 1;
    document["file"] = path;
    return document;
}

Document RealNumber(double value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
    return value;
}

Document HexNumber(unsigned long long value, int digits) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%0*llX", digits, value);
    return text;
}

std::string ToJson(const Document& document) {
    return document.dump(-1, ' ', false, Document::error_handler_t::replace);
}

std::string ToText(const Document& document) {
    std::string out;
    std::vector<Pending> stack;
    PushChildren(stack, document, "");
    while (!stack.empty()) {
        const Pending pending = std::move(stack.back());
        stack.pop_back();
        const std::string label = pending.name.empty() ? "" : pending.name + ':';
        if (FitsOneLine(*pending.value)) {
            out += pending.margin + label;
            if (!label.empty()) out += ' ';
            out += OneLine(*pending.value) + '\n';
        } else if (label.empty()) {
            PushChildren(stack, *pending.value, pending.margin);
        } else {
            out += pending.margin + Painted(Paint::Heading, label, STDOUT_FILENO) + '\n';
            PushChildren(stack, *pending.value, std::string(pending.margin.size() + 2, ' '));
        }
    }
    return out;
}

void PrintDocument(const Document& document, bool asJson) {
    if (asJson) {
        WriteOutput(ToJson(document) + '\n');
        return;
    }
    Document shown = document;
    shown.erase("schema");
    WriteOutput(ToText(shown));
}

}  // namespace ZVSmartModel::Tool
