// Whatever the user does, undone wholly and redone wholly, step by step, gives the same states again.

#include "device/value_flags.h"
#include "device_gui/channel_button.h"
#include "device_gui/fx_button.h"
#include "gui/value_display.h"
#include "tests/support/state_fixture.h"

#include <random>

using namespace KAV;
using namespace KAV::Tests;

namespace {

constexpr int Sessions = 40;
constexpr int Actions = 30;

class HistoryProperty : public State {
protected:
    std::mt19937 random{20260301};
    std::unique_ptr<GUI::CValueDisplay> threshold;
    std::unique_ptr<GUI::CValueDisplay> macro;
    std::uint8_t side = 1;

    std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); }
    /// Six decimals hold these exactly, as a patch does.
    float Sixtyfourth() { return static_cast<float>(Below(65)) / 64.0f; }

    std::unique_ptr<GUI::CValueDisplay> Fader(std::int32_t id) {
        GUI::SWidgetInfo info;
        info.nId = id;
        return std::make_unique<GUI::CValueDisplay>(Gui(), info);
    }

    /// The group that a patch has on is shown by the first frame, and its channels by the second: their
    /// buttons come before those of the groups.
    void Settle() {
        Gui().OnFrame(16);
        Gui().OnFrame(16);
    }

    /// A new instance of a user with three patches, and sixteen channels in each group's routing: no channel
    /// leaves a group with its routing, which isn't part of a step.
    void Begin() {
        threshold.reset();
        macro.reset();
        Renew();
        host.record = false;
        side = 1;
        std::string map = "0,-1";
        for (int n = 1; n < 16; ++n) map += "|*|" + std::to_string(n) + ",-1";
        for (int g = 0; g < 4; ++g)
            Gui().SetRouting("<kav_input_routing>\r\n\t<map>" + map + "</map>\r\n</kav_input_routing>", g);
        threshold = Fader(33);
        macro = Fader(25);
        Settle();
        Gui().EnableHistory(true);
    }

    /// A patch of all groups. Its macros move releases alone, so that the fader shows its base.
    std::string AnyPatch() {
        SPlainPatch patch;
        patch.name = "Patch " + std::to_string(Below(1000));
        for (auto& [tag, value] : patch.values) {
            const int relative = tag % 100;
            const bool isContinuous = (relative >= 23 && relative <= 29) || relative == 32 ||
                                      relative == 33 || relative == 36 || relative == 37;
            value = isContinuous ? static_cast<double>(Sixtyfourth()) : Below(tag == 30 ? 4 : 2);
        }
        const auto group = static_cast<std::int32_t>(Below(4));
        for (std::int32_t g = 0; g < 4; ++g) patch.values[17 + g] = g == group ? 1.0 : 0.0;
        for (auto& targets : patch.macros) {
            for (std::uint32_t n = Below(3); n > 0; --n)
                targets.emplace_back(
                    36 + 100 * static_cast<std::int32_t>(n), static_cast<double>(Sixtyfourth()));
        }
        patch.hostBypass = static_cast<int>(Below(2));
        patch.macroNames[Below(5)] = "Name " + std::to_string(Below(10));
        return patch.Text(0);
    }

    void Act() {
        switch (Below(11)) {
        case 0:
            Gui().ReadPatch(AnyPatch(), 0);
            break;
        case 1:
            Read("<patch_name>Small</patch_name>\r\n<param tag=\"33\" >" + std::to_string(Sixtyfourth()) +
                 "</param>");
            break;
        case 2:
            Widget<GUI::CValueDisplay>(2).Step(Below(2) == 0 ? 1 : -1); // oversampling
            break;
        case 3:
            Gui().SelectPatch(static_cast<std::int32_t>(Below(3)), false);
            break;
        case 4:
            for (std::uint32_t steps = Below(3) + 1, n = 0; n < steps; ++n)
                threshold->SetValue(Sixtyfourth(), n == 0); // a drag
            break;
        case 5:
            macro->SetValue(Sixtyfourth(), true);
            break;
        case 6: {
            auto& channel = Widget<CChannelBtn>(Below(16));
            channel.SetValue(1.0f - channel.Value(), true);
            break;
        }
        case 7: // copies the shown group to another
            Widget<CFxBtnCopy>().SetValue(1.0f, true);
            Widget<CFxBtn>((static_cast<std::uint32_t>(Device().GetCurrentGroup()) + 1 + Below(3)) % 4)
                .SetValue(1.0f, true);
            break;
        case 8:
            Widget<CFxBtn>(Below(4)).SetValue(1.0f, true);
            break;
        case 9:
            Device().State().SwitchAB(side ^= 1);
            break;
        default:
            Device().State().CopyAB();
        }
        Settle();
    }

    /// All that steps of history hold, and what the editor shows of it.
    std::string Present() {
        auto text =
            Device().State().PatchText(0) + "group " + std::to_string(Device().GetCurrentGroup()) + "\r\n";
        const auto add = [&text](const auto& widget) { text += std::to_string(widget.Value()) + " "; };
        for (std::size_t n = 0; n < 16; ++n) add(Widget<CChannelBtn>(n));
        for (std::size_t g = 0; g < 4; ++g) add(Widget<CFxBtn>(g));
        add(Widget<GUI::CValueDisplay>(2));
        add(*threshold);
        add(*macro);
        return text;
    }
};

} // namespace

TEST_F(HistoryProperty, AllStepsUndoneAndRedoneGiveTheSameStates) {
    for (const char* const name : {"a", "b", "c"}) {
        WriteText(documents.Patch(std::string(name) + ".kvp"),
            "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</plugin_id>\r\n<patch_name></"
            "patch_name>\r\n<param tag=\"33\" >0." +
                std::to_string(name[0] - 'a' + 1) + "25</param>\r\n");
    }
    for (int session = 0; session < Sessions; ++session) {
        SCOPED_TRACE(session);
        Begin();
        const auto first = Present();
        for (int n = 0; n < Actions; ++n) Act();
        const auto last = Present();
        ASSERT_GE(Gui().Records(), static_cast<std::size_t>(Actions) / 3);
        std::vector<std::string> states{last};
        while (Gui().CanUndo()) {
            Gui().Undo();
            Settle();
            states.push_back(Present());
        }
        EXPECT_EQ(states.size(), Gui().Records() + 1);
        ASSERT_EQ(states.back(), first);
        for (auto state = states.rbegin() + 1; state != states.rend(); ++state) {
            ASSERT_TRUE(Gui().CanRedo());
            Gui().Redo();
            Settle();
            ASSERT_EQ(Present(), *state);
        }
        EXPECT_FALSE(Gui().CanRedo());
        for (const auto& state : states) {
            ASSERT_EQ(Present(), state);
            Gui().Undo();
            Settle();
        }
    }
}
