#include "tools/zvg/help/Manual.h"

#include <sstream>

namespace ZVSmartModel::Tool {

namespace {

/// Text of a line of its own: troff takes a leading dot for a request, a backslash for an escape
/// and a hyphen for one that may break.
std::string Escaped(const std::string& text) {
    std::string escaped;
    bool lineBegins = true;
    for (const char c : text) {
        if (lineBegins && (c == '.' || c == '\'')) escaped += "\\&";
        if (c == '\\') {
            escaped += "\\e";
        } else if (c == '-') {
            escaped += "\\-";
        } else {
            escaped += c;
        }
        lineBegins = c == '\n';
    }
    return escaped;
}

std::string Title(const OptionHelp& option) {
    if (option.names.empty()) return "\\fI" + Escaped(option.argument) + "\\fR";
    std::string title;
    for (const std::string& name : option.names)
        title += (title.empty() ? "\\fB" : ", \\fB") + Escaped(name) + "\\fR";
    return option.takesValue ? title + " \\fIvalue\\fR" : title;
}

/// The arguments and the options that must be given, as they follow a command's name.
std::string Synopsis(const CommandHelp& command) {
    std::string synopsis;
    bool anyOptional = false;
    for (const OptionHelp& option : command.options) {
        anyOptional = anyOptional || !option.required;
        if (option.required) synopsis += ' ' + Title(option);
    }
    return anyOptional ? synopsis + " [\\fIoptions\\fR]" : synopsis;
}

/// A footer's lines, the indented ones as they stand.
void WriteFooter(std::ostream& page, const std::string& footer) {
    std::istringstream lines(footer);
    for (std::string line; std::getline(lines, line);) {
        const bool literal = line.rfind("  ", 0) == 0;
        if (line.empty()) continue;
        if (literal) {
            page << ".RS\n.nf\n" << Escaped(line.substr(2)) << "\n.fi\n.RE\n";
        } else {
            page << ".PP\n" << Escaped(line) << '\n';
        }
    }
}

void WriteOptions(std::ostream& page, const CommandHelp& command) {
    for (const OptionHelp& option : command.options)
        page << ".TP\n" << Title(option) << '\n' << Escaped(option.description) << '\n';
}

}  // namespace

std::string ManualPage(const CommandHelp& help, const std::string& version) {
    std::ostringstream page;
    page << ".TH ZVG 1 \"\" \"zvg " << version << "\" \"User commands\"\n"
         << ".SH NAME\nzvg \\- packs building models into block files and reads block files\n"
         << ".SH SYNOPSIS\n.B zvg\n.I command\n[\\fIoptions\\fR]\n"
         << ".SH DESCRIPTION\n"
         << Escaped(help.description) << ".\n"
         << "Data goes to standard output, messages to standard error.\n"
         << ".SH OPTIONS\nThey may stand behind a command's name as well.\n";
    WriteOptions(page, help);
    page << ".SH COMMANDS\n";
    for (const CommandHelp& command : help.commands) {
        page << ".SS zvg " << Escaped(command.name) << Synopsis(command) << '\n'
             << Escaped(command.description) << ".\n";
        WriteOptions(page, command);
        WriteFooter(page, command.footer);
    }
    page << ".SH NOTES\n";
    WriteFooter(page, help.footer);
    return page.str();
}

}  // namespace ZVSmartModel::Tool
