// Meters and lamps: what they show.

#include "gui/meter.h"

#include "gui/led.h"
#include "tests/gui/doubled_editor.h"

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

/// Notes when its hook runs, as "hook 0.500".
template<typename TMeter>
class CHooked final : public TMeter {
public:
    CHooked(CRecordingRoot& root, const SWidgetInfo& info) : TMeter(root, info), _root(root) {}
    void OnValueChanged(float normal, std::int32_t) override {
        _root.told.push_back("hook " + Utils::FormatFixed(static_cast<double>(normal), 3));
    }

private:
    CRecordingRoot& _root;
};

class Meter : public DoubledEditor {
protected:
    void SetUp() override {
        DoubledEditor::SetUp();
        pictures.stored[u"Grid((5x2)).png"] = {80, 60}; // 2 columns, 3 rows
        pictures.stored[u"Lamp((2)).png"] = {40, 40};
        pictures.stored[u"Plain.png"] = {40, 20};
    }
    static SWidgetInfo Picture(const char16_t* image, float value) {
        auto info = Info(-4, value);
        info.sImage = image;
        return info;
    }
};

using Led = Meter;

} // namespace

TEST_F(Meter, ItsHookRunsBeforeTheDeviceHears) {
    CHooked<CMeter> meter(root, Info(7));
    EXPECT_TRUE(meter.SetValue(0.5f, false));
    EXPECT_EQ(Told(), (Lines{"hook 0.500", "7 = 0.500"}));
    EXPECT_FALSE(meter.SetValue(0.5f, false));
    EXPECT_TRUE(Told().empty());
}

TEST_F(Meter, TakesTheDevicesValueWhateverItsId) {
    for (const std::int32_t id : {-56, -1, 0, 7}) {
        CMeter meter(root, Info(id));
        meter.SetFromHost(0.25f);
        EXPECT_EQ(meter.Value(), 0.25f) << id;
        EXPECT_FALSE(meter.bFromHost);
    }
    EXPECT_TRUE(Told().empty());
}

TEST_F(Meter, HasNoHistory) {
    CMeter meter(root, Info(7));
    meter.SetValue(0.5f, true);
    EXPECT_EQ(root.Records(), 0u);
}

TEST_F(Meter, AsksForARedrawWhenItsValueChanges) {
    CMeter meter(root, Info(-4));
    Redraw();
    meter.SetFromHost(0.0f);
    EXPECT_FALSE(IsRedrawDue());
    meter.SetFromHost(0.5f);
    EXPECT_TRUE(IsRedrawDue());
}

TEST_F(Meter, MovesToItsValueInTheTimeOfItsRecord) {
    auto info = Info(-4);
    info.fValueRiseMs = 100.9f;
    info.fValueFallMs = 50.0f;
    CMeter meter(root, info);
    meter.SetFromHost(1.0f);
    EXPECT_EQ(meter.Value(), 1.0f);
    EXPECT_EQ(meter.GetDrawValue(), 0.0f);
    Redraw();
    meter.Tick(25);
    EXPECT_TRUE(IsRedrawDue());
    EXPECT_EQ(meter.GetDrawValue(), 0.25f);
    meter.Tick(75);
    EXPECT_EQ(meter.GetDrawValue(), 1.0f);
    meter.SetFromHost(0.0f);
    meter.Tick(25);
    EXPECT_EQ(meter.GetDrawValue(), 0.5f);
    meter.Tick(25);
    Redraw();
    meter.Tick(25);
    EXPECT_FALSE(IsRedrawDue());
}

// Cells of 0.5 by a third, row by row.
TEST_F(Meter, ChoosesTheFrameNearestToTheValue) {
    CMeter meter(root, Picture(u"Grid((5x2)).png", 0.0f));
    meter.nMrgL = 0;
    const auto frameAt = [&](float value) {
        meter.sValue.Jump(value);
        const auto draws = Draws(meter);
        return draws.size() == 1 ? draws[0].substr(draws[0].find("from")) : "";
    };
    EXPECT_EQ(frameAt(0.0f), "from 0..0.5,0..0.333333");
    EXPECT_EQ(frameAt(0.12f), "from 0..0.5,0..0.333333");
    EXPECT_EQ(frameAt(0.13f), "from 0.5..1,0..0.333333");
    EXPECT_EQ(frameAt(0.5f), "from 0..0.5,0.333333..0.666667");
    EXPECT_EQ(frameAt(1.0f), "from 0..0.5,0.666667..1");
}

TEST_F(Meter, SoaksThroughFiveValues) {
    CHooked<CMeter> meter(root, Info(7));
    const auto begin = Utils::TickMs();
    meter.SoakTest();
    EXPECT_EQ(Utils::TickMs() - begin, 500u);
    EXPECT_EQ(Told(), (Lines{"hook 1.000", "7 = 1.000", "hook 0.750", "7 = 0.750", "hook 0.500", "7 = 0.500",
                          "hook 0.250", "7 = 0.250", "hook 0.000", "7 = 0.000"}));
}

TEST_F(Led, FadesBetweenItsFirstAndItsLastFrame) {
    CLED led(root, Picture(u"Lamp((2)).png", 0.0f));
    EXPECT_EQ(Draws(led), Lines{"DrawTexture 1 to 100,50 40x20 from 0..1,0..0.5"});
    led.sValue.Jump(0.25f);
    EXPECT_EQ(Draws(led), (Lines{"DrawTexture 1 to 100,50 40x20 from 0..1,0..0.5 colour BFFFFFFF",
                              "DrawTexture 1 to 100,50 40x20 from 0..1,0.5..1 colour 3FFFFFFF"}));
    led.sValue.Jump(1.0f);
    EXPECT_EQ(Draws(led), Lines{"DrawTexture 1 to 100,50 40x20 from 0..1,0.5..1"});
}

TEST_F(Led, OfManyFramesUsesTheFirstAndTheLast) {
    CLED led(root, Picture(u"Grid((5x2)).png", 0.5f));
    EXPECT_EQ(Draws(led), (Lines{"DrawTexture 1 to 100,50 40x20 from 0..0.5,0..0.333333 colour 7FFFFFFF",
                              "DrawTexture 1 to 100,50 40x20 from 0..0.5,0.666667..1 colour 7FFFFFFF"}));
}

TEST_F(Led, OfOneFrameIsAPicture) {
    CLED led(root, Picture(u"Plain.png", 0.5f));
    EXPECT_EQ(Draws(led), Lines{"DrawTexture 1 to 100,50 40x20"});
}

TEST_F(Led, HasColorsForDarkAndLitUnderThePointerAndOff) {
    CLED led(root, Picture(u"Lamp((2)).png", 0.0f));
    led.nColor = 0xFF000010;
    led.nColorHover = 0xFF000050;
    led.nColorActive = 0xFF001000;
    led.nColorInactive = 0xFF100000;
    const auto colors = [&](float value, float hover, bool interactive) {
        led.sValue.Jump(value);
        led.sHover.Jump(hover);
        led.bInteractive = interactive;
        const auto draws = Draws(led);
        return draws.empty() ? "" : draws[0].substr(draws[0].find("colour") + 7);
    };
    EXPECT_EQ(colors(0.0f, 0.0f, true), "FF000010");
    EXPECT_EQ(colors(0.0f, 0.5f, true), "FF000030");
    EXPECT_EQ(colors(0.0f, 0.5f, false), "FF100000");
    EXPECT_EQ(colors(1.0f, 0.0f, true), "FF001000");
    EXPECT_EQ(colors(1.0f, 0.5f, true), "FF000828");
    EXPECT_EQ(colors(1.0f, 0.5f, false), "FF000828") << "whether it is interactive or not";
}

TEST_F(Led, FadesWithItsVisibility) {
    CLED led(root, Picture(u"Lamp((2)).png", 0.5f));
    led.sVisible.fValue = 0.5f;
    EXPECT_EQ(Draws(led), (Lines{"DrawTexture 1 to 100,53 40x20 from 0..1,0..0.5 colour 3FFFFFFF",
                              "DrawTexture 1 to 100,53 40x20 from 0..1,0.5..1 colour 3FFFFFFF"}));
}

TEST_F(Led, ItsShadowFadesInTheSameWay) {
    auto info = Picture(u"Lamp((2)).png", 0.25f);
    info.bShadow = true;
    info.nShadowBlur = 1;
    info.fShadowX = 3.0f;
    info.nShadowColor = 0xFF112233;
    CLED led(root, info);
    const auto draws = Draws(led);
    ASSERT_EQ(draws.size(), 4u);
    EXPECT_EQ(draws[0], "DrawTexture 1 to 99,46 48x28 from 0..1,0..0.5 colour BF112233");
    EXPECT_EQ(draws[1], "DrawTexture 1 to 99,46 48x28 from 0..1,0.5..1 colour 3F112233");
    led.bShadow = false;
    EXPECT_EQ(Draws(led).size(), 2u);
}

TEST_F(Led, WithMarginsIsDrawnInNineSlices) {
    auto info = Picture(u"Lamp((2)).png", 0.25f);
    info.nMrgL = 5;
    CLED led(root, info);
    EXPECT_EQ(Draws(led), (Lines{"DrawTexture9 1 to 100,50 40x20 margins 5,0,0,0 colour BFFFFFFF",
                              "DrawTexture9 1 to 100,50 40x20 margins 5,0,0,0 value 1 colour 3FFFFFFF"}));
}

TEST_F(Led, WithoutASizeTakesThatOfAFrame) {
    auto info = Picture(u"Lamp((2)).png", 0.0f);
    info.fW = info.fH = 0.0f;
    CLED led(root, info);
    Draws(led);
    EXPECT_EQ(led.PixelRect(), (SPixelRect{100, 50, 40, 20}));
}
