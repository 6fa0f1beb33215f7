#include "tools/kavhost/setup/reference.h"

#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/setup/setting_words.h"
#include "utils/marked_text.h"

#include <algorithm>

namespace KAV::Host {

namespace {

using Utils::CPieces;

std::string Quoted(std::string_view text) {
    return "\"" + Printable(text) + "\"";
}

std::vector<std::string> NamesIn(std::string_view list) {
    std::vector<std::string> names;
    CPieces pieces(list, ListSeparator);
    while (pieces.Next()) names.emplace_back(pieces.Piece());
    return names;
}

/// Names that differ, each under the name of its place.
void AddNames(std::string_view place, std::string_view before, std::string_view after,
    std::vector<SNamedValue>& found) {
    auto old = NamesIn(before);
    const auto names = NamesIn(after);
    old.resize(std::max(old.size(), names.size()));
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i] != old[i])
            found.push_back({std::string(place) + " " + std::to_string(i + 1) + " name", Quoted(names[i])});
    }
}

/// What a macro moves, as the text has it; nothing when there is no such macro.
std::optional<std::string_view> Targets(std::string_view text, int macro) {
    const auto opening = "<macro group=\"" + std::to_string(macro) + "\">";
    const auto place = Utils::FindMark(text, opening);
    if (place == std::string_view::npos) return std::nullopt;
    text.remove_prefix(place + opening.size());
    return text.substr(0, Utils::FindMark(text, "</"));
}

} // namespace

std::string PatchNameOf(const CEffect& effect) {
    const auto state = CStateText::Read(effect.Chunk(EChunk::Bank));
    const auto name = state ? state->Element("patch_name") : std::string_view();
    return name.empty() ? effect.ProgramName() : std::string(name);
}

CReference::CReference(const CEffect& fresh, std::optional<SProfile> profile)
    : _profile(std::move(profile)), _patch(PatchNameOf(fresh)),
      _state(CStateText::Read(fresh.Chunk(EChunk::Bank))) {
    for (std::int32_t i = 0; i < fresh.Parameters(); ++i) _values.push_back(fresh.Parameter(i));
}

std::string CReference::PatchOf(const CEffect& effect) const {
    const auto name = PatchNameOf(effect);
    // An effect with programs of its own begins with one of them.
    const bool isNone = effect.Programs() == 0 && name == _patch;
    return isNone ? std::string() : Printable(name);
}

std::vector<SNamedValue> CReference::Differences(const CEffect& effect) const {
    std::vector<SNamedValue> found;
    AddParameters(effect, found);
    if (!_state) return found;
    if (const auto state = CStateText::Read(effect.Chunk(EChunk::Bank))) AddState(*state, found);
    return found;
}

void CReference::AddParameters(const CEffect& effect, std::vector<SNamedValue>& found) const {
    for (std::int32_t i = 0; i < effect.Parameters(); ++i) {
        const float value = effect.Parameter(i);
        const auto place = static_cast<std::size_t>(i);
        if (place < _values.size() && value == _values[place]) continue;
        const auto* const law = _profile ? _profile->Find(i) : nullptr;
        if (law != nullptr) {
            found.push_back({law->name, QuantityAt(*law, static_cast<double>(value))});
        } else {
            const auto shown = effect.ParameterDisplay(i) + " " + effect.ParameterLabel(i);
            found.push_back({Printable(Trim(effect.ParameterName(i))), Printable(Trim(shown))});
        }
    }
}

void CReference::AddState(const CStateText& state, std::vector<SNamedValue>& found) const {
    for (int group = 0; group < state.Groups(); ++group) {
        const auto routing = *state.Routing(group);
        if (_state->Routing(group) != routing)
            found.push_back({"Routing (" + std::to_string(group + 1) + ")", Quoted(routing.name)});
    }
    for (const auto name : SettingNames()) {
        const auto value = state.Element(name);
        if (value == _state->Element(name)) continue;
        found.push_back({std::string(SettingWords(name)), Printable(SettingValueWords(name, value))});
    }
    AddNames("Group", _state->Element("fx_names"), state.Element("fx_names"), found);
    AddNames("Macro", _state->Element("macro_group_names"), state.Element("macro_group_names"), found);
    for (int macro = 0;; ++macro) {
        const auto targets = Targets(state.Text(), macro);
        if (!targets) break;
        if (targets != Targets(_state->Text(), macro))
            found.push_back({"Macro " + std::to_string(macro + 1) + " moves", TargetsInWords(*targets)});
    }
}

/// "33;0.400||133;0.400" by the names of the parameters.
std::string CReference::TargetsInWords(std::string_view targets) const {
    std::string words;
    CPieces pieces(targets, "||");
    while (pieces.Next()) {
        const auto number = pieces.Piece().substr(0, pieces.Piece().find(';'));
        const auto tag = ReadIndex(number);
        const auto* const known = tag && _profile ? _profile->FindByTag(*tag) : nullptr;
        words += (words.empty() ? "" : ", ") + (known != nullptr ? known->name : Printable(number));
    }
    return words.empty() ? "nothing" : words;
}

} // namespace KAV::Host
