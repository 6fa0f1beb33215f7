#pragma once

#include "tools/kavhost/setup/patch_file.h"
#include "tools/kavhost/setup/settings.h"
#include "tools/kavhost/setup/state_text.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace KAV::Host {

/// What a command line asks of an effect beside settings; a path may be empty.
struct SStateOptions {
    std::filesystem::path state;   ///< bytes of a bank's chunk
    std::filesystem::path patch;   ///< .kvp or .fxp
    std::filesystem::path routing; ///< .kvt
    std::optional<bool> simd;
};

/// What an effect shall be before it runs, and the order in which it becomes that: its state, a patch, which
/// channels its first group takes, vector code, settings. Every instance of one effect that does the same
/// work is prepared with one of these.
class CSetup final {
public:
    CSetup() = default; ///< leaves an effect as it is, but for the channels of its first group

    /// Reads the files. Throws CFailure for one that cannot be read or is no such file, CUsageError for a
    /// patch of an unknown kind.
    explicit CSetup(const SStateOptions& options);

    /// Settings come after all else; they replace earlier ones.
    void Set(std::vector<SSetting> settings) { _settings = std::move(settings); }

    /// For a fresh effect that has its channels and is stopped. With more than two channels and no state or
    /// routing asked for, the first group takes them all, where the effect has groups. Throws CFailure when
    /// the effect refuses a state or a patch, CUsageError when it has nothing like what was asked for.
    void Apply(CEffect& effect) const;

private:
    void EditState(CEffect& effect) const;

    std::optional<std::string> _state;
    std::string _stateFile; ///< for messages
    std::optional<CPatchFile> _patch;
    std::optional<SRouting> _routing;
    std::optional<bool> _simd;
    std::vector<SSetting> _settings;
};

} // namespace KAV::Host
