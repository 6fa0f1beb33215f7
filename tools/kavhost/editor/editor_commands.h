#pragma once

#include "tools/kavhost/setup/setup.h"

#include <filesystem>
#include <functional>
#include <string>

/// What kavhost does with an effect's editor.
namespace KAV::Host {

class CEffectLibrary;

/// Prints a line for the user that is no error.
using NoteSink = std::function<void(const std::string&)>;

struct SEditOptions {
    std::filesystem::path input; ///< plays through the effect
    std::int32_t blockSize = 512;
    bool usesDevice = true; ///< otherwise it plays silently
};

/// What the user leaves when the window is closed.
struct SEdited {
    std::string state;   ///< the effect's, a bank's chunk; empty if it provides none
    std::string failure; ///< why the window was closed if the user didn't do it; empty if so
};

/// Opens the editor in a window of its own while the file plays, until the user closes it. Throws CFailure,
/// CUsageError or CInterruption if nothing was set.
SEdited EditFile(
    const CEffectLibrary& library, const CSetup& setup, const SEditOptions& options, const NoteSink& note);

struct SShotOptions {
    std::filesystem::path input;  ///< plays through the effect; may be empty
    std::filesystem::path output; ///< the picture, PNG
    double start = 0;             ///< seconds of the input that are left out
    double seconds = 3;           ///< of the input that play before the picture is taken
    std::int32_t blockSize = 512;
};

/// Opens the editor in a window of its own that the user need not see, and writes what is in it then. Throws
/// CFailure, CUsageError or CInterruption; then there is no picture.
void ShootEditor(
    const CEffectLibrary& library, const CSetup& setup, const SShotOptions& options, const NoteSink& note);

} // namespace KAV::Host
