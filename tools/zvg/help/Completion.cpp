#include "tools/zvg/help/Completion.h"

#include <sstream>

namespace ZVSmartModel::Tool {

namespace {

/// In single quotes, for any of the three shells.
std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

std::string FirstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

std::string OptionNames(const CommandHelp& command) {
    std::string names;
    for (const OptionHelp& option : command.options)
        for (const std::string& name : option.names) names += (names.empty() ? "" : " ") + name;
    return names;
}

std::string CommandNames(const CommandHelp& help) {
    std::string names;
    for (const CommandHelp& command : help.commands)
        names += (names.empty() ? "" : " ") + command.name;
    return names;
}

/// An entry of zsh's _describe: colons part the name from its description.
std::string Described(const std::string& name, const std::string& description) {
    return Quoted(name + ':' + FirstLine(description));
}

}  // namespace

std::string BashCompletion(const CommandHelp& help) {
    std::ostringstream script;
    script << "_zvg() {\n"
           << "    local current=${COMP_WORDS[COMP_CWORD]} command='' word\n"
           << "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
           << "        [[ $word == -* ]] || { command=$word; break; }\n"
           << "    done\n"
           << "    local words=" << Quoted(OptionNames(help)) << "\n"
           << "    case $command in\n"
           << "        '') words+=" << Quoted(" " + CommandNames(help)) << " ;;\n";
    for (const CommandHelp& command : help.commands)
        script << "        " << command.name << ") words+=" << Quoted(" " + OptionNames(command))
               << " ;;\n";
    script << "    esac\n"
           << "    if [[ $current == -* || -z $command ]]; then\n"
           << "        mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
           << "    else\n"
           << "        mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n"
           << "    fi\n"
           << "}\n"
           << "complete -o filenames -F _zvg zvg\n";
    return script.str();
}

std::string ZshCompletion(const CommandHelp& help) {
    std::ostringstream script;
    script << "#compdef zvg\n"
           << "local -a commands options\n"
           << "commands=(\n";
    for (const CommandHelp& command : help.commands)
        script << "    " << Described(command.name, command.description) << '\n';
    script << ")\n"
           << "if (( CURRENT == 2 )); then\n"
           << "    _describe command commands\n"
           << "    return\n"
           << "fi\n"
           << "case $words[2] in\n";
    for (const CommandHelp& command : help.commands) {
        script << "    " << command.name << ") options=(";
        for (const OptionHelp& option : command.options)
            for (const std::string& name : option.names)
                script << "\n        " << Described(name, option.description);
        script << "\n    ) ;;\n";
    }
    script << "esac\n"
           << "_describe option options\n"
           << "_files\n";
    return script.str();
}

std::string FishCompletion(const CommandHelp& help) {
    std::ostringstream script;
    const auto writeOption = [&](const OptionHelp& option, const std::string& condition) {
        if (option.names.empty()) return;
        script << "complete -c zvg" << condition;
        for (const std::string& name : option.names) {
            const bool isLong = name.rfind("--", 0) == 0;
            script << (isLong ? " -l " : " -s ") << name.substr(isLong ? 2 : 1);
        }
        script << (option.takesValue ? " -r" : "") << " -d "
               << Quoted(FirstLine(option.description)) << '\n';
    };
    for (const OptionHelp& option : help.options) writeOption(option, "");
    for (const CommandHelp& command : help.commands) {
        script << "complete -c zvg -f -n __fish_use_subcommand -a " << command.name << " -d "
               << Quoted(FirstLine(command.description)) << '\n';
        for (const OptionHelp& option : command.options)
            writeOption(option, " -n '__fish_seen_subcommand_from " + command.name + "'");
    }
    return script.str();
}

}  // namespace ZVSmartModel::Tool
