#include "native/linux/two_threads.h"

#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <mutex>
#include <pthread.h>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace KAV;

TEST(TwoThreads, DoEachPieceOnce) {
    for (const std::size_t count : {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{1000}}) {
        std::vector<std::atomic<int>> done(count);
        Native::OnTwoThreads(count, [&](std::size_t i) { ++done[i]; });
        for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(done[i], 1) << i;
    }
}

TEST(TwoThreads, WorkAtTheSameTime) {
    // Each piece waits for the other one: on one thread this would never end.
    std::atomic<int> begun{0};
    Native::OnTwoThreads(2, [&](std::size_t) {
        ++begun;
        while (begun < 2) std::this_thread::yield();
    });
    EXPECT_EQ(begun, 2);
}

TEST(TwoThreads, StartNoneForASinglePiece) {
    const auto self = std::this_thread::get_id();
    Native::OnTwoThreads(1, [&](std::size_t) { EXPECT_EQ(std::this_thread::get_id(), self); });
}

TEST(TwoThreads, GoOnAfterAPieceThatFails) {
    std::atomic<int> done{0};
    Native::OnTwoThreads(100, [&](std::size_t i) {
        ++done;
        if (i % 3 == 0) throw std::runtime_error("no");
    });
    EXPECT_EQ(done, 100);
}

TEST(TwoThreads, TakeNoSignalOfTheHosts) {
    const auto self = pthread_self();
    std::atomic<int> begun{0};
    Native::OnTwoThreads(2, [&](std::size_t) {
        ++begun;
        while (begun < 2) std::this_thread::yield();
        if (pthread_equal(pthread_self(), self) != 0) return;
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        for (const int signal : {SIGINT, SIGALRM, SIGCHLD, SIGUSR1, SIGPROF})
            EXPECT_EQ(sigismember(&blocked, signal), 1) << signal;
    });
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&blocked, SIGUSR1), 0);
}
