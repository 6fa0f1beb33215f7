#include "tools/kavhost/console/command_words.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <functional>
#include <set>
#include <string_view>

namespace KAV::Host {

namespace {

/// Adds the options of all commands that take a number, with their dashes.
void CollectNumberOptions(const CLI::App& app, std::set<std::string, std::less<>>& names) {
    static const std::array texts{
        "FILE", "FILE|NAME", "[N:|all:]FILE|NAME", "OUT", "DIR", "OUT|DIR", "FOLDER", "SETTING"};
    for (const auto* const option : app.get_options({})) {
        const bool isText = std::ranges::find(texts, option->get_type_name()) != texts.end();
        if (option->get_positional() || isText) continue;
        for (const auto& name : option->get_lnames()) names.insert("--" + name);
    }
    for (const auto* const command : app.get_subcommands({})) CollectNumberOptions(*command, names);
}

/// Throws CUsageError if `name` is no command below `app`.
CLI::App& FindCommand(CLI::App& app, const std::string& name) {
    std::vector<std::string> names;
    for (auto* const command : app.get_subcommands({})) {
        if (command->get_name() == name) return *command;
        names.push_back(command->get_name());
    }
    std::string message = "unknown command \"" + name + "\"";
    const auto* const nearest = Nearest(name, names);
    if (nearest != nullptr && 2 * EditDistance(name, *nearest) <= name.size())
        message += "; the nearest is \"" + *nearest + "\"";
    throw CUsageError(message + "; see kavhost --help");
}

} // namespace

void ReplaceMinusSigns(const CLI::App& app, std::vector<std::string>& arguments) {
    std::set<std::string, std::less<>> numbers;
    CollectNumberOptions(app, numbers);
    bool isNumber = false;
    for (auto& argument : arguments) {
        const auto equals = argument.find('=');
        const auto value = isNumber ? 0 : equals + 1; // 0 as well without a "="
        isNumber = isNumber || (value > 0 && numbers.contains(std::string_view(argument).substr(0, equals)));
        if (isNumber && std::string_view(argument).substr(value).starts_with(MinusSign))
            argument.replace(value, MinusSign.size(), "-");
        isNumber = numbers.contains(argument);
    }
}

void CheckCommands(CLI::App& app, const std::vector<std::string>& arguments) {
    auto* command = &app;
    for (const auto& word : arguments) {
        if (word.starts_with('-') || command->get_subcommands({}).empty()) return;
        command = &FindCommand(*command, word);
    }
}

std::string HelpFor(CLI::App& app, const std::vector<std::string>& words) {
    auto* command = &app;
    std::string name = app.get_name();
    for (const auto& word : words) {
        command = &FindCommand(*command, word);
        name += " " + word;
    }
    // Not help(), which is that of the command that was given, "help".
    return command->get_formatter()->make_help(command, name, CLI::AppFormatMode::Normal);
}

} // namespace KAV::Host
