#pragma once

#include "tools/kavhost/setup/patch_file.h"
#include "tools/kavhost/setup/settings.h"
#include "tools/kavhost/setup/state_text.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace KAV::Host {

/// What a command line specifies for an effect in addition to settings; a path may be empty.
struct SStateOptions {
    std::filesystem::path state;   ///< bytes of a bank's chunk
    std::filesystem::path patch;   ///< .kvp or .fxp
    std::filesystem::path routing; ///< .kvt
    std::optional<bool> simd;
    std::optional<int> width; ///< of the editor
};

/// What an effect is set to before it runs, in this order: its state, a patch, which channels its first group
/// takes, vector code, the editor's width, settings. All instances of an effect that do the same work are set
/// up with one of these.
class CSetup final {
public:
    CSetup() = default; ///< leaves an effect as it is, except for the channels of its first group

    /// Reads the files. Throws CFailure for one that cannot be read or is not of its kind, CUsageError for a
    /// patch of an unknown kind.
    explicit CSetup(const SStateOptions& options);

    /// A state as an effect has given it; `name` is for messages.
    static CSetup OfState(std::string state, std::string name);

    /// Settings are applied after everything else; they replace earlier ones.
    void Set(std::vector<SSetting> settings) { _settings = std::move(settings); }

    /// For a fresh, stopped effect that has its channels. With more than two channels, and no state or
    /// routing given, the first group takes them all if the effect has groups. Throws CFailure if the effect
    /// refuses a state or a patch, CUsageError if it has nothing of the kind that was requested.
    void Apply(CEffect& effect) const;

private:
    void EditState(CEffect& effect) const;

    std::optional<std::string> _state;
    std::string _stateFile; ///< for messages
    std::optional<CPatchFile> _patch;
    std::optional<SRouting> _routing;
    std::optional<bool> _simd;
    std::optional<int> _width;
    std::vector<SSetting> _settings;
};

} // namespace KAV::Host
