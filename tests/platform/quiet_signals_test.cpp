#include "platform/quiet_signals.h"

#include <csignal>
#include <gtest/gtest.h>
#include <pthread.h>
#include <thread>

using namespace KAV::Platform;

namespace {

bool Blocked() {
    sigset_t set;
    pthread_sigmask(SIG_SETMASK, nullptr, &set);
    return sigismember(&set, SIGUSR1) == 1;
}

} // namespace

TEST(QuietSignals, BlockThemInThreadsStartedMeanwhileAndNowhereElse) {
    bool inThread = false;
    std::thread thread;
    {
        const CQuietSignals quiet;
        thread = std::thread([&] { inThread = Blocked(); });
    }
    thread.join();
    EXPECT_TRUE(inThread);
    EXPECT_FALSE(Blocked());
}
