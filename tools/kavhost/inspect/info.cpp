#include "tools/kavhost/inspect/info.h"

#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/setup/profile.h"
#include "tools/kavhost/setup/setup.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace KAV::Host {

namespace {

using Json = nlohmann::ordered_json;

struct SFlag {
    std::int32_t bit;
    const char* name;
};

constexpr std::int32_t MostPatches = 10000;

constexpr std::array KnownFlags{
    SFlag{VST::effFlagsHasEditor, "editor"},
    SFlag{VST::effFlagsCanReplacing, "replacing"},
    SFlag{VST::effFlagsProgramChunks, "chunks"},
    SFlag{VST::effFlagsIsSynth, "instrument"},
    SFlag{VST::effFlagsNoSoundInStop, "silent when stopped"},
    SFlag{VST::effFlagsCanDoubleReplacing, "double replacing"},
};

std::vector<std::string> FlagNames(std::int32_t flags) {
    std::vector<std::string> names;
    for (const auto& flag : KnownFlags) {
        if ((flags & flag.bit) != 0) names.emplace_back(flag.name);
    }
    return names;
}

/// The number as the four characters that it often is; empty when it is not.
std::string FourCharacters(std::int32_t number) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto character = static_cast<char>((static_cast<std::uint32_t>(number) >> shift) & 0xFF);
        if (character < ' ' || character > '~') return {};
        text.push_back(character);
    }
    return text;
}

std::string FullName(const CEffect& effect, std::int32_t index, const SProfile* profile) {
    const auto* known = profile != nullptr ? profile->Find(index) : nullptr;
    return known != nullptr ? known->name : effect.ParameterName(index);
}

/// The effect's own list of patches. An effect of our kind keeps its patches as files and has no programs of
/// a bank, but names them all the same.
std::vector<std::string> PatchNames(const CEffect& effect) {
    std::vector<std::string> names;
    if (!effect.HasChunks() && effect.Programs() <= 0) return names;
    // Some effects with programs read past the end of their list.
    const std::int32_t most = effect.Programs() > 0 ? std::min(effect.Programs(), MostPatches) : MostPatches;
    while (static_cast<std::int32_t>(names.size()) < most) {
        auto name = effect.ProgramName(static_cast<std::int32_t>(names.size()));
        if (name.empty()) break;
        names.push_back(std::move(name));
    }
    return names;
}

void Line(std::ostream& out, const char* label, const std::string& text) {
    out << std::left << std::setw(12) << label << text << "\n";
}

/// What may be written after --patch or --routing.
void PrintNames(std::ostream& out, ENamedContent kind, const SContentFolders& folders) {
    const bool isPatch = kind == ENamedContent::Patch;
    out << (isPatch ? "names for --patch\n" : "names for --routing\n");
    if (isPatch) out << "         " << DefaultPatchName << ", which is your first one\n";
    for (const auto& content : ContentNames(kind, folders)) {
        out << (content.isUsers ? "  yours    " : "  factory  ") << Printable(ShellWord(content.name))
            << "\n";
    }
}

Json NamesAsJson(ENamedContent kind, const SContentFolders* folders) {
    Json names = Json::array();
    if (folders == nullptr) return names;
    for (const auto& content : ContentNames(kind, *folders)) {
        names.push_back({{"name", content.name}, {"users", content.isUsers},
            {"file", Utf8(std::filesystem::path(content.file).make_preferred())}});
    }
    return names;
}

/// What the profile knows of a parameter's values; null members without one.
void AddRange(Json& json, const SParameterProfile* known) {
    const bool isScale = known != nullptr && (known->law == ELaw::Linear || known->law == ELaw::Exponential);
    json["quantity"] = known != nullptr ? Json(QuantityAt(*known, json["value"].get<double>())) : Json();
    json["unit"] = known != nullptr ? Json(known->unit) : Json();
    json["minimum"] = isScale ? Json(known->minimum) : Json();
    json["maximum"] = isScale ? Json(known->maximum) : Json();
    json["choices"] = known != nullptr && known->law == ELaw::Choice ? Json(known->choices) : Json();
    json["default"] = known != nullptr && known->initial ? Json(*known->initial) : Json();
}

void PrintParameters(std::ostream& out, const CEffect& effect, const SProfile* profile) {
    std::size_t width = 0;
    for (std::int32_t i = 0; i < effect.Parameters(); ++i)
        width = std::max(width, FullName(effect, i, profile).size());
    for (std::int32_t i = 0; i < effect.Parameters(); ++i) {
        const auto* const known = profile != nullptr ? profile->Find(i) : nullptr;
        auto label = effect.ParameterLabel(i);
        if (known != nullptr) label.resize(std::max<std::size_t>(label.size(), 3), ' ');
        out << std::right << std::setw(5) << i << "  " << std::left << std::setw(static_cast<int>(width))
            << FullName(effect, i, profile) << "  " << std::right << std::setw(6)
            << Fixed(static_cast<double>(effect.Parameter(i)), 2) << std::setw(11)
            << effect.ParameterDisplay(i) << " " << label
            << (known != nullptr ? "  " + AllowedQuantities(*known) : "") << "\n";
    }
}

} // namespace

void PrintInfo(std::ostream& out, const SInfoSubject& subject) {
    const auto& effect = subject.effect;
    std::string flags;
    for (const auto& name : FlagNames(effect.Flags())) flags += (flags.empty() ? "" : ", ") + name;
    const auto characters = FourCharacters(effect.UniqueId());
    Line(out, "file", Utf8(subject.file));
    Line(out, "name", effect.Name());
    Line(out, "vendor", effect.Vendor());
    Line(out, "product", effect.Product());
    Line(out, "unique id",
        std::to_string(effect.UniqueId()) + (characters.empty() ? "" : " \"" + characters + "\""));
    Line(out, "version", std::to_string(effect.Version()));
    Line(out, "VST version", std::to_string(effect.VstVersion()));
    Line(out, "inputs", std::to_string(effect.Inputs()));
    Line(out, "outputs", std::to_string(effect.Outputs()));
    Line(out, "flags", flags);
    Line(out, "latency", std::to_string(effect.ReportedDelay()) + " frames, as reported");
    Line(out, "programs", std::to_string(effect.Programs()));
    Line(out, "patch", effect.ProgramName());
    for (const auto& need : subject.needs)
        Line(out, "needs", need.words + (need.isMet ? "" : ", which is missing"));
    const auto patches = PatchNames(effect);
    Line(out, "patches", std::to_string(patches.size()));
    for (std::size_t i = 0; i < patches.size(); ++i)
        out << std::right << std::setw(5) << i << "  " << patches[i] << "\n";
    if (subject.folders != nullptr) {
        PrintNames(out, ENamedContent::Patch, *subject.folders);
        PrintNames(out, ENamedContent::Routing, *subject.folders);
    }
    Line(out, "parameters", std::to_string(effect.Parameters()));
    PrintParameters(out, effect, subject.profile);
}

void PrintInfoAsJson(std::ostream& out, const SInfoSubject& subject) {
    const auto& effect = subject.effect;
    const auto* const profile = subject.profile;
    Json json;
    json["file"] = Utf8(subject.file);
    json["name"] = effect.Name();
    json["vendor"] = effect.Vendor();
    json["product"] = effect.Product();
    json["unique_id"] = effect.UniqueId();
    json["unique_id_text"] = FourCharacters(effect.UniqueId());
    json["version"] = effect.Version();
    json["vst_version"] = effect.VstVersion();
    json["inputs"] = effect.Inputs();
    json["outputs"] = effect.Outputs();
    json["flags"] = FlagNames(effect.Flags());
    json["latency"] = effect.ReportedDelay();
    json["programs"] = effect.Programs();
    json["patch"] = effect.ProgramName();
    json["needs"] = Json::array();
    for (const auto& need : subject.needs)
        json["needs"].push_back({{"need", need.words}, {"met", need.isMet}});
    json["patches"] = PatchNames(effect);
    json["patch_names"] = NamesAsJson(ENamedContent::Patch, subject.folders);
    json["routing_names"] = NamesAsJson(ENamedContent::Routing, subject.folders);
    json["parameters"] = Json::array();
    for (std::int32_t i = 0; i < effect.Parameters(); ++i) {
        Json parameter{{"index", i}, {"name", FullName(effect, i, profile)},
            {"short_name", effect.ParameterName(i)}, {"value", effect.Parameter(i)},
            {"display", effect.ParameterDisplay(i)}, {"label", effect.ParameterLabel(i)}};
        AddRange(parameter, profile != nullptr ? profile->Find(i) : nullptr);
        json["parameters"].push_back(std::move(parameter));
    }
    out << json.dump(2, ' ', false, Json::error_handler_t::replace) << "\n"; // effects' texts are any bytes
}

} // namespace KAV::Host
