// The editor on displays that stop or die. The host's calls must come back, and the process live.

#include "tests/editor/editor_fixture.h"
#include "tests/editor/stopped_server.h"

#include <chrono>

namespace KAV::Tests {

namespace {

using namespace VST;
using EditorDisplay = CEditorFixture;

} // namespace

TEST_F(EditorDisplay, ThatStandsStillOpensNoEditorAndShowsNoneLater) {
    CEditorHost host(library);
    {
        const CStopped stopped(windows.Server());
        ExpectSoon("opening", [&] { EXPECT_FALSE(host.Open(windows.Parent())); });
        ExpectSoon("size", [&] { host.Rect(); });
        ExpectSoon("idle", [&] { host.Dispatch(effEditIdle); });
        ExpectSoon("closing", [&] { host.Close(); });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(300)); // what was given up would come now
    EXPECT_EQ(windows.Editor(), 0u);
    EXPECT_TRUE(Until([&] { return host.Open(windows.Parent()); }));
    EXPECT_TRUE(ShowsAPicture(windows.Editor()));
}

TEST_F(EditorDisplay, ThatStopsUnderAnOpenEditorHoldsUpNoCallOfTheHost) {
    CEditorHost host(library);
    const auto editor = OpenEditor(host);
    {
        const CStopped stopped(windows.Server());
        host.Effect()->setParameter(host.Effect(), host.IndexOf("Threshold"), 0.1f); // something to draw
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        ExpectSoon("idle", [&] { host.Dispatch(effEditIdle); });
        ExpectSoon("saving", [&] { host.Chunk(); });
        ExpectSoon("size", [&] { host.Rect(); });
        ExpectSoon("closing", [&] { host.Close(); });
    }
    EXPECT_TRUE(Until([&] { return !windows.Exists(editor); }));
    EXPECT_TRUE(host.Open(windows.Parent()));
    EXPECT_TRUE(ShowsAPicture(windows.Editor()));
}

TEST_F(EditorDisplay, ThatDiesTakesNoProcessWithIt) {
    CEditorHost host(library);
    OpenEditor(host);
    const int idles = host.Idles();
    windows.KillServer();
    EXPECT_TRUE(Until([&] { return host.Idles() > idles + 10; }));
    EXPECT_FALSE(host.Chunk().empty());
    host.Close();
    EXPECT_FALSE(host.Open(windows.Parent()));
}

} // namespace KAV::Tests
