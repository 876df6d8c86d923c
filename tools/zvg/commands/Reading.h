#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// Adds a command whose first argument is a block file, kept in `file`, which must outlive `app`.
/// `example` is the command line that its help shows.
CLI::App* AddReadingCommand(CLI::App& app, const std::string& name, const std::string& description,
                            const std::string& example, std::string& file);
