#pragma once

#include <string>
#include <string_view>

namespace KAV::Platform {

/// The value of a variable in a text of lines NAME=value, as a shell would assign it: in double quotes,
/// single quotes or none, with a backslash before a character that is meant literally. The last such line
/// counts; comments and other lines don't. Nothing is expanded: "$HOME" stays as it is. Empty if there is no
/// such variable or its quotes don't end.
std::string ShellVariable(std::string_view text, std::string_view name);

} // namespace KAV::Platform
