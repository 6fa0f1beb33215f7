// Writes as JSON what the user guide says of the panel, the latency and the menu of the settings.
//     kav_guide_facts FILE

#include "device_gui/editor_system.h"
#include "device_gui/settings.h"
#include "dsp/lookahead_limiter.h"
#include "panel/layout.h"
#include "plugin/device_dsp.h"
#include "utils/cpu_features.h"
#include "utils/path.h"
#include "utils/product.h"
#include "utils/text.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

namespace {

using namespace KAV;
using Json = nlohmann::ordered_json;

/// Whether a user can do something with such a widget; the others show something, or nothing.
bool IsControl(const Panel::SPanelRow& row) {
    using enum Panel::EClass;
    switch (row.widget) {
    case Widget:
    case Meter:
    case ToolbarTop:
    case NewVersionLED:
    case GR:
    case Hint:
    case Light:
        return row.name == "Size"; // the mark at the edge that is dragged
    default:
        return row.visible;
    }
}

Json PanelFacts() {
    Json rows = Json::array();
    for (const auto& row : Panel::Rows()) {
        rows.push_back({{"id", row.id}, {"name", row.name}, {"control", IsControl(row)},
            {"visible", row.visible}, {"rect", {row.rect.x, row.rect.y, row.rect.w, row.rect.h}}});
    }
    return {{"width", Panel::PanelWidth}, {"height", Panel::PanelHeight}, {"rows", rows}};
}

Json LookaheadFacts() {
    Json rows = Json::array();
    for (const int rate : {44100, 48000, 88200, 96000, 176400, 192000}) {
        Json samples = Json::array();
        for (const int factor : {1, 2, 4, 8}) samples.push_back(DSP::LookaheadLength(rate * factor));
        rows.push_back({{"rate", rate}, {"samples", samples}});
    }
    return rows;
}

Json MenuFacts(const GUI::Menu& menu) {
    Json entries = Json::array();
    for (const auto& item : menu) {
        if (item.bSeparator) continue;
        entries.push_back({{"text", Utils::ToUtf8(item.sText)}, {"entries", MenuFacts(item.vsSub)}});
    }
    return entries;
}

/// The menu of an instance whose user has no files and whose processor has all that the engine can use.
Json SettingsFacts() {
    Utils::UseDocumentsFolder(u"/no such folder/");
    CDeviceDSP device(nullptr, {}, std::make_unique<IEditorSystem>());
    const auto* const settings = device.GUI().Find<CSettings>();
    return MenuFacts(settings->MenuFor(Utils::CpuFma | Utils::CpuSse2 | Utils::CpuAvx));
}

} // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        std::cerr << "usage: kav_guide_facts FILE\n";
        return 2;
    }
    const Json facts{{"product", KAV_PRODUCT}, {"vendor", KAV_VENDOR}, {"version", Utils::ProductVersionUtf8},
        {"panel", PanelFacts()}, {"lookahead", LookaheadFacts()}, {"settings", SettingsFacts()}};
    std::ofstream file(argv[1], std::ios::binary);
    file << facts.dump(1) << '\n';
    file.close();
    if (!file) {
        std::cerr << "kav_guide_facts: cannot write " << argv[1] << '\n';
        return 1;
    }
    return 0;
} catch (const std::exception& error) {
    std::cerr << "kav_guide_facts: " << error.what() << '\n';
    return 1;
}
