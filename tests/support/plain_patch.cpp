#include "tests/support/plain_patch.h"

#include <cstdio>

namespace KAV::Tests {

namespace {

std::string Fixed(double value, int decimals) {
    std::array<char, 64> text{};
    std::snprintf(
        text.data(), text.size(), "%.*f", decimals, value); // the tests of this file run in the C locale
    return text.data();
}

std::string Line(const std::string& name, const std::string& value) {
    return "<" + name + ">" + value + "</" + name + ">\r\n";
}

template<typename TNames>
std::string Joined(const TNames& names) {
    std::string text;
    for (const auto& name : names) text += (text.empty() ? "" : "|*|") + name;
    return text;
}

std::string RoutingLines(std::string document, int group) {
    const std::string opening = "<kav_input_routing>";
    const auto line = opening + "\r\n\t<fx>" + std::to_string(group) + "</fx>";
    for (auto place = document.find(opening); place != std::string::npos;
         place = document.find(opening, place + line.size()))
        document.replace(place, opening.size(), line);
    return document + "\r\n";
}

} // namespace

std::string PlainDefaultRouting() {
    return "<kav_input_routing>\r\n\t<kvt_version>1.0</kvt_version>\r\n\t<name>Not found</name>\r\n"
           "\t<map>0,-1|*|1,-1</map>\r\n\t<ch_names>L|*|R</ch_names>\r\n</kav_input_routing>";
}

const std::vector<std::pair<std::int32_t, std::string>>& SPlainPatch::Parameters() {
    static const auto parameters = [] {
        std::vector<std::pair<std::int32_t, std::string>> list;
        const auto addGroups = [&list](std::int32_t tag, const std::string& text) {
            for (int g = 0; g < 4; ++g)
                list.emplace_back(tag + 100 * g, text + " (" + std::to_string(g + 1) + ")");
        };
        addGroups(32, "Input Gain");
        addGroups(33, "Threshold");
        addGroups(35, "Auto Release");
        addGroups(34, "Limiter");
        addGroups(36, "Release");
        addGroups(37, "Output Ceiling");
        for (int n = 1; n <= 16; ++n) addGroups(n, "ToolCh" + std::to_string(n));
        for (int g = 0; g < 4; ++g) list.emplace_back(17 + g, "ToolBtnFx" + std::to_string(g + 1));
        addGroups(21, "ToolFxSolo");
        addGroups(22, "ToolFxMute");
        list.emplace_back(30, "Oversampling");
        list.emplace_back(31, "Hiqh Quality");
        list.emplace_back(29, "Main Output Gain");
        list.emplace_back(23, "Main Input Gain");
        for (int m = 0; m < 5; ++m) list.emplace_back(24 + m, "Macro " + std::to_string(m + 1));
        return list;
    }();
    return parameters;
}

SPlainPatch::SPlainPatch() {
    for (const auto& [tag, parameter] : Parameters()) {
        const int relative = tag % 100;
        const bool isFull = relative == 32 || relative == 33 || relative == 34 || relative == 37;
        const bool isMiddle = relative >= 23 && relative <= 29;
        values[tag] = isFull ? 1.0 : relative == 36 ? 0.4 : isMiddle ? 0.5 : 0.0;
    }
    values[1] = values[2] = values[17] = 1.0;
    routings.fill(PlainDefaultRouting());
}

std::string SPlainPatch::Text(std::uint32_t flags) const {
    std::string text = Line("patch_format", "textual") + Line("patch_version", "1") +
                       Line("app_title", title) + Line("app_version", "1.0.1.0") +
                       Line("plugin_id", "1936683628") + Line("patch_name", name) + Line("multi_fx", "true");
    if ((flags & 1u) != 0) text += Line("fx_names", Joined(groupNames));
    for (const auto& [tag, parameter] : Parameters()) {
        text += "<param tag=\"" + std::to_string(tag) + "\" namew=\"" + parameter + "\" >" +
                Fixed(values.at(tag), 6) + "</param>\r\n";
    }
    text += Line("host_bypass", std::to_string(hostBypass));
    if ((flags & 2u) != 0) {
        for (int g = 0; g < 4; ++g) text += RoutingLines(routings[static_cast<std::size_t>(g)], g);
    }
    if ((flags & 4u) != 0) text += Line("gui_width", std::to_string(width));
    if ((flags & 8u) != 0) text += Line("simd", std::to_string(simd));
    if ((flags & 128u) != 0) text += Line("groups_parallel", std::to_string(parallel));
    if ((flags & 16u) != 0) {
        text += Line("agc_filter", std::to_string(filter)) + Line("agc_suspend", Fixed(suspend, 3)) +
                Line("agc_rms", Fixed(rms, 3)) + Line("agc_tolerance", Fixed(tolerance, 3)) +
                Line("agc_gain_max", Fixed(gainMax, 3)) + Line("agc_gain_min", Fixed(gainMin, 3));
    }
    text += Line("macro_group_names", Joined(macroNames));
    for (std::size_t m = 0; m < macros.size(); ++m) {
        std::string targets;
        for (const auto& [tag, sensitivity] : macros[m])
            targets += (targets.empty() ? "" : "||") + std::to_string(tag) + ";" + Fixed(sensitivity, 3);
        text += "<macro group=\"" + std::to_string(m) + "\">" + targets + "</macro>\r\n";
    }
    return text;
}

} // namespace KAV::Tests
