#pragma once

#include <filesystem>

namespace KAV::Host {

/// Asks the user for an audio file, in the desktop's own dialog; empty if the user cancels. Throws
/// CUsageError if there is no display or no dialog, CFailure if the file's path can't be used, and
/// CInterruption.
std::filesystem::path ChooseAudioFile();

} // namespace KAV::Host
