#include "tools/kavhost/console/man_page.h"

#include "utils/product.h"

#include <CLI/CLI.hpp>
#include <array>
#include <span>
#include <sstream>
#include <string_view>
#include <vector>

namespace KAV::Host {

namespace {

constexpr std::string_view ExamplesHead = "Examples:";

/// A line of text, escaped so that the formatter doesn't interpret it.
std::string Escaped(std::string_view text) {
    std::string line;
    if (text.starts_with('.') || text.starts_with('\'')) line = "\\&";
    for (const char letter : text) {
        if (letter == '\\')
            line += "\\e";
        else if (letter == '-')
            line += "\\-"; // otherwise it may become a hyphen, which no shell accepts
        else
            line += letter;
    }
    return line;
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// The text's lines run on until an empty one. Those of examples do not.
void Write(std::ostream& page, const std::string& text) {
    bool isExample = false;
    bool isFirst = true; // of a paragraph
    for (const auto& line : LinesOf(text)) {
        const bool isHead = line == ExamplesHead;
        if (isExample && line.empty()) page << ".EE\n";
        if (isExample && line.empty()) isExample = false;
        if (line.empty()) {
            isFirst = true;
            continue;
        }
        if (isFirst) page << ".PP\n";
        isFirst = false;
        const auto begin = line.find_first_not_of(' ');
        page << Escaped(std::string_view(line).substr(begin)) << "\n";
        if (isHead) {
            page << ".PP\n.EX\n";
            isExample = true;
        }
    }
    if (isExample) page << ".EE\n";
}

/// The lines of a description run on.
void WriteDescription(std::ostream& page, const std::string& text) {
    for (const auto& line : LinesOf(text)) page << Escaped(line) << "\n";
}

void WriteOption(std::ostream& page, const CLI::Option& option) {
    page << ".TP\n";
    const bool isPositional = option.get_positional();
    std::string names = isPositional ? option.get_name(true) : option.get_name(false, true);
    for (auto comma = names.find(','); comma != std::string::npos; comma = names.find(',', comma + 2))
        names.insert(comma + 1, " ");
    page << "\\fB" << Escaped(names) << "\\fR";
    const auto type = option.get_type_name();
    if (!type.empty() && !isPositional) page << " \\fI" << Escaped(type) << "\\fR";
    page << "\n";
    WriteDescription(page, option.get_description());
    if (!option.get_default_str().empty())
        page << "(" << Escaped(option.get_default_str()) << " if not given)\n";
    if (option.get_required() && !isPositional) page << "(required)\n";
}

void WriteOptions(std::ostream& page, const CLI::App& app) {
    for (const bool isPositional : {true, false}) {
        for (const auto* const option : app.get_options({})) {
            if (option->get_positional() == isPositional) WriteOption(page, *option);
        }
    }
}

void WriteCommand(std::ostream& page, const CLI::App& command, const std::string& before) {
    const std::string name = before + " " + command.get_name();
    page << ".SS \"" << Escaped(name) << "\"\n";
    WriteDescription(page, command.get_description());
    WriteOptions(page, command);
    Write(page, command.get_footer());
    for (const auto* const inner : command.get_subcommands({})) WriteCommand(page, *inner, name);
}

/// The lines below the head of the examples, without their indentation.
void WriteExamples(std::ostream& page, const std::string& footer) {
    page << ".EX\n";
    bool isExample = false;
    for (const auto& line : LinesOf(footer)) {
        if (isExample && line.empty()) break;
        if (isExample) page << Escaped(std::string_view(line).substr(line.find_first_not_of(' '))) << "\n";
        isExample = isExample || line == ExamplesHead;
    }
    page << ".EE\n";
}

/// A term, in the language of man(7), and what it means.
struct STerm {
    std::string_view term;
    std::string_view meaning;
};

constexpr std::array ExitCodes{STerm{"0", "Everything succeeded; all files were written."},
    STerm{"1", "Something failed. If there were several files, the others were written."},
    STerm{"2", "The command line is wrong; nothing was done."},
    STerm{"129", "The terminal was closed (signal HUP)."},
    STerm{"130", "The user interrupted kavhost, with Ctrl-C for example (signal INT)."},
    STerm{"141", "The program that reads its standard output has ended (signal PIPE)."},
    STerm{"143", "Another program ended kavhost (signal TERM)."}};

constexpr std::array Variables{
    STerm{"DISPLAY", "The X11 display for edit and shot. Without it, shot starts a display of its own."},
    STerm{"HOME, XDG_CONFIG_HOME", "The folders in which kavhost looks for the files below."},
    STerm{"KAV_FILE_DIALOG",
        "The dialog with which the editor asks for files: portal, zenity, kdialog or list."},
    STerm{"TMPDIR", "The folder of temporary files; the default is /tmp."}};

constexpr std::string_view Documents =
    "The file user-dirs.dirs in the folder of settings names the folder of documents; "
    "without it, that folder is Documents in the home folder.";
constexpr std::array Files{
    STerm{"DOCUMENTS/" KAV_VENDOR "/" KAV_PRODUCT "/*.kvp, *.fxp", "Your patches, for --patch by name."},
    STerm{"DOCUMENTS/" KAV_VENDOR "/Routings/*.kvt", "Your routings, for --routing by name."},
    STerm{"DOCUMENTS/" KAV_VENDOR "/" KAV_PRODUCT "/.factory-content",
        "A list of what kavhost content install has installed."},
    STerm{"DOCUMENTS/" KAV_VENDOR "/" KAV_PRODUCT "/" KAV_OWN_GUIDE, "The user guide, which F1 opens."},
    STerm{"~/.config/kavelin/settings", "Settings of the editor; XDG_CONFIG_HOME replaces ~/.config."},
    STerm{"content/, *.json", "Next to kavhost: the factory patches and routings; and the names and ranges "
                              "of parameters, by the effect's unique id."}};

void WriteTerms(std::ostream& page, const char* title, std::span<const STerm> terms) {
    page << ".SH " << title << "\n";
    for (const auto& [term, meaning] : terms)
        page << ".TP\n\\fB" << Escaped(term) << "\\fR\n" << Escaped(meaning) << "\n";
}

} // namespace

std::string ManPageOf(const CLI::App& app) {
    std::ostringstream page;
    const auto& name = app.get_name();
    page << ".TH KAVHOST 1 \"\" \"" << Escaped(app.version()) << "\" \"User Commands\"\n";
    page << ".SH NAME\n" << name << " \\- run audio files through a VST 2 effect\n";
    page << ".SH SYNOPSIS\n";
    for (const auto* const command : app.get_subcommands({})) {
        page << ".B " << name << " " << command->get_name() << "\n.RI [ option ]...\n";
        for (const auto* const option : command->get_options({})) {
            if (!option->get_positional()) continue;
            const bool isRepeated = option->get_expected_max() > 1;
            page << ".IR " << Escaped(option->get_name(true)) << (isRepeated ? " ...\n" : "\n");
        }
        std::string choice;
        for (const auto* const inner : command->get_subcommands({}))
            choice += (choice.empty() ? "" : "|") + inner->get_name();
        if (!choice.empty()) page << ".B " << choice << "\n";
        page << ".br\n";
    }
    page << ".B " << name << "\n\\fB\\-\\-help\\fR|\\fB\\-\\-version\\fR\n";
    page << ".SH DESCRIPTION\n";
    WriteDescription(page, app.get_description());
    page << ".SH OPTIONS\n";
    WriteOptions(page, app);
    page << ".SH COMMANDS\n";
    for (const auto* const command : app.get_subcommands({})) WriteCommand(page, *command, name);
    WriteTerms(page, "\"EXIT STATUS\"", ExitCodes);
    WriteTerms(page, "ENVIRONMENT", Variables);
    WriteTerms(page, "FILES", Files);
    page << ".PP\n" << Escaped(Documents) << "\n";
    page << ".SH EXAMPLES\n";
    WriteExamples(page, app.get_footer());
    return std::move(page).str();
}

} // namespace KAV::Host
