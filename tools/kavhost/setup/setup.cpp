#include "tools/kavhost/setup/setup.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/file_bytes.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/setup/channel_labels.h"
#include "tools/kavhost/setup/channel_use.h"
#include "tools/kavhost/setup/patch_needs.h"

#include <algorithm>

namespace KAV::Host {

namespace {

/// Up to this many channels, a group of a new effect takes all of them.
constexpr std::int32_t ChannelsThatNeedNoRouting = 2;

[[noreturn]] void FailWithoutPlace(const char* option, const CEffect& effect, const std::string& what) {
    throw CUsageError(
        std::string(option) + ": the state of " + effect.Name() + " is not a text with " + what);
}

void SetEdited(CEffect& effect, const CStateText& text) {
    if (effect.SetChunk(text.Bytes(), EChunk::Bank)) return;
    throw CFailure(effect.Name() + " does not accept its own state with another routing, connection of "
                                   "groups, vector code or width");
}

std::string Number(int group) {
    return std::to_string(group + 1);
}

} // namespace

SRoutingOption ReadRoutingOption(const std::string& text) {
    constexpr std::string_view all = "all:";
    if (text.starts_with(all)) return {SRoutingOption::AllGroups, PathOf(text.substr(all.size()))};
    const auto colon = text.find(':');
    if (colon == std::string::npos) return {0, PathOf(text)};
    const auto number = ReadIndex(std::string_view(text).substr(0, colon));
    if (!number) return {0, PathOf(text)}; // a colon of the file's name, or of a drive's
    if (*number < 1) throw CUsageError("--routing: groups count from 1, not " + std::to_string(*number));
    return {*number - 1, PathOf(text.substr(colon + 1))};
}

CSetup::CSetup(const SStateOptions& options)
    : _parallel(options.parallel), _allChannels(options.allChannels), _simd(options.simd),
      _width(options.width) {
    if (!options.state.empty()) {
        _state = ReadFileBytes(options.state);
        _stateFile = Utf8(options.state);
    }
    _wantsDefaultPatch = options.patch == DefaultPatch;
    if (!options.patch.empty() && !_wantsDefaultPatch) _patch.emplace(options.patch);
    for (const auto& option : options.routings) {
        auto routing = ReadRouting(ReadFileBytes(option.file, LargestPatch));
        if (!routing) throw CFailure(Utf8(option.file) + ": not a routing");
        if (option.group != SRoutingOption::AllGroups) {
            _routings.insert_or_assign(option.group, *std::move(routing));
        } else {
            _routings.clear();
            _routingOfAll = std::move(routing);
        }
    }
}

CSetup CSetup::OfState(std::string state, std::string name) {
    CSetup setup;
    setup._state = std::move(state);
    setup._stateFile = std::move(name);
    return setup;
}

std::vector<std::string> CSetup::ChannelLabels() const {
    std::vector<std::string> labels;
    for (const auto& [group, routing] : _routings) AddChannelLabels(routing, labels);
    if (_routingOfAll) AddChannelLabels(*_routingOfAll, labels);
    return labels;
}

void CSetup::TakeDefaultPatch(const CEffect& fresh) {
    if (_wantsDefaultPatch) _patch = CPatchFile::Of(fresh);
}

void CSetup::Apply(CEffect& effect) const {
    if (!_beginning.empty() && !effect.SetChunk(_beginning, EChunk::Bank))
        throw CFailure(effect.Name() + " does not accept the state of built-in values in its profile");
    if (_state && !effect.SetChunk(*_state, EChunk::Bank)) {
        throw CFailure(_stateFile + ": " + effect.Name() + " does not accept this state");
    }
    EditBeforePatch(effect);
    if (_patch) _patch->Apply(effect);
    EditAfterPatch(effect);
    ApplySettings(_settings, effect);
}

void CSetup::EditBeforePatch(CEffect& effect) const {
    auto routings = _routings;
    const bool isFirstGiven = _routingOfAll || routings.contains(0);
    const bool isAutomatic = !isFirstGiven && !_state && effect.Inputs() > ChannelsThatNeedNoRouting;
    if (routings.empty() && !_routingOfAll && !isAutomatic && !_parallel) return;
    auto text = CStateText::Read(effect.Chunk(EChunk::Bank));
    const int groups = text ? text->Groups() : 0;
    if (_routingOfAll) {
        if (groups == 0) FailWithoutPlace("--routing", effect, "a routing");
        for (int group = 0; group < groups; ++group) routings.try_emplace(group, *_routingOfAll);
    }
    for (const auto& [group, routing] : routings) {
        if (text && text->SetRouting(group, routing)) continue;
        FailWithoutPlace(
            "--routing", effect, group == 0 ? "a routing" : "a routing of group " + Number(group));
    }
    const bool isRouted = isAutomatic && text && text->SetRouting(0, RoutingOfChannels(effect.Inputs()));
    if (_parallel && !(text && text->SetParallel(*_parallel)))
        FailWithoutPlace("--parallel", effect, "the connection of groups");
    if (isRouted || !routings.empty() || _parallel) SetEdited(effect, *text);
}

void CSetup::EditAfterPatch(CEffect& effect) const {
    if (!_allChannels && !_simd && !_width) return;
    auto text = CStateText::Read(effect.Chunk(EChunk::Bank));
    if (_allChannels && !(text && PutAllChannelsIntoFirstGroup(*text, effect.Inputs())))
        FailWithoutPlace("--channels", effect, "a routing");
    if (_simd && !(text && text->SetSimd(*_simd)))
        FailWithoutPlace("--simd", effect, "a switch of vector code");
    if (_width && !(text && text->SetWidth(*_width)))
        FailWithoutPlace("--width", effect, "the editor's width");
    SetEdited(effect, *text);
}

std::vector<SNeedAnswer> CSetup::Needs(const CEffect& effect) const {
    std::vector<SNeedAnswer> needs;
    const auto* const patch = _patch ? _patch->Chunk() : nullptr;
    if (patch == nullptr) return needs;
    const auto state = CStateText::Read(effect.Chunk(EChunk::Bank));
    for (const auto& need : ReadNeeds(std::string_view(*patch).substr(0, patch->find('\0'))))
        needs.push_back({need.words, !state || IsMet(need, *state)});
    return needs;
}

std::vector<SSetupRemark> CSetup::ExaminePatch(const CStateText& state, int channels) const {
    std::vector<SSetupRemark> remarks;
    const auto* const patch = _patch->Chunk();
    const auto needs = patch != nullptr ? ReadNeeds(std::string_view(*patch).substr(0, patch->find('\0')))
                                        : std::vector<SPatchNeed>();
    for (const auto& need : needs) {
        if (!need.IsKnown()) remarks.push_back({"the patch needs " + need.words, false});
        if (!IsMet(need, state)) remarks.push_back({"a need of the patch is not met: " + need.words, true});
    }
    if (!needs.empty()) return remarks;
    for (const auto& [group, toggles, routing] : FindIdleToggles(state)) {
        const bool hasChannel = toggles.front() < channels; // of the file, which the patch was meant to take
        remarks.push_back({"the patch uses " + InWords("button", toggles) + " of group " + Number(group) +
                               ", which the routing \"" + routing.name + "\" does not have",
            hasChannel});
    }
    return remarks;
}

std::vector<SSetupRemark> CSetup::Examine(const CEffect& effect) const {
    const auto state = CStateText::Read(effect.Chunk(EChunk::Bank));
    if (!state) return {};
    auto remarks = _patch ? ExaminePatch(*state, effect.Inputs()) : std::vector<SSetupRemark>();
    if (const auto unlimited = UnlimitedChannels(*state, effect.Inputs()); !unlimited.empty()) {
        remarks.push_back(
            {InWords("channel", unlimited) + (unlimited.size() == 1 ? " passes" : " pass") + " unlimited",
                true});
    }
    return remarks;
}

} // namespace KAV::Host
