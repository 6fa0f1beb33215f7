#include "tools/kavhost/setup/settings.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/setup/display_search.h"
#include "tools/kavhost/setup/profile.h"

namespace KAV::Host {

namespace {

std::int32_t CheckedIndex(int index, const CEffect& effect) {
    const std::int32_t count = effect.Parameters();
    if (index >= 0 && index < count) return index;
    throw CUsageError("unknown parameter " + std::to_string(index) + ": the effect has " +
                      std::to_string(count) + (count > 0 ? ", 0 to " + std::to_string(count - 1) : ""));
}

[[noreturn]] void FailUnknown(std::string_view name, const CEffect& effect, const SProfile* profile) {
    std::vector<std::string> names;
    std::vector<std::int32_t> indices;
    const auto add = [&](std::string known, std::int32_t index) {
        names.push_back(std::move(known));
        indices.push_back(index);
    };
    if (profile != nullptr) {
        for (const auto& parameter : profile->parameters) add(parameter.name, parameter.index);
    } else {
        for (std::int32_t i = 0; i < effect.Parameters(); ++i) add(effect.ParameterName(i), i);
    }
    std::string message = "unknown parameter \"" + std::string(name) + "\"";
    if (const auto* nearest = Nearest(name, names)) {
        const auto index = indices[static_cast<std::size_t>(nearest - names.data())];
        message += "; the nearest is \"" + *nearest + "\", index " + std::to_string(index);
    }
    if (profile == nullptr) message += "; without a profile only INDEX=VALUE and INDEX:TEXT are accepted";
    throw CUsageError(message);
}

SSetting ResolveByName(
    std::string_view name, std::string_view quantity, const CEffect& effect, const SProfile* profile) {
    const auto* parameter = profile != nullptr ? profile->Find(name) : nullptr;
    if (parameter == nullptr) FailUnknown(name, effect, profile);
    return {CheckedIndex(parameter->index, effect), HostValue(*parameter, quantity)};
}

SSetting ResolveByIndex(int index, std::string_view text, const CEffect& effect) {
    const std::int32_t checked = CheckedIndex(index, effect);
    const auto number = ReadNumber(text);
    if (!number || !number->unit.empty() || number->value < 0 || number->value > 1) {
        throw CUsageError("parameter " + std::to_string(index) + ": \"" + std::string(text) +
                          "\" is not accepted, only 0 to 1; " + std::to_string(index) +
                          ":TEXT sets what the effect displays");
    }
    return {checked, static_cast<float>(number->value)};
}

SSetting Resolve(std::string_view text, CEffect& effect, const SProfile* profile) {
    const auto mark = text.find_first_of("=:");
    if (mark != std::string_view::npos) {
        const auto rest = Trim(text.substr(mark + 1));
        if (const auto index = ReadIndex(Trim(text.substr(0, mark)))) {
            if (text[mark] == '=') return ResolveByIndex(*index, rest, effect);
            const std::int32_t checked = CheckedIndex(*index, effect);
            return {checked, FindDisplayed(effect, checked, rest)};
        }
    }
    const auto equals = text.find('='); // a name may have a colon in it
    if (equals == std::string_view::npos) {
        throw CUsageError("setting \"" + std::string(text) +
                          "\" is not of the form NAME=QUANTITY, INDEX=VALUE or INDEX:TEXT");
    }
    return ResolveByName(Trim(text.substr(0, equals)), Trim(text.substr(equals + 1)), effect, profile);
}

} // namespace

std::vector<SSetting> ResolveSettings(
    std::span<const std::string> texts, CEffect& effect, const SProfile* profile) {
    std::vector<SSetting> settings;
    for (const auto& text : texts) {
        settings.push_back(Resolve(text, effect, profile));
        effect.SetParameter(settings.back().index, settings.back().value);
    }
    return settings;
}

void ApplySettings(std::span<const SSetting> settings, CEffect& effect) {
    for (const auto& setting : settings) effect.SetParameter(setting.index, setting.value);
}

} // namespace KAV::Host
