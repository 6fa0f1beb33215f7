#pragma once

#include "tools/kavhost/bench/bench.h"
#include "tools/kavhost/editor/editor_commands.h"
#include "tools/kavhost/render/batch_report.h"
#include "tools/kavhost/render/render.h"
#include "tools/kavhost/setup/setup.h"
#include "tools/kavhost/target/target_search.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace KAV::Host {

enum class ECommand {
    Print,
    Info,
    Render,
    Edit,
    Shot,
    Bench,
    Inspect,
    InstallContent,
    UninstallContent,
    ListContent
};

/// A command line, read.
struct SOptions {
    ECommand command = ECommand::Print;
    std::string text; ///< to print: help, or the version

    std::filesystem::path plugin;  ///< empty: the one that comes with kavhost
    std::filesystem::path profile; ///< empty: the one next to kavhost that fits the effect, if any
    SStateOptions state;
    std::vector<std::string> settings;
    bool isJson = false;

    std::filesystem::path patch;      ///< to inspect
    bool showsAll = false;            ///< of it, also what is as in a new instance
    std::filesystem::path savedState; ///< where info saves the effect's state; may be empty

    std::vector<std::filesystem::path> inputs;
    std::filesystem::path output;
    SRenderOptions render;
    STargets targets; ///< of render
    int jobs = 1;     ///< files at a time
    EReportForm report = EReportForm::Text;

    SEditOptions edit;
    bool showsErrorBox = false; ///< where no terminal shows the errors
    SShotOptions shot;

    std::filesystem::path otherPlugin; ///< to measure against; empty: the same, if there are other settings
    std::vector<std::string> otherSettings;
    SBenchOptions bench;

    std::filesystem::path content; ///< patches and routings to install; empty: those next to kavhost
};

/// Reads UTF-8 arguments, the program's name not among them. Throws CUsageError.
SOptions ReadOptions(std::vector<std::string> arguments);

/// The manual page, for man(1). It is generated from the same definitions as the help, so neither lacks what
/// the other has.
std::string ManPage();

enum class EShell { Bash, Zsh };

/// What that shell needs to complete a command line; made in the same way.
std::string ShellCompletion(EShell shell);

} // namespace KAV::Host
