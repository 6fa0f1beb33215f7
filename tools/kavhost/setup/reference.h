#pragma once

#include "tools/kavhost/base/named_value.h"
#include "tools/kavhost/setup/profile.h"
#include "tools/kavhost/setup/state_text.h"

#include <optional>
#include <string>
#include <vector>

namespace KAV::Host {

class CEffect;

/// What the patch of an effect is called. A state that is text has the whole name; the interface cuts it.
std::string PatchNameOf(const CEffect& effect);

/// An effect's built-in values, with which others of its instances are compared.
/// Threads: any number at once.
class CReference final {
public:
    /// `fresh` has its built-in values. `profile`, which may be missing, has full names and quantities.
    CReference(const CEffect& fresh, std::optional<SProfile> profile);

    /// The name of the patch that an effect has; empty when it has the built-in values' own, which is none.
    std::string PatchOf(const CEffect& effect) const;

    /// Each setting that differs: parameters, and of states that are text routings, names, macros and the
    /// settings that are no parameters.
    std::vector<SNamedValue> Differences(const CEffect& effect) const;

private:
    void AddParameters(const CEffect& effect, std::vector<SNamedValue>& found) const;
    void AddState(const CStateText& state, std::vector<SNamedValue>& found) const;
    std::string TargetsInWords(std::string_view targets) const;

    std::optional<SProfile> _profile;
    std::string _patch;
    std::vector<float> _values;
    std::optional<CStateText> _state;
};

} // namespace KAV::Host
