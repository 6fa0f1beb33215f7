#include "platform/command_line.h"

namespace KAV::Platform {

std::vector<std::string> CommandLine(int count, char** values) {
    return count > 1 ? std::vector<std::string>(values + 1, values + count) : std::vector<std::string>{};
}

bool ShellExpandsWildcards() noexcept {
    return true;
}

} // namespace KAV::Platform
