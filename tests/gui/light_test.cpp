#include "gui/light.h"

#include "tests/gui/recording_root.h"

#include <gtest/gtest.h>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

TEST(Light, IsAListedWidgetWithoutAPicture) {
    CRecordingRoot root;
    const auto* const light = root.Find<CLight>();
    ASSERT_NE(light, nullptr);
    EXPECT_EQ(light->sName, u"Light");
    EXPECT_EQ(light->sClass, u"Light");
    EXPECT_TRUE(light->sImage.empty());
    EXPECT_EQ(light->PixelRect().nW, 32);
    EXPECT_EQ(light->PixelRect().nH, 32);
    EXPECT_EQ(light->nId, -1);
}

TEST(Light, IsNotHitAndKeepsNoEventFromOthers) {
    CRecordingRoot root;
    auto* const light = root.Find<CLight>();
    EXPECT_FALSE(light->HitTest(5, 5, false));
    light->OnMouseMove(5, 5, 0);
    root.OnMouseDown(5, 5, MouseLeft);
    EXPECT_EQ(root.Pointer().Capture(), nullptr);
}
