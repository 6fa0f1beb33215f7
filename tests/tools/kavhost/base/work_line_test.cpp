#include "tools/kavhost/base/work_line.h"

#include <atomic>
#include <gtest/gtest.h>
#include <latch>
#include <numeric>
#include <stdexcept>
#include <vector>

using namespace KAV::Host;

TEST(WorkLine, WorksOnEveryItemInOrder) {
    std::vector<int> done;
    CWorkLine<int> line(3, [&](int item) { done.push_back(item); });
    for (int i = 0; i < 1000; ++i) line.Put(i);
    line.Finish();
    std::vector<int> expected(1000);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(done, expected);
}

TEST(WorkLine, WorksOnAThreadOfItsOwn) {
    std::thread::id worker;
    CWorkLine<int> line(1, [&](int) { worker = std::this_thread::get_id(); });
    line.Put(0);
    line.Finish();
    EXPECT_NE(worker, std::this_thread::get_id());
}

TEST(WorkLine, LetsNoMoreItemsWaitThanItMay) {
    std::latch begin(1);
    std::atomic<int> put{0};
    CWorkLine<int> line(2, [&](int) { begin.wait(); });
    std::thread putter([&] {
        for (int i = 0; i < 10; ++i) {
            line.Put(i);
            ++put;
        }
    });
    while (put < 3) std::this_thread::yield(); // one at work and two that wait
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    EXPECT_EQ(put, 3);
    begin.count_down();
    putter.join();
    line.Finish();
    EXPECT_EQ(put, 10);
}

TEST(WorkLine, ThrowsWhatItsWorkHasThrownAndStopsThere) {
    std::latch full(1);
    int done = 0;
    CWorkLine<int> line(2, [&](int item) {
        if (item == 2) {
            full.wait();
            throw std::runtime_error("two");
        }
        ++done;
    });
    for (int i = 0; i < 5; ++i) line.Put(i); // now one is at work, and two wait
    full.count_down();
    EXPECT_THROW(line.Put(5), std::runtime_error);
    EXPECT_THROW(line.Finish(), std::runtime_error);
    EXPECT_EQ(done, 2);
}

TEST(WorkLine, ThrowsAnErrorOfTheLastItemAtTheEnd) {
    CWorkLine<int> line(2, [](int) { throw std::runtime_error("one"); });
    line.Put(1);
    EXPECT_THROW(line.Finish(), std::runtime_error);
}

TEST(WorkLine, DropsWhatWaitsWhenItEnds) {
    std::latch begun(1), end(1);
    int done = 0;
    std::thread ender;
    {
        CWorkLine<int> line(8, [&](int) {
            begun.count_down();
            end.wait();
            ++done;
        });
        line.Put(0);
        begun.wait();
        for (int i = 1; i < 5; ++i) line.Put(i);
        ender = std::thread([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50)); // the line is ending meanwhile
            end.count_down();
        });
    }
    ender.join();
    EXPECT_EQ(done, 1);
}
