#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace ZVSmartModel::Tool {

/// What an inspecting command found out: one tree of named values, printed as JSON or as text,
/// so that both say the same.
using Document = nlohmann::ordered_json;

/// A document about a file, with the number of the documents' schema.
Document NewDocument(const std::string& path);

/// A real number; what JSON has no number for becomes "NaN", "Infinity" or "-Infinity".
Document RealNumber(double value);

/// `value` as "0x" and `digits` hexadecimal digits.
Document HexNumber(unsigned long long value, int digits);

/// One line of JSON, without a line end. Malformed UTF-8 becomes U+FFFD.
std::string ToJson(const Document& document);

/// Indented lines for people, with control characters escaped.
std::string ToText(const Document& document);

/// Writes a document to standard output as JSON or as text.
void PrintDocument(const Document& document, bool asJson);

}  // namespace ZVSmartModel::Tool
