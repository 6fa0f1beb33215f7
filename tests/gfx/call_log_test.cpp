#include "gfx/call_log.h"

#include "tests/support/added_log.h"
#include "tests/support/hand_clock.h"

#include <gtest/gtest.h>

using namespace KAV::GFX;
using namespace KAV::Tests;

TEST(CallLog, WritesTheCallAndItsNumber) {
    const CAddedLog log;
    CCallLog calls;
    calls.Failed(u"_piBB->UnlockBits(&iImageData)", 2);
    calls.Failed(u"piDevice->SetFVF(D3DFVF_XYZ | D3DFVF_TEX1)", -2005530516);
    EXPECT_EQ(log.Text(), "Error=_piBB->UnlockBits(&iImageData):2\r\n"
                          "Error=piDevice->SetFVF(D3DFVF_XYZ | D3DFVF_TEX1):-2005530516\r\n");
}

TEST(CallLog, WritesTheSameLineOnceASecond) {
    CHandClock clock;
    const CAddedLog log;
    CCallLog calls;
    calls.Failed(u"Draw()", 1);
    clock.Advance(600);
    calls.Failed(u"Draw()", 1); // a line that isn't written doesn't begin another second
    clock.Advance(399);
    calls.Failed(u"Draw()", 1);
    EXPECT_EQ(log.Text(), "Error=Draw():1\r\n");
    clock.Advance(1);
    calls.Failed(u"Draw()", 1);
    EXPECT_EQ(log.Text(), "Error=Draw():1\r\nError=Draw():1\r\n");
    clock.Advance(999);
    calls.Failed(u"Draw()", 1);
    EXPECT_EQ(log.Text(), "Error=Draw():1\r\nError=Draw():1\r\n");
}

TEST(CallLog, WritesEveryOtherLineMeanwhile) {
    CHandClock clock;
    const CAddedLog log;
    CCallLog calls;
    for (int frame = 0; frame < 50; ++frame) {
        calls.Failed(u"Draw()", 1);
        calls.Failed(u"Draw()", 2);
        calls.Failed(u"Clear()", 1);
        clock.Advance(16);
    }
    EXPECT_EQ(log.Text(), "Error=Draw():1\r\nError=Draw():2\r\nError=Clear():1\r\n");
}

TEST(CallLog, CountsTheSecondAcrossTheStartOfTheClock) {
    CHandClock clock(0xFFFFFF00); // 256 ms before the clock starts again at 0
    const CAddedLog log;
    CCallLog calls;
    calls.Failed(u"Draw()", 1);
    for (const std::uint32_t ms : {200u, 799u}) { // before its start, and after it
        clock.Advance(ms);
        calls.Failed(u"Draw()", 1);
        EXPECT_EQ(log.Text(), "Error=Draw():1\r\n");
    }
    clock.Advance(1);
    calls.Failed(u"Draw()", 1);
    EXPECT_EQ(log.Text(), "Error=Draw():1\r\nError=Draw():1\r\n");
}

TEST(CallLog, OfOneRendererSilencesNoOther) {
    const CHandClock clock;
    const CAddedLog log;
    CCallLog calls;
    CCallLog others;
    calls.Failed(u"Draw()", 1);
    others.Failed(u"Draw()", 1);
    EXPECT_EQ(log.Text(), "Error=Draw():1\r\nError=Draw():1\r\n");
}
