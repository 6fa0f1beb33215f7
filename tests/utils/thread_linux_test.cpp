#include "tests/support/other_threads.h"
#include "utils/thread.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

using namespace KAV::Utils;
using namespace KAV::Tests;

TEST(Thread, TakesNoSignals) {
    struct SClient final : CThread::IOnThread {
        void OnThread(CThread* thread) override {
            began = true; // while a thread is being created, the C library has all signals blocked in it
            while (thread->running) std::this_thread::yield();
        }
        std::atomic<bool> began{false};
    } client;
    CThread thread(client);
    const auto before = Threads();
    thread.Start();
    while (!client.began) std::this_thread::yield();
    const auto started = AwaitNewThreads(before, 1);
    ASSERT_EQ(started.size(), 1u);
    EXPECT_TRUE(BlocksAllSignals(*started.begin()));
    EXPECT_FALSE(BlocksAllSignals(*before.begin())); // the thread that started it is unchanged
    thread.Stop();
}
