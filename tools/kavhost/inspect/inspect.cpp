#include "tools/kavhost/inspect/inspect.h"

#include "tools/kavhost/base/text.h"
#include "tools/kavhost/inspect/patch_content.h"
#include "tools/kavhost/setup/profile.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <map>
#include <nlohmann/json.hpp>

namespace KAV::Host {

namespace {

using Json = nlohmann::ordered_json;

/// A patch's texts are any bytes.
std::string Printable(std::string text) {
    std::ranges::replace_if(
        text, [](char letter) { return (letter >= 0 && letter < ' ') || letter == 0x7F; }, '?');
    return text;
}

std::string Quoted(const std::string& text) {
    return "\"" + Printable(text) + "\"";
}

/// A parameter with what the profile knows of it.
struct SKnown {
    std::string name;
    int group = 0; ///< 1 to 4; 0: of all groups
    std::string quantity;
};

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
    SKnown known{law != nullptr ? law->name : parameter.name, 0, {}};
    known.group = GroupOf(known.name);
    if (content.isRelative) MakeRelative(known);
    if (known.name.empty()) {
        known.name = parameter.index ? "parameter " + std::to_string(*parameter.index)
                                     : "tag " + std::to_string(parameter.tag.value_or(0));
    }
    if (law != nullptr) known.quantity = QuantityAt(*law, HostValueOf(parameter, *law));
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

struct SSettingWords {
    std::string_view element;
    const char* words;
    bool isSwitch;
};

constexpr std::array SettingWords{SSettingWords{"host_bypass", "bypassed by the host", true},
    SSettingWords{"gui_width", "editor's width in pixels", false}, SSettingWords{"simd", "vector code", true},
    SSettingWords{"groups_parallel", "groups in parallel", true},
    SSettingWords{"agc_filter", "gain compensation weighted", true},
    SSettingWords{"agc_suspend", "gain compensation suspended below", false},
    SSettingWords{"agc_rms", "gain compensation RMS time", false},
    SSettingWords{"agc_tolerance", "gain compensation tolerance", false},
    SSettingWords{"agc_gain_max", "gain compensation at most up", false},
    SSettingWords{"agc_gain_min", "gain compensation at most down", false}};

void PrintSettings(std::ostream& out, const SPatchContent& content) {
    if (!content.settings.empty()) out << "settings\n";
    for (const auto& [name, value] : content.settings) {
        const auto known = std::ranges::find(SettingWords, std::string_view(name), &SSettingWords::element);
        const bool isSwitch = known != SettingWords.end() && known->isSwitch;
        out << "  " << std::left << std::setw(33) << (known != SettingWords.end() ? known->words : name)
            << "  "
            << (!isSwitch         ? Printable(value)
                   : value == "0" ? "off"
                                  : "on")
            << "\n";
    }
}

void Line(std::ostream& out, const char* label, const std::string& text) {
    out << std::left << std::setw(12) << label << text << "\n";
}

void PrintParameters(std::ostream& out, const SPatchContent& content, const SProfile* profile) {
    std::map<int, std::vector<std::pair<SKnown, double>>> groups;
    std::size_t width = 0;
    for (const auto& parameter : content.parameters) {
        auto known = Know(parameter, content, profile);
        width = std::max(width, std::min<std::size_t>(known.name.size(), 40));
        groups[known.group].emplace_back(std::move(known), parameter.value);
    }
    for (const auto& [group, parameters] : groups) {
        if (group == 0) {
            out << "parameters of " << (content.isRelative ? "the current group" : "all groups") << "\n";
        } else {
            const auto name = NameAt(content.groups, static_cast<std::size_t>(group - 1));
            out << "parameters of group " << group << (name.empty() ? "" : " " + Quoted(name)) << "\n";
        }
        for (const auto& [known, value] : parameters) {
            out << "  " << std::left << std::setw(static_cast<int>(width)) << Printable(known.name) << "  "
                << (known.quantity.empty() ? Shortest(value) : known.quantity) << "\n";
        }
    }
}

void PrintMacros(std::ostream& out, const SPatchContent& content, const SProfile* profile) {
    const auto names = NamesByTag(content, profile);
    for (std::size_t macro = 0; macro < content.macroTargets.size(); ++macro) {
        const auto name = NameAt(content.macros, macro);
        if (name.empty() && content.macroTargets[macro].empty()) continue;
        out << "macro " << macro + 1 << (name.empty() ? "" : " " + Quoted(name)) << "\n";
        for (const auto& target : content.macroTargets[macro]) {
            const auto known = names.find(target.tag);
            out << "  "
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

void PrintRoutings(std::ostream& out, const SPatchContent& content) {
    for (const auto& routing : content.routings) {
        out << "routing of "
            << (routing.group ? "group " + std::to_string(std::int64_t{*routing.group} + 1) : "no group")
            << " " << Quoted(routing.name) << (routing.type.empty() ? "" : ", " + Printable(routing.type))
            << "\n";
        for (const auto& entry : routing.entries)
            out << "  " << Quoted(entry.label) << "  " << Channels(entry) << "\n";
    }
}

} // namespace

void PrintPatch(std::ostream& out, const SPatchContent& content, const SProfile* profile) {
    Line(out, "patch", Printable(content.name));
    Line(out, "form", content.form);
    if (!content.program.empty()) Line(out, "program", Printable(content.program));
    if (content.uniqueId) Line(out, "unique id", std::to_string(*content.uniqueId));
    PrintParameters(out, content, profile);
    PrintMacros(out, content, profile);
    PrintRoutings(out, content);
    PrintSettings(out, content);
}

void PrintPatchAsJson(std::ostream& out, const SPatchContent& content, const SProfile* profile) {
    Json json;
    json["patch"] = content.name;
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
            {"quantity", known.quantity.empty() ? Json() : Json(known.quantity)}});
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
