// Any state that is written and read back is the same state: 10,000 of them, from one seed.

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "device_gui/fx_button.h"
#include "device_gui/macro_button.h"
#include "tests/support/state_fixture.h"

#include <cmath>
#include <random>

using namespace KAV;
using namespace KAV::Tests;

namespace {

constexpr int States = 10000;

class PatchProperty : public State {
protected:
    std::mt19937 random{20260117};

    std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); }
    float Unit() { return static_cast<float>(random() >> 8) / static_cast<float>(1u << 24); }

    std::u16string Name() {
        static constexpr std::u16string_view letters = u"aZ 09-()&\"'\u00E4\u20AC|*\uFF21;";
        std::u16string name;
        for (std::uint32_t i = Below(12) + 1; i > 0; --i)
            name += letters[Below(static_cast<std::uint32_t>(letters.size()))];
        for (auto place = name.find(u"|*|"); place != std::u16string::npos; place = name.find(u"|*|"))
            name.erase(place, 1); // the separator is no part of a name
        if (name.front() == u'|' || name.front() == u'*' || name.back() == u'|' || name.back() == u'*')
            name = u"n";
        return name;
    }

    std::string RoutingText() {
        std::string map;
        std::string labels;
        for (std::uint32_t i = Below(17) + 1; i > 0; --i) {
            map += (map.empty() ? "" : "|*|") + std::to_string(Below(16)) + "," +
                   std::to_string(static_cast<int>(Below(17)) - 1);
            labels += (labels.empty() ? "" : "|*|") + std::string(1, static_cast<char>('A' + Below(26)));
        }
        static constexpr std::array<const char*, 3> types{
            "", "\t<type>mid/side</type>\r\n", "\t<type>stereo</type>\r\n"};
        return "<kav_input_routing>\r\n\t<kvt_version>1.0</kvt_version>\r\n" + std::string(types[Below(3)]) +
               "\t<name>R" + std::to_string(Below(100)) + "</name>\r\n\t<map>" + map +
               "</map>\r\n\t<ch_names>" + labels + "</ch_names>\r\n</kav_input_routing>";
    }

    /// Every part of the state anew; the current group is the one that is shown throughout.
    void Shuffle() {
        auto& device = Device();
        device.SetCurrentGroup(static_cast<int>(Below(4)));
        device.ClearMacros();
        for (std::size_t macro = 0; macro < 5; ++macro) {
            for (std::uint32_t n = Below(4) == 0 ? Below(80) : Below(4); n > 0; --n)
                device.AssignMacro(macro,
                    static_cast<std::int32_t>(
                        Below(10) == 0 ? 38 + Below(60) : 32 + Below(6) + 100 * Below(4)),
                    static_cast<float>(Below(1001)) / 1000.0f);
        }
        for (int g = 0; g < 4; ++g) Gui().SetRouting(RoutingText(), g);
        for (const auto& [tag, name] : SPlainPatch::Parameters()) {
            if (tag < 17 || (tag > 100 && tag % 100 < 17)) {
                device.SetParam(tag, static_cast<float>(Below(2)), RawBase);
            } else if (tag == 30) {
                device.SetParam(tag, static_cast<float>(Below(4)), RawBase);
            } else {
                effect->Set(HostIndexOf(tag), Below(8) == 0 ? Unit() * 4.0f - 2.0f : Unit());
            }
        }
        // Channels of the current group that its routing lacks are out of it as soon as it is shown.
        Device().State().ApplyRouting();
        device.SetHostBypass(Below(2) == 1);
        device.Simd() = Below(2) == 1;
        device.GroupsParallel() = Below(2) == 1;
        auto& settings = device.AutoGain();
        settings.filter = static_cast<std::uint8_t>(Below(2));
        for (auto* setting : {&settings.suspendLevel, &settings.rmsTime, &settings.tolerance,
                 &settings.maximumGain, &settings.maximumCut})
            *setting = static_cast<double>(Unit() * 2000.0f - 1000.0f);
        const auto width = static_cast<std::int32_t>(500 + Below(2000));
        Device().State().ResizeToWidth(width);
        Device().State().SetPatchName(Name());
        for (auto* const button : Gui().FindAll<CFxBtn>()) button->SetText(Name());
        for (auto* const button : Gui().FindAll<CMacroBtn>()) button->SetText(Name());
    }
};

/// Without the tab that a reader leaves in front of each routing's second line.
std::string WithoutExtraTabs(std::string text) {
    for (auto place = text.find("</fx>\r\n\t\t"); place != std::string::npos;
         place = text.find("</fx>\r\n\t\t", place))
        text.erase(place + 8, 1);
    return text;
}

std::string WithoutExtraTab(std::string document) {
    const std::string doubled = "<kav_input_routing>\r\n\t\t";
    while (document.starts_with(doubled)) document.erase(doubled.size() - 1, 1);
    return document;
}

} // namespace

TEST_F(PatchProperty, ReadingWhatWasWrittenGivesTheSameState) {
    CHostedEffect other(host.Callback());
    CDeviceDSP& copy = other.Device();
    host.record = false;
    for (int state = 0; state < States; ++state) {
        SCOPED_TRACE(state);
        Shuffle();
        const auto text = Device().State().PatchText(HostChunkFlags);
        copy.SetCurrentGroup(Device().GetCurrentGroup());
        ASSERT_TRUE(copy.GUI().ReadPatch(text, HostChunkFlags));
        for (const auto& [tag, name] : SPlainPatch::Parameters()) {
            const float written = Device().GetParam(tag, BaseValue);
            const float read = copy.GetParam(tag, BaseValue);
            ASSERT_LE(std::fabs(written - read), 0.6e-6f) << name;
        }
        for (int g = 0; g < 4; ++g)
            ASSERT_EQ(WithoutExtraTab(copy.GetRouting(g)), WithoutExtraTab(Device().GetRouting(g)));
        for (std::size_t macro = 0; macro < 5; ++macro) {
            std::vector<std::pair<std::int32_t, int>> written;
            std::vector<std::pair<std::int32_t, int>> read;
            for (std::size_t slot = 0; slot < 64; ++slot) {
                const auto thousandths = [&](const CMacro& table) {
                    return static_cast<int>(std::lround(float{table.sensitivities[macro][slot]} * 1000.0f));
                };
                if (Device().tags[macro][slot] != CMacro::NoTag)
                    written.emplace_back(Device().tags[macro][slot], thousandths(Device()));
                if (copy.tags[macro][slot] != CMacro::NoTag)
                    read.emplace_back(copy.tags[macro][slot], thousandths(copy));
            }
            ASSERT_EQ(read, written);
        }
        ASSERT_EQ(WithoutExtraTabs(copy.State().PatchText(HostChunkFlags)), WithoutExtraTabs(text));
    }
}

TEST_F(PatchProperty, EveryCombinationOfFlagsGivesTheBaseValuesBack) {
    CHostedEffect other(host.Callback());
    host.record = false;
    for (std::uint32_t flags = 0; flags < 256; ++flags) {
        if ((flags & EffectiveValues) != 0) continue;
        Shuffle();
        other.Device().SetCurrentGroup(Device().GetCurrentGroup());
        for (int g = 0; g < 4; ++g) other.Device().SetRouting(Device().GetRouting(g), g);
        ASSERT_TRUE(other.Device().GUI().ReadPatch(Device().State().PatchText(flags), flags));
        for (const auto& [tag, name] : SPlainPatch::Parameters()) {
            ASSERT_LE(std::fabs(Device().GetParam(tag, BaseValue) - other.Device().GetParam(tag, BaseValue)),
                0.6e-6f)
                << name << " " << flags;
        }
    }
}
