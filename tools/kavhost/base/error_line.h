#pragma once

#include <ostream>
#include <string_view>

namespace KAV::Host {

/// One line for the user, after the program's name. Control characters are escaped.
void PrintError(std::ostream& errors, std::string_view message);

} // namespace KAV::Host
