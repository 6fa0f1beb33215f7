#pragma once

#include <string>
#include <string_view>

namespace KAV {

/// The user guide as a file: the user's own copy, which may be a newer one; otherwise the machine's, next to
/// the library or among the documents of the package that installed it. Empty if there is none. Any thread
/// but the audio thread.
std::u16string FindUserGuide(std::u16string_view a_sLibrary);

} // namespace KAV
