#include "tools/kavhost/console/shell_completion.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <string_view>
#include <vector>

namespace KAV::Host {

namespace {

enum class EValue { None, Choice, File, Other };

/// What follows an option. Choices are written "on|off", files in capitals: "FILE", "OUT|DIR".
EValue ValueOf(const CLI::Option& option) {
    if (option.get_expected_max() == 0) return EValue::None;
    const auto type = option.get_type_name();
    for (const auto* const file : {"FILE", "OUT", "DIR", "FOLDER"}) {
        if (type.find(file) != std::string::npos) return EValue::File;
    }
    if (option.get_positional()) return EValue::File;
    const bool isChoice = type.find('|') != std::string::npos &&
                          std::ranges::none_of(type, [](char c) { return c >= 'A' && c <= 'Z'; });
    return isChoice ? EValue::Choice : EValue::Other;
}

/// A choice's words, with blanks between them.
std::string WordsOf(const CLI::Option& option) {
    auto words = option.get_type_name();
    std::ranges::replace(words, '|', ' ');
    return words;
}

/// "-o" and "--output".
std::vector<std::string> NamesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const auto& name : option.get_snames()) names.push_back("-" + name);
    for (const auto& name : option.get_lnames()) names.push_back("--" + name);
    return names;
}

std::string NamesOf(const std::vector<const CLI::App*>& commands) {
    std::string names;
    for (const auto* const command : commands) names += (names.empty() ? "" : " ") + command->get_name();
    return names;
}

/// Each command with the words that lead to it: "render", "content list".
struct SCommand {
    std::string path;
    const CLI::App* app;
};

std::vector<SCommand> AllCommands(const CLI::App& app, const std::string& before = {}) {
    std::vector<SCommand> all;
    for (const auto* const command : app.get_subcommands({})) {
        const auto path = before + command->get_name();
        all.push_back({path, command});
        for (auto& inner : AllCommands(*command, path + " ")) all.push_back(std::move(inner));
    }
    return all;
}

/// In single quotes for a shell.
std::string Quoted(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    return quoted + "'";
}

/// A help text as one line, up to the end of its first statement.
std::string FirstStatement(std::string text) {
    std::ranges::replace(text, '\n', ' ');
    text.resize(std::min({text.size(), text.find("; "), text.find(". ")}));
    return text;
}

/// As _arguments takes it, where brackets and colons divide a description.
std::string ForArguments(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '[' || c == ']' || c == ':' || c == '\\') escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string Alternatives(const std::vector<std::string>& names) {
    std::string all;
    for (const auto& name : names) all += (all.empty() ? "" : "|") + name;
    return all;
}

void WriteBashCommand(std::ostream& script, const SCommand& command) {
    script << "    " << Quoted(command.path) << ")\n        case $before in\n";
    std::string names;
    for (const auto* const option : command.app->get_options({})) {
        for (const auto& name : NamesOf(*option)) names += (names.empty() ? "" : " ") + name;
        if (option->get_positional()) continue;
        const auto pattern = Alternatives(NamesOf(*option));
        switch (ValueOf(*option)) {
        case EValue::Choice:
            script << "        " << pattern << ") words='" << WordsOf(*option) << "' ;;\n";
            break;
        case EValue::File:
            script << "        " << pattern << ") return ;;\n";
            break;
        case EValue::Other:
            script << "        " << pattern << ") words='' ;;\n";
            break;
        case EValue::None:
            break;
        }
    }
    const auto inner = NamesOf(command.app->get_subcommands({}));
    script << "        *) case $word in -*) words='" << names << "' ;; *) ";
    if (inner.empty())
        script << "return";
    else
        script << "words='" << inner << "'";
    script << " ;; esac ;;\n        esac\n        ;;\n";
}

void WriteZshCommand(std::ostream& script, const SCommand& command) {
    script << "    " << Quoted(command.path) << ")\n        _arguments -s";
    for (const auto* const option : command.app->get_options({})) {
        if (option->get_positional()) continue;
        const auto value = ValueOf(*option);
        std::string follows;
        if (value == EValue::Choice) follows = ":" + option->get_name() + ":(" + WordsOf(*option) + ")";
        if (value == EValue::File) follows = ":file:_files";
        if (value == EValue::Other) follows = ":" + ForArguments(option->get_type_name()) + ": ";
        const auto help = "[" + ForArguments(FirstStatement(option->get_description())) + "]";
        for (const auto& name : NamesOf(*option))
            script << " \\\n            "
                   << Quoted(std::string("*").append(name).append(help).append(follows));
    }
    const auto inner = command.app->get_subcommands({});
    const bool takesFiles = std::ranges::any_of(
        command.app->get_options({}), [](const auto* option) { return option->get_positional(); });
    if (!inner.empty()) script << " \\\n            '1:command:(" << NamesOf(inner) << ")'";
    if (takesFiles) script << " \\\n            '*:file:_files'";
    script << "\n        ;;\n";
}

} // namespace

std::string BashCompletionOf(const CLI::App& app) {
    const auto& name = app.get_name();
    std::ostringstream script;
    script
        << "# Completes " << name << " in bash.\n_" << name << "() {\n"
        << "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} words='' command=''\n"
        << "    COMPREPLY=()\n"
        << "    if [ \"$COMP_CWORD\" -gt 1 ]; then command=${COMP_WORDS[1]}; fi\n";
    const auto all = AllCommands(app);
    for (const auto& command : all) {
        if (command.app->get_subcommands({}).empty()) continue;
        script << "    if [ \"$command\" = " << command.path
               << " ] && [ \"$COMP_CWORD\" -gt 2 ]; then command+=\" "
               << "${COMP_WORDS[2]}\"; fi\n";
    }
    script << "    case $command in\n    '') words='";
    script << NamesOf(app.get_subcommands({}));
    for (const auto* const option : app.get_options({})) {
        for (const auto& one : NamesOf(*option)) script << " " << one;
    }
    script << "' ;;\n";
    for (const auto& command : all) WriteBashCommand(script, command);
    script << "    *) return ;;\n    esac\n"
           << "    compopt +o default\n"
           << "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n}\n"
           << "complete -o default -F _" << name << " " << name << "\n";
    return std::move(script).str();
}

std::string ZshCompletionOf(const CLI::App& app) {
    const auto& name = app.get_name();
    std::ostringstream script;
    script << "#compdef " << name << "\n# Completes " << name << " in zsh.\n_" << name << "() {\n"
           << "    local command=$words[2]\n    if (( CURRENT == 2 )); then\n        local -a commands=(";
    for (const auto* const command : app.get_subcommands({}))
        script << "\n            "
               << Quoted(
                      command->get_name() + ":" + ForArguments(FirstStatement(command->get_description())));
    script << "\n        )\n        _describe command commands\n        return\n    fi\n"
           << "    shift words\n    (( CURRENT-- ))\n";
    const auto all = AllCommands(app);
    for (const auto& command : all) {
        if (command.app->get_subcommands({}).empty()) continue;
        script << "    if [[ $command == " << command.path << " ]] && (( CURRENT > 2 )); then\n"
               << "        command+=\" $words[2]\"\n        shift words\n        (( CURRENT-- ))\n    fi\n";
    }
    script << "    case $command in\n";
    for (const auto& command : all) WriteZshCommand(script, command);
    script << "    esac\n}\n_" << name << " \"$@\"\n";
    return std::move(script).str();
}

} // namespace KAV::Host
