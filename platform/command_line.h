#pragma once

#include <string>
#include <vector>

namespace KAV::Platform {

/// The program's arguments in UTF-8, without the program's own name. `count` and `values` are those of
/// `main`, which some systems fill without all characters.
std::vector<std::string> CommandLine(int count, char** values);

/// Whether names with wildcards reach a program as the files that they stand for.
bool ShellExpandsWildcards() noexcept;

} // namespace KAV::Platform
