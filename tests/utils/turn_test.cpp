#include "utils/turn.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace KAV::Utils;

namespace {

/// Starts a thread that takes a turn, sooner or later, and returns whether it got it at once.
bool IsFree(CTurns& turns, std::vector<std::thread>& waiting, std::atomic<bool>& got) {
    waiting.emplace_back([&turns, &got] {
        const CTurn turn(turns);
        got = true;
    });
    for (int i = 0; i < 1000 && !got; ++i) std::this_thread::yield();
    return got;
}

} // namespace

TEST(Turn, KeepsOtherThreadsOutUntilItsEnd) {
    CTurns turns;
    int shared = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 1000; ++round) {
                const CTurn turn(turns);
                const int before = shared;
                if (round % 100 == 0) std::this_thread::yield();
                shared = before + 1;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(shared, 4000);
}

TEST(Turn, WithinAnotherOfItsThreadIsAPartOfIt) {
    CTurns turns;
    std::atomic<bool> got{false};
    std::vector<std::thread> waiting;
    std::vector<std::string> told;
    {
        CTurn outer(turns);
        {
            CTurn inner(turns);
            inner.Then([&] { told.emplace_back("inner"); });
        }
        EXPECT_EQ(told.size(), 0u) << "the outer turn continues";
        EXPECT_FALSE(IsFree(turns, waiting, got));
    }
    EXPECT_EQ(told, std::vector<std::string>{"inner"});
    waiting.back().join();
    EXPECT_TRUE(got);
}

TEST(Turn, WhatFollowsRunsInOrderAndLetsOtherThreadsIn) {
    CTurns turns;
    std::vector<int> order;
    {
        CTurn turn(turns);
        for (const int n : {1, 2, 3}) {
            turn.Then([&turns, &order, n] {
                std::thread([&turns, &order, n] { // within the turn it would wait for ever
                    const CTurn other(turns);
                    order.push_back(n);
                })
                    .join();
            });
        }
        EXPECT_TRUE(order.empty());
    }
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(Turn, WhatFollowsMayBeginTurnsAndHaveThemFollowed) {
    CTurns turns;
    std::vector<std::string> told;
    {
        CTurn turn(turns);
        turn.Then([&] {
            CTurn next(turns);
            next.Then([&] { told.emplace_back("of the follower"); });
            told.emplace_back("follower");
        });
        turn.Then([&] { told.emplace_back("second follower"); });
    }
    EXPECT_EQ(told, (std::vector<std::string>{"follower", "of the follower", "second follower"}));
    const CTurn turn(turns); // nothing is left over
    EXPECT_EQ(told.size(), 3u);
}

TEST(Turn, FollowersRunOnce) {
    CTurns turns;
    int runs = 0;
    {
        CTurn turn(turns);
        turn.Then([&] { ++runs; });
    }
    { const CTurn turn(turns); }
    EXPECT_EQ(runs, 1);
}

TEST(Turn, WhatFollowsIsDroppedOnceWhatIsSharedHasGone) {
    auto turns = std::make_unique<CTurns>();
    std::vector<int> ran;
    {
        CTurn turn(*turns);
        turn.Then([&] { ran.push_back(1); });
        turn.Then([&] {
            ran.push_back(2);
            turns.reset();
        });
        turn.Then([&] { ran.push_back(3); });
    }
    EXPECT_EQ(ran, (std::vector<int>{1, 2}));
}

TEST(Turn, ItsEndIsHeardOnceAndWithinIt) {
    CTurns turns;
    struct SEnd final : ITurnEnd {
        void OnTurnEnd(CTurn& turn) override {
            ++heard;
            turn.Then([this] { heardWhenFollowed = heard; });
        }
        int heard = 0;
        int heardWhenFollowed = 0;
    } end;
    {
        const CTurn turn(turns);
        turns.SetEnd(turn, &end);
        const CTurn inner(turns);
    }
    EXPECT_EQ(end.heard, 1);
    EXPECT_EQ(end.heardWhenFollowed, 1);
    {
        const CTurn turn(turns);
        turns.SetEnd(turn, nullptr);
    }
    EXPECT_EQ(end.heard, 1);
}

TEST(Turn, EndsAlthoughItsEndFails) {
    CTurns turns;
    struct SFailure final : ITurnEnd {
        void OnTurnEnd(CTurn&) override { throw std::bad_alloc(); }
    } failure;
    bool followed = false;
    {
        CTurn turn(turns);
        turns.SetEnd(turn, &failure);
        turn.Then([&] { followed = true; });
    }
    EXPECT_TRUE(followed);
    std::thread([&] {
        const CTurn turn(turns);
        turns.SetEnd(turn, nullptr);
    }).join();
}

TEST(Turn, IsPassedOnByAnException) {
    CTurns turns;
    bool followed = false;
    try {
        CTurn turn(turns);
        turn.Then([&] { followed = true; });
        throw std::bad_alloc();
    } catch (const std::bad_alloc&) {
        EXPECT_TRUE(followed) << "the host is notified of the change";
    }
    std::thread([&] { const CTurn turn(turns); }).join();
}
