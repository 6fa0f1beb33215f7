// Fonts that texts need are found while an editor shows boxes in their place.

#include "gui/button.h"
#include "gui/hint.h"
#include "tests/gui/doubled_editor.h"
#include "utils/exceptions.h"

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

class NewTexts : public DoubledEditor {
protected:
    static SWidgetInfo WithText(std::u16string_view text) {
        auto info = Info(-1);
        info.sText = text;
        return info;
    }
    void Tick() { window.client->OnTick(time += 16); }

    CLabel label{root, WithText(u"label")};
    CButton button{root, WithText(u"button")};
    std::uint32_t time = 1000;
};

} // namespace

TEST_F(NewTexts, AreRenderedOnceInEveryWidgetThatHasOne) {
    Tick();
    ASSERT_EQ(pictures.lettered.size(), 2u);
    pictures.lettered.clear();
    Tick();
    EXPECT_FALSE(IsRedrawDue());
    EXPECT_TRUE(pictures.lettered.empty());
    pictures.hasNewTexts = true;
    Tick();
    EXPECT_EQ(pictures.lettered.size(), 2u) << "by the tick that has heard of them";
    Tick();
    EXPECT_EQ(pictures.lettered.size(), 2u);
    EXPECT_EQ(LiveTextures(), 2u);
}

TEST_F(NewTexts, EndTheTextThatSlidesOut) {
    Tick();
    label.SetText(u"next");
    Tick();
    EXPECT_EQ(LiveTextures(), 3u);
    pictures.hasNewTexts = true;
    Tick();
    EXPECT_EQ(LiveTextures(), 2u);
    EXPECT_EQ(pictures.lettered.back().sText, u"button");
}

TEST_F(NewTexts, WaitForTheEndOfADragOfTheWindowsSize) {
    Tick();
    root.SetResizing(true);
    pictures.hasNewTexts = true;
    Tick();
    EXPECT_TRUE(pictures.hasNewTexts) << "not asked";
    EXPECT_EQ(LiveTextures(), 2u) << "what there is goes on being stretched";
    root.SetResizing(false);
    pictures.lettered.clear();
    Tick();
    EXPECT_EQ(pictures.lettered.size(), 2u);
}

TEST_F(NewTexts, GiveTheHintTheirSize) {
    root.Hint().SetText(u"hint");
    EXPECT_EQ(root.Hint().sW.fTarget, 24.0f);
    pictures.characterWidth = 10;
    Tick();
    EXPECT_EQ(root.Hint().sW.fTarget, 24.0f);
    pictures.hasNewTexts = true;
    Tick();
    EXPECT_EQ(root.Hint().sW.fTarget, 40.0f);
}

TEST_F(NewTexts, AnErrorInAskingForThemIsReportedAndTheFrameDrawn) {
    struct SBroken final : IPictures {
        bool HasNewTexts() override { throw Exceptions::Std(u"fonts", u"TEST"); }
    } broken;
    CRecordingWindow ownWindow;
    CRecordingRoot own({&ownWindow, &broken});
    own.CreateGUIWindow();
    ASSERT_TRUE(own.Screen().Create());
    own.Show(true);
    renderers.Calls().clear();
    own.Invalidate();
    ownWindow.client->OnTick(1000);
    EXPECT_EQ(renderers.Calls().back(), "Present");
    own.Screen().Release();
}
