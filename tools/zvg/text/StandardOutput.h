#pragma once

#include <string_view>

/// Keeps the tool's files apart from standard output: a standard stream that the caller closed
/// would lend its number to the next file that is opened, and writing to a reader that went away
/// would kill the process. Call it once, before anything is opened.
void PrepareStandardStreams();

/// Writes data to standard output. Throws ToolError InputOutput where that fails.
void WriteOutput(std::string_view data);

/// Hands everything to the system; throws as `WriteOutput` does.
void FinishOutput();

/// One message on standard error: "zvg: " and `message` with its control characters escaped.
/// Nothing is reported where that fails.
void WriteMessage(std::string_view message);
