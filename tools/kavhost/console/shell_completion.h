#pragma once

#include <string>

namespace CLI {
class App;
}

namespace KAV::Host {

/// What a shell sources to complete commands, options, their choices and file names. Like the manual page it
/// is made of the definitions that read the command line.
std::string BashCompletionOf(const CLI::App& app);
std::string ZshCompletionOf(const CLI::App& app);

} // namespace KAV::Host
