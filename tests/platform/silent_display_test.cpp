// A display that accepts a client and then stops answers no request, and the library waits for it for ever.

#include "platform/clipboard.h"
#include "platform/system_info.h"
#include "tests/support/other_threads.h"
#include "tests/support/silent_display.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace KAV::Platform;
using namespace KAV::Tests;
using ESays = CSilentDisplay::ESays;

TEST(SilentDisplay, CountsAsMissing) {
    const CSilentDisplay silent;
    EXPECT_EQ(Display().monitors, 0);
    EXPECT_FALSE(silent.HasHungUp());
    EXPECT_EQ(silent.Clients(), 1);
}

TEST(SilentDisplay, CountsAsMissingEvenAfterAGreeting) {
    const CSilentDisplay silent(ESays::AGreeting);
    EXPECT_EQ(Display().monitors, 0);
    EXPECT_FALSE(silent.HasHungUp());
}

TEST(SilentDisplay, HasNoClipboard) {
    const CSilentDisplay silent;
    EXPECT_EQ(ReadClipboard("clipboard:x").data, nullptr);
    EXPECT_FALSE(silent.HasHungUp());
}

TEST(SilentDisplay, TakesNoClipboardEvenAfterAGreeting) {
    const CSilentDisplay silent(ESays::AGreeting);
    EXPECT_FALSE(WriteClipboard("clipboard:x", "x", 1));
    EXPECT_FALSE(silent.HasHungUp());
}

TEST(SilentDisplay, IsNotWaitedForAgainBeforeItHasAnsweredOrGone) {
    CSilentDisplay silent;
    Display();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Display().monitors, 0);
        EXPECT_EQ(ReadClipboard("clipboard:x").data, nullptr);
        EXPECT_FALSE(WriteClipboard("clipboard:x", "x", 1));
    }
    EXPECT_EQ(silent.Clients(), 1);
    silent.HangUp();
    for (int i = 0; i < 1000 && silent.Clients() < 2 && !silent.HasHungUp(); ++i) {
        Display();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(silent.Clients(), 2);
}

TEST(SilentDisplay, KeepsAThreadThatTakesNoSignals) {
    const CSilentDisplay silent;
    const auto before = Threads();
    Display();
    const auto started = AwaitNewThreads(before, 1);
    ASSERT_EQ(started.size(), 1u);
    EXPECT_TRUE(BlocksAllSignals(*started.begin()));
}
