#include "native/linux/tick_timer.h"
#include "tests/native/x11_editor.h"
#include "utils/clock.h"

#include <poll.h>
#include <sys/timerfd.h>
#include <thread>

namespace KAV::Tests {

using Native::CTickTimer;

TEST(TickTimer, RunsAtThirtySixtyAndAHundredPerSecond) {
    CTickTimer timer;
    ASSERT_TRUE(timer.IsThere());
    const auto interval = [&](std::uint32_t perSecond) {
        timer.Start(perSecond);
        itimerspec setting{};
        EXPECT_EQ(timerfd_gettime(timer.Descriptor(), &setting), 0);
        return setting.it_interval.tv_sec * 1'000'000'000 + setting.it_interval.tv_nsec;
    };
    EXPECT_EQ(interval(30), 1'000'000'000 / 30);
    EXPECT_EQ(interval(60), 1'000'000'000 / 60);
    EXPECT_EQ(interval(100), 1'000'000'000 / 100);
    EXPECT_EQ(interval(0), 1'000'000'000); // never at rest
}

TEST(TickTimer, IsDueOnceForAllTheTicksThatWereMissed) {
    CTickTimer timer;
    EXPECT_FALSE(timer.Take());
    timer.Start(1000);
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // at least so many are missed
    timer.Start(1); // no further one is due before a second is over
    EXPECT_FALSE(timer.Take());
    timer.Start(2);
    std::this_thread::sleep_for(std::chrono::milliseconds(1050)); // two
    EXPECT_TRUE(timer.Take());
    EXPECT_FALSE(timer.Take());
}

TEST(X11WindowTicks, ComeWithStampsInMilliseconds) {
    CXTestHost host;
    CX11Editor editor(host, 100);
    const auto before = Utils::TickMs();
    editor.heard.ticks.clear();
    editor.Run(40);
    const auto after = Utils::TickMs();
    const auto& ticks = editor.heard.ticks;
    EXPECT_TRUE(std::is_sorted(ticks.begin(), ticks.end()));
    EXPECT_GE(ticks.front() + 1, before);
    EXPECT_LE(ticks.back(), after);
    // A hundred a second at most: the first may have been due already.
    EXPECT_GE(after - before, 38u * 10u);
}

TEST(X11WindowTicks, FollowTheRate) {
    CXTestHost host;
    CX11Editor editor(host, 100);
    editor.window->SetRate(30);
    editor.Run(1);
    const auto before = Utils::TickMs();
    editor.Run(15);
    EXPECT_GE(Utils::TickMs() - before, 14u * 33u);
}

TEST(X11WindowTicks, ComeWhileTheWindowIsHidden) {
    CXTestHost host;
    CX11Editor editor(host);
    host.Show(host.Top(), false);
    EXPECT_TRUE(editor.Until([&] { return !editor.Fill(0xFFFFFFFF); }));
    editor.Run(10);
}

TEST(X11WindowTicks, AreOneAfterALongPause) {
    CXTestHost host;
    CX11Editor editor(host, 30);
    editor.Lines();
    editor.window->SetRate(2);                                    // 0.5 s
    std::this_thread::sleep_for(std::chrono::milliseconds(1600)); // three
    editor.heard.ticks.clear();
    for (int round = 0; round < 5; ++round) {
        eventfd_write(editor.wake, 1); // so that none of them waits
        editor.window->Round(editor.wake);
    }
    EXPECT_EQ(editor.heard.ticks.size(), 1u);
}

} // namespace KAV::Tests
