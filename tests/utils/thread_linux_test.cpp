#include "tests/support/other_threads.h"
#include "utils/thread.h"

#include <csignal>
#include <gtest/gtest.h>
#include <thread>

using namespace KAV::Utils;
using namespace KAV::Tests;

TEST(Thread, TakesNoSignals) {
    struct SClient final : CThread::IOnThread {
        void OnThread(CThread* thread) override {
            while (thread->running) std::this_thread::yield();
        }
    } client;
    CThread thread(client);
    const auto before = Threads();
    thread.Start();
    const auto started = AwaitNewThreads(before, 1);
    ASSERT_EQ(started.size(), 1u);
    EXPECT_TRUE(BlocksAllSignals(*started.begin()));
    EXPECT_FALSE(BlocksAllSignals(*before.begin())); // the one that has started it goes on as before
    thread.Stop();
}
