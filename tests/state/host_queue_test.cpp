#include "state/host_queue.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace KAV;

namespace {

using EOccasion = CHostQueue::EOccasion;

/// A host that writes down what it is told, in words, by a clock that the test sets.
class CHeard final : public IHostRoad {
public:
    void BeginEdit(std::int32_t index) noexcept override { Note("begin " + std::to_string(index)); }
    void Value(std::int32_t index, float normal) noexcept override {
        Note("value " + std::to_string(index) + " " + std::to_string(static_cast<int>(normal * 1000.0f)));
    }
    void EndEdit(std::int32_t index) noexcept override { Note("end " + std::to_string(index)); }
    void Latency(std::int32_t samples) noexcept override { Note("latency " + std::to_string(samples)); }
    bool Size(std::int32_t width, std::int32_t height) noexcept override {
        Note("size " + std::to_string(width) + " " + std::to_string(height));
        return resizes;
    }
    std::uint32_t NowMs() const noexcept override {
        ++asked;
        return nowMs;
    }

    std::vector<std::string> calls;
    std::atomic<std::uint32_t> nowMs = 1000;
    bool resizes = true;                            ///< its window, when it is asked to
    mutable std::atomic<int> asked = 0;             ///< for the time
    std::function<void(const std::string&)> during; ///< what the host does in each call

private:
    void Note(const std::string& call) {
        calls.push_back(call);
        if (during) during(call);
    }
};

using Calls = std::vector<std::string>;

class HostQueue : public testing::Test {
protected:
    CHostQueue queue;
    CHeard host;

    /// What the host hears in one emptying, `afterMs` after the one before.
    Calls Heard(EOccasion occasion, std::uint32_t afterMs = 0) {
        host.nowMs += afterMs;
        host.calls.clear();
        queue.Empty(host, occasion);
        return host.calls;
    }
    void PushGesture(std::int32_t index, float normal) {
        queue.PushBegin(index);
        queue.PushValue(index, normal);
        queue.PushEnd(index);
    }
};

} // namespace

TEST_F(HostQueue, TellsNothingWhenNothingHappened) {
    for (const auto occasion : {EOccasion::Turn, EOccasion::Idle, EOccasion::Close})
        EXPECT_EQ(Heard(occasion, 1000), Calls{});
}

TEST_F(HostQueue, TellsTheEndOfAnEditAHundredMillisecondsAfterItsValue) {
    for (const auto occasion : {EOccasion::Turn, EOccasion::Idle}) {
        PushGesture(4, 0.25f);
        EXPECT_EQ(Heard(occasion, 1000), (Calls{"begin 4", "value 4 250"}));
        EXPECT_EQ(Heard(occasion), Calls{});
        EXPECT_EQ(Heard(occasion, 40), Calls{});
        EXPECT_EQ(Heard(occasion, 59), Calls{});
        EXPECT_EQ(Heard(occasion, 1), Calls{"end 4"});
        EXPECT_EQ(Heard(occasion, 1000), Calls{});
    }
}

TEST_F(HostQueue, CountsFromTheLastValueThatTheHostGot) {
    queue.PushBegin(4);
    queue.PushValue(4, 0.25f);
    Heard(EOccasion::Idle);
    queue.PushValue(4, 0.5f);
    EXPECT_EQ(Heard(EOccasion::Idle, 90), Calls{"value 4 500"});
    queue.PushEnd(4);
    EXPECT_EQ(Heard(EOccasion::Idle, 99), Calls{});
    EXPECT_EQ(Heard(EOccasion::Idle, 1), Calls{"end 4"});
}

TEST_F(HostQueue, CountsFromTheHostsAnswerHoweverLongItTakes) {
    host.during = [this](const std::string& call) {
        if (call.starts_with("value")) host.nowMs += 5000;
    };
    PushGesture(4, 0.25f);
    EXPECT_EQ(Heard(EOccasion::Idle), (Calls{"begin 4", "value 4 250"})) << "the end is for a later emptying";
    EXPECT_EQ(Heard(EOccasion::Idle, 99), Calls{});
    EXPECT_EQ(Heard(EOccasion::Idle, 1), Calls{"end 4"});
}

TEST_F(HostQueue, CountsAcrossTheOverflowOfTheClock) {
    host.nowMs = UINT32_MAX - 20;
    PushGesture(4, 0.25f);
    Heard(EOccasion::Idle);
    EXPECT_EQ(Heard(EOccasion::Idle, 10), Calls{});
    EXPECT_EQ(Heard(EOccasion::Idle, 89), Calls{});
    EXPECT_EQ(Heard(EOccasion::Idle, 1), Calls{"end 4"});
}

TEST_F(HostQueue, LeavesAnEndToALaterEmptyingEvenIfThisOneTakesLong) {
    host.during = [this](const std::string& call) {
        if (call.starts_with("value 5")) host.nowMs += 5000;
    };
    PushGesture(4, 0.25f);
    queue.PushValue(5, 0.5f);
    EXPECT_EQ(Heard(EOccasion::Idle), (Calls{"begin 4", "value 4 250", "value 5 500"}));
    EXPECT_EQ(Heard(EOccasion::Idle), Calls{"end 4"});
}

TEST_F(HostQueue, TellsAnEndAtOnceWhenTheLastValueIsOld) {
    queue.PushBegin(4);
    queue.PushValue(4, 0.25f);
    Heard(EOccasion::Idle);
    queue.PushEnd(4);
    EXPECT_EQ(Heard(EOccasion::Turn, 100), Calls{"end 4"});
}

TEST_F(HostQueue, TellsAnEndWithoutAnyValueAtOnce) {
    queue.PushBegin(4);
    queue.PushEnd(4);
    EXPECT_EQ(Heard(EOccasion::Turn), (Calls{"begin 4", "end 4"}));
}

TEST_F(HostQueue, LetsAnEndWaitForAValueOutsideAnyEditAsWell) {
    queue.PushValue(4, 0.25f);
    Heard(EOccasion::Turn);
    queue.PushBegin(4);
    queue.PushEnd(4);
    EXPECT_EQ(Heard(EOccasion::Turn, 99), Calls{"begin 4"});
    EXPECT_EQ(Heard(EOccasion::Turn, 1), Calls{"end 4"});
}

TEST_F(HostQueue, ReplacesAValueThatIsFollowedDirectlyByOneOfItsParameter) {
    for (const float normal : {0.25f, 0.5f, 0.75f}) queue.PushValue(4, normal);
    queue.PushValue(5, 0.125f);
    queue.PushValue(5, 0.25f);
    queue.PushValue(4, 1.0f);
    EXPECT_EQ(Heard(EOccasion::Turn), (Calls{"value 4 750", "value 5 250", "value 4 1000"}));
}

TEST_F(HostQueue, KeepsValuesWithAnythingElseBetween) {
    queue.PushValue(4, 0.25f);
    queue.PushBegin(4);
    queue.PushValue(4, 0.5f);
    queue.PushLatency(64);
    queue.PushValue(4, 0.75f);
    queue.PushSize(4, 4);
    queue.PushValue(4, 1.0f);
    EXPECT_EQ(Heard(EOccasion::Idle), (Calls{"value 4 250", "begin 4", "value 4 500", "latency 64",
                                          "value 4 750", "size 4 4", "value 4 1000"}));
}

TEST_F(HostQueue, DropsNoBeginAndNoEnd) {
    for (int i = 0; i < 2; ++i) queue.PushBegin(4);
    for (int i = 0; i < 2; ++i) queue.PushEnd(4);
    EXPECT_EQ(Heard(EOccasion::Turn), (Calls{"begin 4", "begin 4", "end 4", "end 4"}));
}

TEST_F(HostQueue, HoldsBackWhatFollowsAWaitingEndOfTheSameParameterAlone) {
    PushGesture(4, 0.25f);
    queue.PushValue(4, 0.5f);
    PushGesture(5, 0.75f);
    queue.PushValue(6, 0.125f);
    EXPECT_EQ(
        Heard(EOccasion::Turn), (Calls{"begin 4", "value 4 250", "begin 5", "value 5 750", "value 6 125"}));
    queue.PushValue(6, 0.25f);
    EXPECT_EQ(Heard(EOccasion::Turn, 99), Calls{"value 6 250"});
    EXPECT_EQ(Heard(EOccasion::Turn, 1), (Calls{"end 4", "value 4 500", "end 5"}));
}

TEST_F(HostQueue, BeginsTheNextEditOfAParameterAfterTheEndOfTheOneBefore) {
    PushGesture(4, 0.25f);
    PushGesture(4, 0.5f);
    EXPECT_EQ(Heard(EOccasion::Idle), (Calls{"begin 4", "value 4 250"}));
    EXPECT_EQ(Heard(EOccasion::Idle, 40), Calls{});
    EXPECT_EQ(Heard(EOccasion::Idle, 60), (Calls{"end 4", "begin 4", "value 4 500"}));
    EXPECT_EQ(Heard(EOccasion::Idle, 99), Calls{});
    EXPECT_EQ(Heard(EOccasion::Idle, 1), Calls{"end 4"});
}

TEST_F(HostQueue, KeepsLatenciesAndSizesForTheIdleCall) {
    queue.PushLatency(64);
    queue.PushSize(500, 366);
    queue.PushValue(4, 0.25f);
    queue.PushLatency(512);
    EXPECT_EQ(Heard(EOccasion::Turn, 1000), Calls{"value 4 250"});
    EXPECT_EQ(Heard(EOccasion::Idle), (Calls{"latency 64", "size 500 366", "latency 512"}));
    EXPECT_EQ(Heard(EOccasion::Idle), Calls{});
}

TEST_F(HostQueue, ReplacesASizeThatIsFollowedDirectlyByAnother) {
    queue.PushSize(500, 366);
    queue.PushSize(600, 440);
    queue.PushLatency(64);
    queue.PushSize(700, 513);
    EXPECT_EQ(Heard(EOccasion::Idle), (Calls{"size 600 440", "latency 64", "size 700 513"}));
}

TEST_F(HostQueue, TellsEveryLatency) {
    queue.PushLatency(64);
    queue.PushLatency(512);
    queue.PushLatency(64);
    EXPECT_EQ(Heard(EOccasion::Idle), (Calls{"latency 64", "latency 512", "latency 64"}));
}

TEST_F(HostQueue, TellsWaitingEndsAndLatenciesAtTheClosingAndDropsSizes) {
    PushGesture(4, 0.25f);
    queue.PushSize(500, 366);
    queue.PushLatency(64);
    PushGesture(4, 0.5f);
    EXPECT_EQ(Heard(EOccasion::Turn), (Calls{"begin 4", "value 4 250"}));
    EXPECT_EQ(Heard(EOccasion::Close), (Calls{"end 4", "latency 64", "begin 4", "value 4 500", "end 4"}));
    EXPECT_EQ(Heard(EOccasion::Idle, 1000), Calls{});
}

TEST_F(HostQueue, GoesOnAfterTheClosingAsBefore) {
    Heard(EOccasion::Close);
    PushGesture(4, 0.25f);
    queue.PushSize(500, 366);
    EXPECT_EQ(Heard(EOccasion::Turn), (Calls{"begin 4", "value 4 250"}));
    EXPECT_EQ(Heard(EOccasion::Idle, 100), (Calls{"end 4", "size 500 366"}));
}

TEST_F(HostQueue, DropsWhatIsNoIndexOfTheHosts) {
    for (const std::int32_t index : {-1, 109, INT32_MIN, INT32_MAX}) PushGesture(index, 0.25f);
    queue.PushValue(108, 0.5f);
    queue.PushValue(0, 0.75f);
    EXPECT_EQ(Heard(EOccasion::Close), (Calls{"value 108 500", "value 0 750"}));
}

TEST_F(HostQueue, DoesNothingInsideAnEmptying) {
    std::vector<std::size_t> inside;
    host.during = [&](const std::string&) {
        const auto before = host.calls.size();
        for (const auto occasion : {EOccasion::Turn, EOccasion::Idle}) queue.Empty(host, occasion);
        inside.push_back(host.calls.size() - before);
    };
    queue.PushSize(500, 366);
    PushGesture(4, 0.25f);
    EXPECT_EQ(Heard(EOccasion::Turn), (Calls{"begin 4", "value 4 250"}));
    EXPECT_EQ(inside, (std::vector<std::size_t>{0, 0}));
    EXPECT_EQ(Heard(EOccasion::Idle, 100), (Calls{"size 500 366", "end 4"}));
}

TEST_F(HostQueue, TellsWhatTheHostsAnswersAddAfterAllThatIsOlder) {
    host.during = [this](const std::string& call) {
        if (call == "value 4 250") PushGesture(6, 1.0f);
    };
    queue.PushValue(4, 0.25f);
    queue.PushValue(5, 0.5f);
    EXPECT_EQ(Heard(EOccasion::Turn), (Calls{"value 4 250", "value 5 500", "begin 6", "value 6 1000"}));
    EXPECT_EQ(Heard(EOccasion::Turn, 100), Calls{"end 6"});
}

TEST_F(HostQueue, ClosesAtTheEndOfTheEmptyingInsideWhichItIsClosed) {
    host.during = [this](const std::string& call) {
        if (call == "value 4 250") queue.Empty(host, EOccasion::Close);
    };
    PushGesture(4, 0.25f);
    queue.PushLatency(64);
    queue.PushSize(500, 366);
    EXPECT_EQ(Heard(EOccasion::Turn), (Calls{"begin 4", "value 4 250", "end 4", "latency 64"}));
    PushGesture(4, 0.5f);
    EXPECT_EQ(Heard(EOccasion::Turn), (Calls{"begin 4", "value 4 500"})) << "it is closed once";
}

TEST_F(HostQueue, TellsAnEndThatIsPassedOverAlreadyWhenItIsClosedMeanwhile) {
    PushGesture(1, 0.5f);
    Heard(EOccasion::Turn);
    queue.PushValue(2, 0.25f);
    host.during = [&](const std::string&) { queue.Empty(host, EOccasion::Close); };
    EXPECT_EQ(Heard(EOccasion::Turn), (Calls{"value 2 250", "end 1"}));
}

TEST_F(HostQueue, LeavesWhatAnotherThreadAddsToTheOneThatIsEmptying) {
    host.during = [this](const std::string& call) {
        if (call != "value 4 250") return;
        std::thread([this] {
            PushGesture(5, 0.5f);
            queue.Empty(host, EOccasion::Turn);
        }).join(); // a host that waits for its other thread
        EXPECT_EQ(host.calls.back(), "value 4 250");
    };
    queue.PushValue(4, 0.25f);
    queue.PushValue(6, 0.75f);
    EXPECT_EQ(Heard(EOccasion::Turn), (Calls{"value 4 250", "value 6 750", "begin 5", "value 5 500"}));
}

TEST_F(HostQueue, LeavesTheClosingToTheThreadThatIsEmptying) {
    host.during = [this](const std::string& call) {
        if (call == "value 4 250") std::thread([this] { queue.Empty(host, EOccasion::Close); }).join();
    };
    PushGesture(4, 0.25f);
    EXPECT_EQ(Heard(EOccasion::Turn), (Calls{"begin 4", "value 4 250", "end 4"}));
}

TEST_F(HostQueue, EndsAnEmptyingHoweverFastEntriesAreAdded) {
    std::int32_t next = 0;
    host.during = [&](const std::string&) { queue.PushValue(++next % 100, 0.5f); };
    queue.PushValue(0, 0.5f);
    EXPECT_EQ(Heard(EOccasion::Turn).size(), 1 + CHostQueue::MostAdded);
    host.during = nullptr;
    EXPECT_EQ(Heard(EOccasion::Turn).size(), 1u) << "the rest in the next one";
    host.during = [&](const std::string&) { queue.PushValue(++next % 100, 0.5f); };
    queue.PushValue(0, 0.5f);
    EXPECT_EQ(Heard(EOccasion::Close).size(), 1 + CHostQueue::MostAdded);
}

TEST_F(HostQueue, LooksOnceAtWhatHasToWait) {
    constexpr int Held = 2000;
    PushGesture(1, 0.5f);
    Heard(EOccasion::Turn);
    for (int n = 0; n < Held;
         ++n) { // what the end holds back, with others between so that nothing is replaced
        queue.PushValue(1, 0.25f);
        queue.PushBegin(2);
    }
    host.asked = 0;
    EXPECT_EQ(Heard(EOccasion::Turn), Calls(Held, "begin 2"));
    EXPECT_LT(host.asked, 10 * Held) << "the time is asked for each entry that is looked at";
}

TEST_F(HostQueue, IsEmptiedByOneThreadAtATimeAndLosesNothing) {
    constexpr int Edits = 250;
    constexpr std::int32_t Threads = 4;
    std::atomic<int> inside = 0;
    std::atomic<bool> together = false;
    host.during = [&](const std::string&) {
        if (++inside > 1) together = true;
        --inside;
    };
    std::vector<std::thread> threads;
    for (std::int32_t index = 0; index < Threads; ++index) {
        threads.emplace_back([this, index] {
            for (int i = 1; i <= Edits; ++i) {
                queue.PushBegin(index);
                queue.PushValue(index, static_cast<float>(i) / Edits);
                queue.PushEnd(index);
                queue.Empty(host, i % 2 == 0 ? EOccasion::Turn : EOccasion::Close);
                host.nowMs += 40;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    queue.Empty(host, EOccasion::Close);
    EXPECT_FALSE(together);
    std::map<std::string, int> counts;
    std::map<std::string, std::string> last;
    for (const auto& call : host.calls) {
        const auto blank = call.find(' ');
        const auto kind = call.substr(0, blank);
        const auto index = call.substr(blank + 1, 1);
        ++counts[call.substr(0, blank + 2)];
        const std::map<std::string, std::string> before{
            {"begin", "end"}, {"value", "begin"}, {"end", "value"}};
        if (last[index].empty()) last[index] = "end";
        ASSERT_EQ(last[index], before.at(kind)) << call;
        last[index] = kind;
    }
    for (std::int32_t index = 0; index < Threads; ++index) {
        for (const auto* const kind : {"begin ", "value ", "end "})
            EXPECT_EQ(counts[kind + std::to_string(index)], Edits);
    }
}

// Random edits, and a plain account of what the host may hear of them.
TEST_F(HostQueue, KeepsEachParametersOrderWhateverHappens) {
    for (unsigned seed = 1; seed <= 200; ++seed) {
        CHostQueue random;
        CHeard heard;
        std::mt19937 next(seed);
        constexpr std::int32_t Indexes = 3;
        // All that was pushed, apart from what the rule of replacement takes away, by parameter; sizes and
        // latencies at the end.
        std::vector<Calls> pushed(Indexes + 1);
        std::string newest;     // what the last push was, while it waits
        std::string newestCall; // and as the host will hear it
        std::vector<std::uint32_t> valueMs(Indexes);
        std::vector<bool> hadValue(Indexes);
        std::vector<Calls> got(Indexes + 1);
        std::vector<bool> valueInThis(Indexes);
        heard.during = [&](const std::string& call) {
            heard.nowMs += static_cast<std::uint32_t>(next() % 10);
            if (call == newestCall) newest.clear();
            if (call.starts_with("latency") || call.starts_with("size")) {
                got[Indexes].push_back(call);
                return;
            }
            const auto index = static_cast<std::size_t>(call[call.find(' ') + 1] - '0');
            got[index].push_back(call);
            if (call.starts_with("value")) {
                valueMs[index] = heard.nowMs;
                hadValue[index] = valueInThis[index] = true;
            } else if (call.starts_with("end") && hadValue[index]) {
                EXPECT_FALSE(valueInThis[index]) << seed;
                EXPECT_GE(heard.nowMs - valueMs[index], 100u) << seed;
            }
        };
        int number = 0;
        const auto push = [&](std::size_t list, const std::string& call, bool isReplaced) {
            if (isReplaced)
                pushed[list].back() = call;
            else
                pushed[list].push_back(call);
            newestCall = call;
        };
        for (int step = 0; step < 300; ++step) {
            const auto index = static_cast<std::int32_t>(next() % Indexes);
            const auto list = static_cast<std::size_t>(index);
            ++number;
            switch (next() % 9) {
            case 0:
                random.PushBegin(index);
                push(list, "begin " + std::to_string(index), false);
                newest = "begin";
                break;
            case 1:
            case 2:
            case 3: {
                random.PushValue(index, static_cast<float>(number) / 1000.0f + 0.0001f);
                const auto kind = "value " + std::to_string(index);
                push(list, kind + " " + std::to_string(number), newest == kind);
                newest = kind;
                break;
            }
            case 4:
                random.PushEnd(index);
                push(list, "end " + std::to_string(index), false);
                newest = "end";
                break;
            case 5:
                random.PushLatency(number);
                push(Indexes, "latency " + std::to_string(number), false);
                newest = "latency";
                break;
            case 6:
                random.PushSize(number, number);
                push(Indexes, "size " + std::to_string(number) + " " + std::to_string(number),
                    newest == "size");
                newest = "size";
                break;
            default:
                heard.nowMs += static_cast<std::uint32_t>(next() % 120);
                valueInThis.assign(Indexes, false);
                random.Empty(heard, next() % 2 == 0 ? EOccasion::Turn : EOccasion::Idle);
            }
        }
        for (int i = 0; i < 400; ++i) { // as many as there can be ends of one parameter, one after the other
            heard.nowMs += 100;
            valueInThis.assign(Indexes, false);
            random.Empty(heard, EOccasion::Idle);
        }
        for (std::size_t list = 0; list < pushed.size(); ++list) ASSERT_EQ(got[list], pushed[list]) << seed;
        EXPECT_EQ(
            heard.calls.size(), pushed[0].size() + pushed[1].size() + pushed[2].size() + pushed[3].size());
    }
}

// A host that makes no idle calls

TEST_F(HostQueue, PassesEditsDirectlyAndNeverSizesOrLatencies) {
    PushGesture(4, 0.25f);
    queue.PushLatency(64);
    queue.PushSize(500, 366);
    EXPECT_EQ(Heard(EOccasion::Direct, 1000), (Calls{"begin 4", "value 4 250"}));
    EXPECT_EQ(Heard(EOccasion::Direct, 99), Calls{});
    EXPECT_EQ(Heard(EOccasion::Direct, 1), Calls{"end 4"});
    EXPECT_EQ(Heard(EOccasion::Direct, 10000), Calls{});
    EXPECT_EQ(Heard(EOccasion::Idle), (Calls{"latency 64", "size 500 366"}));
}

TEST_F(HostQueue, PassesNothingDirectlyAfterTheFirstIdleCall) {
    EXPECT_TRUE(queue.IsDirect());
    for (const auto occasion : {EOccasion::Turn, EOccasion::Direct, EOccasion::Close}) Heard(occasion);
    EXPECT_TRUE(queue.IsDirect()) << "none of them is one";
    Heard(EOccasion::Idle);
    EXPECT_FALSE(queue.IsDirect());
    queue.PushBegin(4);
    EXPECT_EQ(Heard(EOccasion::Direct, 100000), Calls{});
    Heard(EOccasion::Close);
    queue.PushBegin(5);
    EXPECT_EQ(Heard(EOccasion::Direct), Calls{}) << "not for another opening either";
    EXPECT_EQ(Heard(EOccasion::Idle), Calls{"begin 5"});
}

TEST_F(HostQueue, StopsPassingDirectlyWithTheCallInWhichTheFirstIdleCallComes) {
    host.during = [this](const std::string&) {
        std::thread([this] { queue.Empty(host, EOccasion::Idle); }).join();
    };
    queue.PushBegin(4);
    queue.PushValue(4, 0.25f);
    EXPECT_EQ(Heard(EOccasion::Direct), Calls{"begin 4"});
    host.during = nullptr;
    EXPECT_EQ(Heard(EOccasion::Idle), Calls{"value 4 250"});
}

TEST_F(HostQueue, LetsClosingTakeOverFromADirectCall) {
    host.during = [this](const std::string& call) {
        if (call != "begin 4") return;
        queue.PushLatency(64);
        queue.PushSize(500, 366);
        std::thread([this] { queue.Empty(host, EOccasion::Close); }).join();
        EXPECT_EQ(host.calls, (Calls{"begin 4", "value 4 250", "end 4", "latency 64"}))
            << "by the thread that closes, not later";
        queue.PushBegin(5);
    };
    PushGesture(4, 0.25f);
    Heard(EOccasion::Direct);
    host.during = nullptr;
    EXPECT_EQ(host.calls.size(), 4u) << "the direct emptying has ended with its call";
    EXPECT_EQ(Heard(EOccasion::Turn), Calls{"begin 5"}) << "and holds up no other";
}

TEST_F(HostQueue, TouchesNothingAfterTheCallInWhichTheInstanceEnds) {
    for (const auto occasion : {EOccasion::Direct, EOccasion::Turn, EOccasion::Idle}) {
        auto own = std::make_shared<CHostQueue>();
        auto road = std::make_unique<CHeard>();
        int calls = 0;
        road->during = [&](const std::string&) {
            ++calls;
            own->End();
        };
        own->PushBegin(4);
        own->PushValue(4, 0.25f);
        const int asked = [&] {
            own->Empty(*road, occasion);
            return road->asked.load();
        }();
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(asked, 1) << "for the entry that was passed on";
        own->Empty(*road, EOccasion::Close);
        EXPECT_EQ(calls, 1);
    }
}

// A host that refuses a size

namespace {

struct SWindow final : IHostWindow {
    void ResizeParent(std::int32_t width, std::int32_t height) noexcept override {
        sizes.emplace_back(width, height);
    }
    std::vector<std::pair<std::int32_t, std::int32_t>> sizes;
};
using Sizes = std::vector<std::pair<std::int32_t, std::int32_t>>;

} // namespace

TEST_F(HostQueue, ResizesTheHostsWindowWhereTheHostRefusesTo) {
    SWindow window;
    queue.SetWindow(&window);
    queue.PushSize(500, 366);
    EXPECT_EQ(Heard(EOccasion::Idle), Calls{"size 500 366"});
    EXPECT_EQ(window.sizes, Sizes{}) << "the host does so itself";
    host.resizes = false;
    queue.PushSize(600, 440);
    queue.PushLatency(64);
    EXPECT_EQ(Heard(EOccasion::Idle), (Calls{"size 600 440", "latency 64"}));
    EXPECT_EQ(window.sizes, (Sizes{{600, 440}}));
    queue.SetWindow(nullptr);
    queue.PushSize(700, 513);
    EXPECT_EQ(Heard(EOccasion::Idle), Calls{"size 700 513"});
    EXPECT_EQ(window.sizes.size(), 1u);
}

TEST_F(HostQueue, ResizesNoWindowOfAnEditorThatIsClosedByTheQuestion) {
    SWindow window;
    queue.SetWindow(&window);
    host.resizes = false;
    host.during = [this](const std::string&) { queue.SetWindow(nullptr); };
    queue.PushSize(500, 366);
    EXPECT_EQ(Heard(EOccasion::Idle), Calls{"size 500 366"});
    EXPECT_EQ(window.sizes, Sizes{});
}
