#pragma once

#include "tools/kavhost/setup/patch_file.h"
#include "tools/kavhost/setup/settings.h"
#include "tools/kavhost/setup/state_text.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace KAV::Host {

/// What `--patch` takes instead of a file: the patch that the effect begins with by itself, which is the
/// first of the user's.
inline constexpr const char* DefaultPatch = "default";

/// A routing and the group that gets it.
struct SRoutingOption {
    static constexpr int AllGroups = -1;

    int group = 0; ///< from 0, or AllGroups
    std::filesystem::path file;
};

/// What `--routing` takes: FILE for the first group, N:FILE for group N from 1, all:FILE. Throws CUsageError
/// for a group 0.
SRoutingOption ReadRoutingOption(const std::string& text);

/// What a command line specifies for an effect in addition to settings; a path may be empty.
struct SStateOptions {
    std::filesystem::path state;          ///< bytes of a bank's chunk
    std::filesystem::path patch;          ///< .kvp or .fxp, or DefaultPatch
    std::vector<SRoutingOption> routings; ///< .kvt; a later one replaces an earlier one of the same group
    std::optional<bool> parallel;         ///< how the groups are connected
    bool allChannels = false;             ///< the first group takes all channels, whatever the patch says
    std::optional<bool> simd;
    std::optional<int> width; ///< of the editor
};

/// What a user should know of a setup: it may not do what was meant.
struct SSetupRemark {
    std::string text;
    bool isGrave;
};

/// What a patch says it needs.
struct SNeedAnswer {
    std::string words;
    bool isMet;
};

/// What an effect is set to before it runs, in this order: the state that it begins with, a state, routings
/// and the connection of the groups, a patch, all channels into the first group, vector code, the editor's
/// width, settings. All instances of an effect that do the same work are set up with one of these.
class CSetup final {
public:
    CSetup() = default; ///< leaves an effect as it is, except for the channels of its first group

    /// Reads the files. Throws CFailure for one that cannot be read or is not of its kind, CUsageError for a
    /// patch of an unknown kind.
    explicit CSetup(const SStateOptions& options);

    /// A state as an effect has given it; `name` is for messages.
    static CSetup OfState(std::string state, std::string name);

    /// Begins with this state instead of what the effect has begun with by itself; empty: doesn't.
    void BeginWith(std::string state) { _beginning = std::move(state); }

    /// The patch of `fresh`, an effect that nothing has been set of, is the one that DefaultPatch means.
    void TakeDefaultPatch(const CEffect& fresh);

    /// Settings are applied after everything else; they replace earlier ones.
    void Set(std::vector<SSetting> settings) { _settings = std::move(settings); }

    /// What the routings that the command line names call the channels, by number; empty without any.
    std::vector<std::string> ChannelLabels() const;

    /// For a fresh, stopped effect that has its channels. With more than two channels, and no state or
    /// routing of the first group given, that group takes them all if the effect has groups; a patch's
    /// toggles then decide which of them it keeps. Throws CFailure if the effect refuses a state or a patch,
    /// CUsageError if it has nothing of the kind that was requested.
    void Apply(CEffect& effect) const;

    /// Whether an effect to which this was applied has what the patch needs, and limits all of its channels.
    std::vector<SSetupRemark> Examine(const CEffect& effect) const;

    /// What the patch says it needs, and whether the effect has it.
    std::vector<SNeedAnswer> Needs(const CEffect& effect) const;

private:
    void EditBeforePatch(CEffect& effect) const;
    void EditAfterPatch(CEffect& effect) const;
    std::vector<SSetupRemark> ExaminePatch(const CStateText& state, int channels) const;

    std::string _beginning;
    std::optional<std::string> _state;
    std::string _stateFile; ///< for messages
    std::optional<CPatchFile> _patch;
    bool _wantsDefaultPatch = false;
    std::map<int, SRouting> _routings; ///< by group
    std::optional<SRouting> _routingOfAll;
    std::optional<bool> _parallel;
    bool _allChannels = false;
    std::optional<bool> _simd;
    std::optional<int> _width;
    std::vector<SSetting> _settings;
};

} // namespace KAV::Host
