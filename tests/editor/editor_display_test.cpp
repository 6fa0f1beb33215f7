// The editor on displays that stop or die. The host's calls must come back, and the process live.

#include "tests/editor/editor_fixture.h"

#include <chrono>
#include <csignal>

namespace KAV::Tests {

namespace {

using namespace VST;
using EditorDisplay = CEditorFixture;
using Clock = std::chrono::steady_clock;

/// Stops a process for its lifetime.
class CStopped final {
public:
    explicit CStopped(int process) : _process(process) { kill(_process, SIGSTOP); }
    ~CStopped() { kill(_process, SIGCONT); }
    CStopped(const CStopped&) = delete;
    CStopped& operator=(const CStopped&) = delete;

private:
    int _process;
};

/// As long may a call of the host take, on a machine that is busy.
constexpr auto LongestCall = std::chrono::seconds(3);

template<typename TCall>
void ExpectSoon(TCall call) {
    const auto begin = Clock::now();
    call();
    EXPECT_LT(Clock::now() - begin, LongestCall);
}

} // namespace

TEST_F(EditorDisplay, ThatStandsStillOpensNoEditorAndShowsNoneLater) {
    CEditorHost host(library);
    {
        const CStopped stopped(windows.Server());
        ExpectSoon([&] { EXPECT_FALSE(host.Open(windows.Parent())); });
        ExpectSoon([&] { host.Rect(); });
        ExpectSoon([&] { host.Dispatch(effEditIdle); });
        ExpectSoon([&] { host.Close(); });
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
        ExpectSoon([&] { host.Dispatch(effEditIdle); });
        ExpectSoon([&] { host.Chunk(); });
        ExpectSoon([&] { host.Rect(); });
        ExpectSoon([&] { host.Close(); });
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
