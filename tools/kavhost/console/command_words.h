#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// What is done with a command line's words before and beside the parser.
namespace KAV::Host {

/// A minus sign as it is copied from a page counts as the one on the keyboard where an option takes a number.
/// Texts stay as they are: they may be names of files.
void ReplaceMinusSigns(const CLI::App& app, std::vector<std::string>& arguments);

/// The words in front of the first option must be commands as long as commands are expected. Throws
/// CUsageError for one that is none, with the command that is most like it.
void CheckCommands(CLI::App& app, const std::vector<std::string>& arguments);

/// The text of `kavhost help WORD...`. Throws as CheckCommands() does.
std::string HelpFor(CLI::App& app, const std::vector<std::string>& words);

} // namespace KAV::Host
