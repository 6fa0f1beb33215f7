// The widgets of the panel against its table, row by row.

#include "device_gui/channel_button.h"
#include "device_gui/fx_button.h"
#include "device_gui/macro_button.h"
#include "device_gui/new_version_led.h"
#include "device_gui/patch_display.h"
#include "device_gui/routing_display.h"
#include "device_gui/row_info.h"
#include "gui/knob.h"
#include "panel/layout.h"
#include "tests/support/state_fixture.h"
#include "utils/text.h"

#include <cmath>
#include <limits>
#include <map>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class PanelWidgets : public State {
protected:
    static constexpr std::size_t RootsOwn = 3; // the box, the hint and the light lie below the rows

    GUI::CWidget& WidgetOf(std::size_t row) { return *Gui().AllWidgets().at(RootsOwn + row); }
    /// The first widget of this name.
    GUI::CWidget& Named(std::u16string_view name) {
        for (auto* const widget : Gui().AllWidgets()) {
            if (widget->Name() == name) return *widget;
        }
        throw std::out_of_range(Utils::ToUtf8(name));
    }
};

/// Calls `check` for each row with its widget as what the row should be; a widget of another class fails.
template<typename TWidget, typename TCheck>
void ForEachOf(CXXXGUI& gui, Panel::EClass rowClass, std::size_t count, TCheck check) {
    std::size_t found = 0;
    for (std::size_t n = 0; n < Panel::Rows().size(); ++n) {
        const auto& row = Panel::Rows()[n];
        if (row.widget != rowClass) continue;
        auto* const widget = dynamic_cast<TWidget*>(gui.AllWidgets().at(3 + n));
        ASSERT_NE(widget, nullptr) << row.name;
        check(*widget, row);
        ++found;
    }
    EXPECT_EQ(found, count);
}

int Rounded(double value) {
    return static_cast<int>(std::lround(value));
}

} // namespace

TEST_F(PanelWidgets, StandInTheOrderOfTheTableAboveTheRootsOwn) {
    const auto& all = Gui().AllWidgets();
    const auto rows = Panel::Rows();
    ASSERT_EQ(all.size(), RootsOwn + rows.size());
    EXPECT_EQ(all[0], &Gui().Edit());
    EXPECT_EQ(all[1], &Gui().Hint());
    EXPECT_EQ(all[2]->Name(), u"Light");
    for (std::size_t n = 0; n < rows.size(); ++n) {
        EXPECT_EQ(Utils::ToUtf8(WidgetOf(n).Name()), rows[n].name) << n;
        EXPECT_EQ(WidgetOf(n).Id(), rows[n].id) << rows[n].name;
    }
}

TEST_F(PanelWidgets, LieWhereTheirRowsSay) {
    const auto rows = Panel::Rows();
    for (std::size_t n = 0; n < rows.size(); ++n) {
        const auto& rect = rows[n].rect;
        const GUI::SPixelRect expected{Rounded(rect.x), Rounded(rect.y), Rounded(rect.w), Rounded(rect.h)};
        EXPECT_EQ(WidgetOf(n).PixelRect(), expected) << rows[n].name;
    }
}

TEST_F(PanelWidgets, MoveAndGrowWithTheEditor) {
    const auto rows = Panel::Rows();
    for (const std::int32_t width : {500, 1508, 1131}) {
        Device().State().ResizeToWidth(width);
        const double height = Gui().Height();
        for (std::size_t n = 0; n < rows.size(); ++n) {
            const auto rect = WidgetOf(n).PixelRect();
            EXPECT_NEAR(rect.nL, rows[n].rect.x * width / Panel::PanelWidth, 0.51) << rows[n].name;
            EXPECT_NEAR(rect.nT, rows[n].rect.y * height / Panel::PanelHeight, 0.51) << rows[n].name;
            EXPECT_NEAR(rect.nW, rows[n].rect.w * width / Panel::PanelWidth, 0.51) << rows[n].name;
            EXPECT_NEAR(rect.nH, rows[n].rect.h * height / Panel::PanelHeight, 0.51) << rows[n].name;
        }
    }
}

TEST_F(PanelWidgets, HaveThePictureOfTheirRow) {
    std::size_t pictures = 0;
    for (std::size_t n = 0; n < Panel::Rows().size(); ++n) {
        const auto& row = Panel::Rows()[n];
        EXPECT_EQ(Utils::ToUtf8(WidgetOf(n).sImage), row.sprite == nullptr ? "" : row.sprite->image)
            << row.name;
        pictures += row.sprite != nullptr ? 1 : 0;
    }
    EXPECT_GT(pictures, 100u);
}

TEST_F(PanelWidgets, AreHiddenWhereTheRowOrTheRoutingSaysSo) {
    for (std::size_t n = 0; n < Panel::Rows().size(); ++n) {
        const auto& row = Panel::Rows()[n];
        const bool hasEntry = row.widget != Panel::EClass::ChannelBtn || row.id <= 2; // of a new instance
        EXPECT_EQ(WidgetOf(n).IsVisible(), row.visible && hasEntry) << row.name;
    }
    for (const auto* const name : {u"ToolFxSolo", u"ToolFxMute", u"Macro 1/1", u"UpdateLed"})
        EXPECT_FALSE(Named(name).IsVisible()) << Utils::ToUtf8(name);
}

TEST_F(PanelWidgets, HaveTheHintsAndFadesOfTheirRows) {
    for (std::size_t n = 0; n < Panel::Rows().size(); ++n) {
        const auto& row = Panel::Rows()[n];
        const auto& widget = WidgetOf(n);
        EXPECT_EQ(widget.fHintAt, static_cast<float>(row.hintAt)) << row.name;
        EXPECT_EQ(widget.sVisible.nRiseMs, static_cast<std::uint32_t>(row.fadeMs)) << row.name;
        EXPECT_EQ(widget.sVisible.nFallMs, static_cast<std::uint32_t>(row.fadeMs)) << row.name;
    }
    EXPECT_EQ(Named(u"Main Input Gain").fHintAt, -0.3f);
    EXPECT_EQ(Named(u"Threshold").fHintAt, -0.1f);
    EXPECT_EQ(Named(u"Macro 1/1").fHintAt, -0.4f);
    EXPECT_EQ(Named(u"Size").sVisible.nRiseMs, 250u);
    EXPECT_EQ(Named(u"ToolMeterCh16").sVisible.nFallMs, 250u);
    EXPECT_EQ(Named(u"ToolMeterFx1").sVisible.nFallMs, 0u);
}

TEST_F(PanelWidgets, HaveTheValuesOfTheirRows) {
    std::size_t values = 0;
    for (std::size_t n = 0; n < Panel::Rows().size(); ++n) {
        const auto& row = Panel::Rows()[n];
        const auto* const value = dynamic_cast<GUI::CValueWidget*>(&WidgetOf(n));
        if (value == nullptr) continue;
        ++values;
        EXPECT_EQ(value->fMin, static_cast<float>(row.minimum)) << row.name;
        EXPECT_EQ(value->fMax, static_cast<float>(row.maximum)) << row.name;
        EXPECT_EQ(Utils::ToUtf8(value->sUnit), row.unit) << row.name;
        EXPECT_EQ(value->nDecimals, 1) << row.name;
        EXPECT_EQ(value->sValue.nRiseMs, static_cast<std::uint32_t>(row.riseMs)) << row.name;
        EXPECT_EQ(value->sValue.nFallMs, static_cast<std::uint32_t>(row.fallMs)) << row.name;
        if (row.widget == Panel::EClass::Patch || row.widget == Panel::EClass::Routing) continue;
        EXPECT_EQ(value->Value(), static_cast<float>(row.value)) << row.name;
    }
    EXPECT_EQ(values, Panel::Rows().size() - 5) << "all but bands, the mark of the size and the curve";
}

TEST_F(PanelWidgets, HaveTheTextsOfTheirRows) {
    std::size_t labels = 0;
    for (std::size_t n = 0; n < Panel::Rows().size(); ++n) {
        const auto& row = Panel::Rows()[n];
        const auto* const label = dynamic_cast<GUI::CLabel*>(&WidgetOf(n));
        if (label == nullptr) continue;
        ++labels;
        EXPECT_EQ(label->fFontSize, static_cast<float>(row.textSize)) << row.name;
        EXPECT_EQ(label->nTextColor, row.textColour) << row.name;
        EXPECT_EQ(label->sFont, u"Tahoma") << row.name;
        // Patch and routing show their names.
        if (row.widget == Panel::EClass::Patch || row.widget == Panel::EClass::Routing) continue;
        EXPECT_EQ(Utils::ToUtf8(label->Text()), row.text) << row.name;
    }
    EXPECT_EQ(labels, Panel::Rows().size() - 5);
}

TEST_F(PanelWidgets, AreOfTheClassesThatTheirRowsName) {
    using Panel::EClass;
    const auto nothing = [](const auto&, const auto&) {};
    ForEachOf<GUI::CMeter>(Gui(), EClass::Meter, 52, nothing);
    ForEachOf<GUI::CKnob>(Gui(), EClass::Knob, 6, [](const GUI::CKnob& knob, const Panel::SPanelRow& row) {
        EXPECT_EQ(knob.fDefault, static_cast<float>(row.value)) << row.name;
        EXPECT_TRUE(knob.bInteractive) << row.name;
    });
    ForEachOf<GUI::CKnob>(Gui(), EClass::MacroKnob, 5, nothing);
    ForEachOf<GUI::CKnob>(Gui(), EClass::Release, 1, nothing);
    ForEachOf<GUI::CButton>(Gui(), EClass::Button, 4, nothing);
    ForEachOf<GUI::CButton>(Gui(), EClass::AutoRelease, 1, nothing);
    ForEachOf<GUI::CButton>(Gui(), EClass::RoutingEdit, 1, nothing);
    ForEachOf<CRouting>(Gui(), EClass::Routing, 1, nothing);
    ForEachOf<CChannelBtn>(Gui(), EClass::ChannelBtn, 16, nothing);
    ForEachOf<CFxBtn>(Gui(), EClass::FxBtn, 4, [](const CFxBtn& button, const Panel::SPanelRow& row) {
        EXPECT_EQ(button.Group(), row.id - 17);
        EXPECT_EQ(button.nRadioGroup, 1);
    });
    ForEachOf<CFxBtnCopy>(Gui(), EClass::FxBtnCopy, 1, nothing);
    ForEachOf<CPatch>(Gui(), EClass::Patch, 1, nothing);
    ForEachOf<CMacroBtn>(Gui(), EClass::MacroBtn, 5, nothing);
    ForEachOf<CNewVersionLED>(Gui(), EClass::NewVersionLED, 1, nothing);
    ForEachOf<GUI::CValueDisplay>(Gui(), EClass::Oversampling, 1,
        [](const GUI::CValueDisplay& display, const auto&) { EXPECT_EQ(display.ItemCount(), 4); });
    ForEachOf<GUI::CValueDisplay>(Gui(), EClass::Settings, 1, nothing);
    for (const auto key : {EClass::RoutingDropDownBtn, EClass::PatchLoad, EClass::PatchSave, EClass::Undo,
             EClass::Redo, EClass::PatchABCopy, EClass::PatchABInplace, EClass::PreviousPatch,
             EClass::NextPatch, EClass::PreviousOversampling, EClass::NextOversampling, EClass::BtnAbout})
        ForEachOf<GUI::CButtonMom>(Gui(), key, 1, nothing);
}

TEST_F(PanelWidgets, ShowTheValuesOfTheDevice) {
    effect->Set(4, 0.25f); // threshold of group 1
    effect->Set(12, 0.0f); // its limiter
    Gui().OnFrame(16);
    EXPECT_EQ(dynamic_cast<GUI::CKnob&>(Named(u"Threshold")).Value(), 0.25f);
    EXPECT_EQ(dynamic_cast<GUI::CButton&>(Named(u"Limiter")).Value(), 0.0f);
}

TEST_F(PanelWidgets, MetersMoveWithTheSound) {
    std::vector<std::vector<float>> sound(2, std::vector<float>(512, 0.5f));
    effect->Dispatch(VST::effSetBlockSize, 0, 512);
    effect->Process(sound);
    Gui().OnFrame(16);
    for (const auto* const name :
        {u"ToolMeterCh1", u"ToolMeterCh2", u"ToolMeterFx1", u"Input Meter 1", u"Output Meter 2"}) {
        auto& meter = dynamic_cast<GUI::CMeter&>(Named(name));
        EXPECT_GT(meter.Value(), 0.0f) << Utils::ToUtf8(name);
        EXPECT_EQ(meter.Value(), Device().GetParam(meter.Id(), 0)) << Utils::ToUtf8(name);
    }
    EXPECT_EQ(dynamic_cast<GUI::CMeter&>(Named(u"ToolMeterCh3")).Value(), 0.0f);
}
