#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace KAV::Utils {

/// The initial content of a file dialog.
struct SFileQuestion {
    std::u16string filter; ///< "title||pattern;pattern"; several of them are separated by "|||"
    std::u16string name;   ///< proposed name of a file to save
    std::u16string folder; ///< with forward slashes; empty: the system's choice
};

/// Receives the path that the user has chosen; an empty one if the user cancels or can't be asked. It doesn't
/// throw.
using PathAnswer = std::function<void(std::u16string_view path)>;

} // namespace KAV::Utils
