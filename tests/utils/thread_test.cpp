#include "utils/thread.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

using namespace KAV::Utils;

namespace {

struct SClient final : CThread::IOnThread {
    void OnThread(CThread* thread) override {
        given = thread;
        ++runs;
        while (wait && thread->running) std::this_thread::yield();
        sawStop = !thread->running;
        if (fail) throw std::runtime_error("never leaves the thread");
        ++ends;
    }
    std::atomic<CThread*> given{nullptr};
    std::atomic<int> runs{0};
    std::atomic<int> ends{0};
    std::atomic<bool> sawStop{false};
    std::atomic<bool> wait{false};
    std::atomic<bool> fail{false};
};

void AwaitRuns(const SClient& client, int runs) {
    while (client.runs < runs) std::this_thread::yield();
}

} // namespace

TEST(Thread, RunsItsClientOnceWithItself) {
    SClient client;
    CThread thread(client);
    EXPECT_FALSE(thread.running);
    thread.Start();
    AwaitRuns(client, 1);
    thread.Stop();
    EXPECT_EQ(client.runs, 1);
    EXPECT_EQ(client.given, &thread);
}

TEST(Thread, StopAsksTheClientToEndAndWaits) {
    SClient client;
    client.wait = true;
    CThread thread(client);
    thread.Start();
    AwaitRuns(client, 1);
    EXPECT_TRUE(thread.running);
    EXPECT_EQ(client.ends, 0);
    thread.Stop();
    EXPECT_EQ(client.ends, 1);
    EXPECT_TRUE(client.sawStop);
    EXPECT_FALSE(thread.running);
}

TEST(Thread, StartDoesNothingWhileThereIsOne) {
    SClient client;
    CThread thread(client);
    thread.Start();
    thread.Start();
    AwaitRuns(client, 1);
    while (client.ends < 1) std::this_thread::yield();
    thread.Start(); // its operation has ended, but it hasn't been stopped
    thread.Stop();
    EXPECT_EQ(client.runs, 1);
    thread.Start();
    AwaitRuns(client, 2);
    thread.Stop();
    EXPECT_EQ(client.runs, 2);
}

TEST(Thread, ItsEndWaitsForAClientThatHasNotRunYet) {
    SClient client;
    for (int i = 0; i < 200; ++i) {
        CThread thread(client);
        thread.Start();
    }
    EXPECT_EQ(client.ends, 200);
}

TEST(Thread, StopWithoutStartDoesNothing) {
    SClient client;
    CThread thread(client);
    thread.Stop();
    EXPECT_EQ(client.runs, 0);
}

TEST(Thread, AnExceptionEndsTheThreadAlone) {
    SClient client;
    client.fail = true;
    CThread thread(client);
    thread.Start();
    AwaitRuns(client, 1);
    thread.Stop();
    EXPECT_EQ(client.ends, 0);
}

TEST(Thread, StopOnTheThreadItselfOnlyAsks) {
    struct SSelfStopper final : CThread::IOnThread {
        void OnThread(CThread* thread) override {
            thread->Stop();
            done = true;
        }
        std::atomic<bool> done{false};
    } client;
    CThread thread(client);
    thread.Start();
    while (!client.done) std::this_thread::yield();
    thread.Stop();
}

TEST(Thread, MayDestroyItself) {
    struct SOwner final : CThread::IOnThread {
        void OnThread(CThread*) override {
            while (!ready) std::this_thread::yield();
            thread.reset();
            done = true;
        }
        std::unique_ptr<CThread> thread = std::make_unique<CThread>(*this);
        std::atomic<bool> ready{false};
        std::atomic<bool> done{false};
    } client;
    client.thread->Start();
    client.ready = true;
    while (!client.done) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(10)); // for its last steps
}

TEST(Thread, KeepsTheMarkOfItsOwner) {
    SClient client;
    CThread thread(client);
    EXPECT_FALSE(thread.startNow);
    thread.startNow = true;
    EXPECT_TRUE(thread.startNow);
    EXPECT_EQ(client.runs, 0);
}
