#pragma once

#include "platform/file_dialog.h"
#include "platform/xdg/dialog_control.h"
#include "platform/xdg/environment.h"

#include <optional>
#include <string>
#include <vector>

/// Programs of the desktop that ask for a file and print its path. Only for the Linux part of this folder.
namespace KAV::Platform {

/// What the program is called with.
std::vector<std::string> ZenityArguments(const SFileRequest& request);
std::vector<std::string> KdialogArguments(const SFileRequest& request, const CEnvironment& environment);

/// Runs the program until the user has answered or `control` ends it, and reaps it. Nothing if it can't be
/// started. Threads: one of the dialog's own. Throws std::bad_alloc.
std::optional<SFileAnswer> AskProgram(const std::string& program, std::vector<std::string> arguments,
    const CEnvironment& environment, CDialogControl& control);

/// The answer that a path stands for: unusable unless it is absolute, UTF-8, of one line, and without
/// backslashes, which count as slashes everywhere else in this program.
SFileAnswer AnswerOfPath(std::string path);

/// The folder to begin in, with a slash at the end; empty if it isn't there.
std::string ExistingFolder(const SFileRequest& request);
/// The proposed name without what would make it a path or break a line.
std::string ProposedName(const SFileRequest& request);
/// The patterns in lower and in upper case: not every dialog ignores the case.
std::vector<std::string> BothCases(const SFileFilter& filter);

} // namespace KAV::Platform
