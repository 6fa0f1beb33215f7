#pragma once

#include "gui/button_mom.h"
#include "gui/knob.h"
#include "gui/led.h"
#include "gui/value_display.h"
#include "tests/gui/recording_root.h"
#include "tests/support/chance.h"
#include "tests/support/own_renderers.h"
#include "tests/support/random_user.h"
#include "tests/support/recording_pictures.h"
#include "tests/support/recording_window.h"
#include "tests/support/toolkit_robot.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string_view>
#include <vector>

namespace KAV::Tests {

/// A root that watches what its widgets tell the device.
class CWatchingRoot final : public CRecordingRoot {
public:
    using CRecordingRoot::CRecordingRoot;

    void SetParameter(std::int32_t id, float normal) override {
        EXPECT_TRUE(normal >= 0.0f && normal <= 1.0f) << id << " = " << normal;
    }
    void BeginEdit(std::int32_t id) override {
        EXPECT_GE(id, 0);
        ++editsBegun;
        EXPECT_TRUE(edits.insert(id).second) << id << " is being edited already";
    }
    void EndEdit(std::int32_t id) override { EXPECT_EQ(edits.erase(id), 1u) << id << " is not being edited"; }

    std::set<std::int32_t> edits; ///< that have begun and not ended
    std::size_t editsBegun = 0;
};

/// An editor full of widgets that chance has made, whose window and renderer are doubles.
class CRandomEditor final : public CChance {
public:
    explicit CRandomEditor(const CChance& chance, std::uint32_t count = 25) : CChance(chance) {
        pictures.stored = {
            {u"Plain.png", {40, 30}}, {u"Strip((5)).png", {20, 100}}, {u"Grid((7x3)).png", {60, 60}}};
        root.EnableHistory(true);
        for (; count > 0; --count) AddWidget();
        Open();
    }

    GUI::CWidget& AnyWidget() { return *OneOf(widgets); }

    void Open() {
        if (window.Exists()) return;
        root.CreateGUIWindow();
        root.Screen().Create();
        root.Show(true);
    }
    void AddWidget() {
        auto info = Info();
        switch (Below(9)) {
        case 0:
            info.fValue = static_cast<float>(Below(2));
            info.nRadioGroup = OneIn(2) ? 1 : -1;
            widgets.push_back(std::make_unique<GUI::CButton>(root, info));
            break;
        case 1:
            widgets.push_back(std::make_unique<GUI::CButtonMom>(root, info));
            break;
        case 2:
        case 3:
        case 4:
            widgets.push_back(std::make_unique<GUI::CValueDisplay>(root, info));
            break;
        case 5:
            if (OneIn(2)) {
                widgets.push_back(std::make_unique<GUI::CMeter>(root, info));
            } else {
                widgets.push_back(std::make_unique<GUI::CLED>(root, info));
            }
            break;
        case 6:
            widgets.push_back(std::make_unique<GUI::CLabel>(root, info));
            break;
        default:
            widgets.push_back(std::make_unique<GUI::CKnob>(root, info));
        }
    }
    void RemoveWidget() {
        if (widgets.size() > 1)
            widgets.erase(widgets.begin() + Between(0, static_cast<std::int32_t>(widgets.size()) - 1));
    }
    std::vector<float> Values() const {
        std::vector<float> values;
        for (const auto* const widget : root.FindAll<GUI::CValueWidget>()) values.push_back(widget->Value());
        return values;
    }

    COwnRenderers renderers;
    CRecordingWindow window;
    CRecordingPictures pictures;
    CWatchingRoot root{{&window, &pictures}};
    CToolkitRobot robot{window};
    CRandomUser user{*this, robot, window, root};
    std::vector<std::unique_ptr<GUI::CWidget>> widgets; // its own, in the order of the list

private:
    /// A parameter that no widget has, or none.
    std::int32_t FreeId() {
        const std::int32_t id = Between(-3, 40);
        const bool isTaken = std::any_of(
            widgets.begin(), widgets.end(), [id](const auto& widget) { return widget->nId == id; });
        return isTaken ? -1 : id;
    }
    /// Places, sizes and values that no panel has, and that must break nothing all the same.
    void MakeAbsurd(GUI::SWidgetInfo& info) {
        for (float* const number : {&info.fX, &info.fY, &info.fW, &info.fH, &info.fHotL, &info.fHotR,
                 &info.fHotT, &info.fHotB, &info.fHintAt, &info.fValue, &info.fDefault}) {
            if (OneIn(4)) *number = AnyFloat();
        }
        if (OneIn(4)) info.nAnchor = AnyNumber();
    }
    GUI::SWidgetInfo Info() {
        GUI::SWidgetInfo info;
        info.nId = FreeId();
        info.nGroups = Below(4);
        const bool fractions = OneIn(3);
        info.fX = fractions ? Share() : static_cast<float>(Between(-50, 780));
        info.fY = fractions ? Share() : static_cast<float>(Between(-50, 580));
        info.fW = OneIn(6) ? 0.0f : fractions ? Share() / 3 : static_cast<float>(Between(5, 250));
        info.fH = info.fW == 0.0f ? 0.0f : OneIn(6) ? -0.1f : static_cast<float>(Between(5, 250));
        info.fHotL = OneIn(4) ? 3.0f : 0.0f;
        info.nMrgL = OneIn(5) ? 4 : 0;
        info.fFontSize = OneIn(2) ? 10.0f : -0.35f;
        constexpr std::array<std::u16string_view, 5> Images{
            u"", u"Plain.png", u"Strip((5)).png", u"Grid((7x3)).png", u"None.png"};
        info.sImage = OneOf(Images);
        constexpr std::array<std::u16string_view, 3> Names{
            u"", u"Gain", u"A name of more length than others"};
        info.sName = OneOf(Names);
        constexpr std::array<std::u16string_view, 5> Lists{
            u"", u"", u"one", u"a||b||c", u"Big_1||Big_2-sep-||Small||Big_3"};
        info.sList = OneOf(Lists);
        info.bVisible = !OneIn(5);
        info.bInteractive = !OneIn(4);
        info.bPassive = OneIn(6);
        info.bHint = !OneIn(4);
        info.bShadow = OneIn(5);
        info.bTextShadow = OneIn(5);
        info.bFit = OneIn(3);
        info.fHintAt = OneIn(2) ? 0.0f : Share() - 0.5f;
        info.fValue = Share();
        info.fDefault = Share();
        info.fMin = -20.0f;
        info.fMax = OneIn(2) ? 0.0f : 20.0f;
        info.fValueRiseMs = info.fValueFallMs = OneIn(2) ? 0.0f : 250.0f;
        info.nVisibleRiseMs = info.nVisibleFallMs = OneIn(2) ? 0 : 250;
        info.nShadowBlur = static_cast<std::uint8_t>(Below(3));
        info.nAnchor = OneIn(4) ? Below(10) : 0;
        if (OneIn(20)) MakeAbsurd(info);
        return info;
    }
};

} // namespace KAV::Tests
