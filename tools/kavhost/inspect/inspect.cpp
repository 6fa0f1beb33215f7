#include "tools/kavhost/inspect/inspect.h"

#include "tools/kavhost/base/text.h"
#include "tools/kavhost/inspect/patch_content.h"
#include "tools/kavhost/setup/profile.h"
#include "tools/kavhost/setup/setting_words.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

namespace KAV::Host {

namespace {

using Json = nlohmann::ordered_json;

std::string Quoted(const std::string& text) {
    return "\"" + Printable(text) + "\"";
}

/// A parameter with what the profile knows of it.
struct SKnown {
    std::string name;
    int group = 0; ///< 1 to 4; 0: of all groups
    std::string quantity;
    std::optional<bool> differs; ///< from a new instance's; nothing if that is unknown
};

/// Patches that are text keep six decimals of a value.
constexpr double StoredStep = 1e-6;

/// The names of a group's parameters end with its number in parentheses.
int GroupOf(const std::string& name) noexcept {
    const auto size = name.size();
    const bool isInBrackets = size > 3 && name[size - 3] == '(' && name[size - 1] == ')';
    return isInBrackets && name[size - 2] >= '1' && name[size - 2] <= '9' ? name[size - 2] - '0' : 0;
}

/// A host's value: patches that are text or binary keep a choice as its place.
double HostValueOf(const SPatchParameter& parameter, const SParameterProfile& profile) {
    if (parameter.index || profile.law != ELaw::Choice) return parameter.value;
    return parameter.value / static_cast<double>(profile.choices.size() - 1);
}

const SParameterProfile* LawOf(const SPatchParameter& parameter, const SProfile* profile) {
    if (profile == nullptr) return nullptr;
    if (parameter.index) return profile->Find(*parameter.index);
    const auto* const named = profile->Find(std::string_view(parameter.name));
    return named == nullptr && parameter.tag ? profile->FindByTag(*parameter.tag) : named;
}

/// In a relative patch the numbers of the first group mean the current group, so its number is removed from
/// names.
void MakeRelative(SKnown& known) {
    if (known.group != 1) return;
    known.name.resize(known.name.size() - std::string_view(" (1)").size());
    known.group = 0;
}

SKnown Know(const SPatchParameter& parameter, const SPatchContent& content, const SProfile* profile) {
    const auto* const law = LawOf(parameter, profile);
    SKnown known{law != nullptr ? law->name : parameter.name, 0, {}, {}};
    known.group = GroupOf(known.name);
    if (content.isRelative) MakeRelative(known);
    if (known.name.empty()) {
        known.name = parameter.index ? "parameter " + std::to_string(*parameter.index)
                                     : "tag " + std::to_string(parameter.tag.value_or(0));
    }
    if (law == nullptr) return known;
    const double value = HostValueOf(parameter, *law);
    known.quantity = QuantityAt(*law, value);
    if (law->initial) known.differs = !(std::abs(value - *law->initial) <= StoredStep);
    return known;
}

/// Names by the numbers that macros use; a macro may move what the patch does not set.
std::map<std::int32_t, std::string> NamesByTag(const SPatchContent& content, const SProfile* profile) {
    std::map<std::int32_t, std::string> names;
    for (const auto& parameter : content.parameters) {
        if (parameter.tag) names.emplace(*parameter.tag, Know(parameter, content, profile).name);
    }
    if (profile == nullptr) return names;
    for (const auto& parameter : profile->parameters) {
        if (parameter.tag) names.emplace(*parameter.tag, parameter.name);
    }
    return names;
}

std::string NameAt(const std::vector<std::string>& names, std::size_t place) {
    return place < names.size() ? names[place] : std::string();
}

/// Prints a patch, all of it or what differs from a new instance.
class CPrinter final {
public:
    CPrinter(std::ostream& out, const SPatchContent& content, const SProfile* profile, bool showsAll)
        : _out(out), _content(content), _profile(profile), _showsAll(showsAll) {
        if (profile != nullptr && !profile->state.empty()) _initial = ParsePatch(profile->state);
    }

    void Print() {
        PrintParameters();
        PrintMacros();
        PrintRoutings();
        PrintSettings();
        if (_omitted > 0) _out << _omitted << " more as in a new instance; --all shows them\n";
    }

private:
    /// Counts what is left out.
    bool IsShown(bool differs) {
        if (!differs && !_showsAll) ++_omitted;
        return differs || _showsAll;
    }

    void PrintGroupHead(int group, bool hasParameters);
    void PrintParameters();
    void PrintMacros();
    void PrintRoutings();
    void PrintSettings();

    std::ostream& _out;
    const SPatchContent& _content;
    const SProfile* _profile;
    bool _showsAll;
    SPatchContent _initial; ///< a new instance's; empty if that is unknown
    int _omitted = 0;
};

void CPrinter::PrintSettings() {
    bool isFirst = true;
    for (const auto& setting : _content.settings) {
        if (!IsShown(std::ranges::find(_initial.settings, setting) == _initial.settings.end())) continue;
        if (std::exchange(isFirst, false)) _out << "settings\n";
        const auto& [name, value] = setting;
        _out << "  " << std::left << std::setw(33) << SettingWords(name) << "  "
             << Printable(SettingValueWords(name, value)) << "\n";
    }
}

void Line(std::ostream& out, const char* label, const std::string& text) {
    out << std::left << std::setw(12) << label << text << "\n";
}

void CPrinter::PrintGroupHead(int group, bool hasParameters) {
    if (group == 0) {
        _out << "parameters of " << (_content.isRelative ? "the current group" : "all groups") << "\n";
        return;
    }
    const auto name = NameAt(_content.groups, static_cast<std::size_t>(group - 1));
    _out << (hasParameters ? "parameters of group " : "group ") << group
         << (name.empty() ? "" : " " + Quoted(name)) << "\n";
}

void CPrinter::PrintParameters() {
    std::map<int, std::vector<std::pair<SKnown, double>>> groups;
    // A group that the user has named is shown though nothing else of it differs.
    for (std::size_t group = 0; group < _content.groups.size(); ++group) {
        const auto& name = _content.groups[group];
        if (!name.empty() && name != NameAt(_initial.groups, group)) groups[static_cast<int>(group + 1)];
    }
    std::size_t width = 0;
    for (const auto& parameter : _content.parameters) {
        auto known = Know(parameter, _content, _profile);
        if (!IsShown(known.differs.value_or(true))) continue;
        width = std::max(width, std::min<std::size_t>(known.name.size(), 40));
        groups[known.group].emplace_back(std::move(known), parameter.value);
    }
    for (const auto& [group, parameters] : groups) {
        PrintGroupHead(group, !parameters.empty());
        for (const auto& [known, value] : parameters) {
            _out << "  " << std::left << std::setw(static_cast<int>(width)) << Printable(known.name) << "  "
                 << (known.quantity.empty() ? Shortest(value) : known.quantity) << "\n";
        }
    }
}

void CPrinter::PrintMacros() {
    const auto names = NamesByTag(_content, _profile);
    for (std::size_t macro = 0; macro < _content.macroTargets.size(); ++macro) {
        const auto name = NameAt(_content.macros, macro);
        const auto& targets = _content.macroTargets[macro];
        if (name.empty() && targets.empty()) continue;
        const auto number = std::to_string(macro + 1);
        if (!IsShown(!targets.empty() || name != NameAt(_initial.macros, macro))) continue;
        _out << "macro " << number << (name.empty() ? "" : " " + Quoted(name)) << "\n";
        for (const auto& target : targets) {
            const auto known = names.find(target.tag);
            _out << "  "
                 << (known != names.end() ? Printable(known->second) : "tag " + std::to_string(target.tag))
                 << ", sensitivity " << Shortest(target.sensitivity) << "\n";
        }
    }
}

/// Channels are counted from 1 where people read them.
std::string Channels(const SPatchRoutingEntry& entry) {
    std::string text;
    for (const int channel : {entry.first, entry.second}) {
        if (channel < 0) continue;
        text += (text.empty() ? "channel " : " and ") + std::to_string(std::int64_t{channel} + 1);
    }
    return text.empty() ? "no channel" : text;
}

void CPrinter::PrintRoutings() {
    for (const auto& routing : _content.routings) {
        if (!IsShown(std::ranges::find(_initial.routings, routing) == _initial.routings.end())) continue;
        _out << "routing";
        if (_content.form != "routing") {
            _out << " of "
                 << (routing.group ? "group " + std::to_string(std::int64_t{*routing.group} + 1)
                                   : "no group");
        }
        _out << " " << Quoted(routing.name) << (routing.type.empty() ? "" : ", " + Printable(routing.type))
             << "\n";
        for (const auto& entry : routing.entries)
            _out << "  " << Quoted(entry.label) << "  " << Channels(entry) << "\n";
    }
}

} // namespace

void PrintPatch(std::ostream& out, const SPatchContent& content, const SProfile* profile, bool showsAll) {
    if (content.form != "routing") Line(out, "patch", Printable(content.name));
    for (const auto& need : content.needs) Line(out, "needs", Printable(need));
    if (content.form != "routing") Line(out, "form", content.form);
    if (!content.program.empty()) Line(out, "program", Printable(content.program));
    if (content.uniqueId) Line(out, "unique id", std::to_string(*content.uniqueId));
    CPrinter(out, content, profile, showsAll).Print();
}

void PrintPatchAsJson(std::ostream& out, const SPatchContent& content, const SProfile* profile) {
    Json json;
    json["patch"] = content.name;
    json["needs"] = content.needs;
    json["form"] = content.form;
    json["program"] = content.program;
    json["unique_id"] = content.uniqueId ? Json(*content.uniqueId) : Json();
    json["relative"] = content.isRelative;
    json["parameters"] = Json::array();
    for (const auto& parameter : content.parameters) {
        const auto known = Know(parameter, content, profile);
        json["parameters"].push_back({{"tag", parameter.tag ? Json(*parameter.tag) : Json()},
            {"index", parameter.index ? Json(*parameter.index) : Json()}, {"name", known.name},
            {"group", known.group > 0 ? Json(known.group) : Json()}, {"value", parameter.value},
            {"quantity", known.quantity.empty() ? Json() : Json(known.quantity)},
            {"differs", known.differs ? Json(*known.differs) : Json()}});
    }
    json["groups"] = content.groups;
    json["macros"] = Json::array();
    const auto names = NamesByTag(content, profile);
    for (std::size_t macro = 0; macro < content.macroTargets.size(); ++macro) {
        auto targets = Json::array();
        for (const auto& target : content.macroTargets[macro]) {
            const auto known = names.find(target.tag);
            targets.push_back(
                {{"tag", target.tag}, {"name", known != names.end() ? Json(known->second) : Json()},
                    {"sensitivity", target.sensitivity}});
        }
        json["macros"].push_back({{"name", NameAt(content.macros, macro)}, {"targets", targets}});
    }
    json["routings"] = Json::array();
    for (const auto& routing : content.routings) {
        auto entries = Json::array();
        for (const auto& entry : routing.entries) {
            entries.push_back({{"label", entry.label}, {"first", entry.first}, {"second", entry.second}});
        }
        json["routings"].push_back(
            {{"group", routing.group ? Json(std::int64_t{*routing.group} + 1) : Json()},
                {"name", routing.name}, {"type", routing.type}, {"entries", entries}});
    }
    json["settings"] = Json::object();
    for (const auto& [name, value] : content.settings) json["settings"][name] = value;
    out << json.dump(2, ' ', false, Json::error_handler_t::replace) << "\n"; // a patch's texts are any bytes
}

} // namespace KAV::Host
