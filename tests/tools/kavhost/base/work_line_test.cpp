#include "tools/kavhost/base/work_line.h"

#include <atomic>
#include <future>
#include <gtest/gtest.h>
#include <numeric>
#include <stdexcept>
#include <vector>

using namespace KAV::Host;

namespace {

/// Opens once for all who wait. std::latch of this library's Windows build can miss its own wake-up.
class CGate final {
public:
    void Open() { _opened.set_value(); }
    void Wait() const { _isOpen.wait(); }

private:
    std::promise<void> _opened;
    std::shared_future<void> _isOpen = _opened.get_future().share();
};

} // namespace

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
    CGate begin;
    std::atomic<int> put{0};
    CWorkLine<int> line(2, [&](int) { begin.Wait(); });
    std::thread putter([&] {
        for (int i = 0; i < 10; ++i) {
            line.Put(i);
            ++put;
        }
    });
    while (put < 3) std::this_thread::yield(); // one at work and two that wait
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    EXPECT_EQ(put, 3);
    begin.Open();
    putter.join();
    line.Finish();
    EXPECT_EQ(put, 10);
}

TEST(WorkLine, ThrowsWhatItsWorkHasThrownAndStopsThere) {
    CGate full;
    int done = 0;
    CWorkLine<int> line(2, [&](int item) {
        if (item == 2) {
            full.Wait();
            throw std::runtime_error("two");
        }
        ++done;
    });
    for (int i = 0; i < 5; ++i) line.Put(i); // now one is at work, and two wait
    full.Open();
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
    CGate begun;
    CGate end;
    int done = 0;
    std::thread ender;
    {
        CWorkLine<int> line(8, [&](int) {
            begun.Open();
            end.Wait();
            ++done;
        });
        line.Put(0);
        begun.Wait();
        for (int i = 1; i < 5; ++i) line.Put(i);
        ender = std::thread([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50)); // the line is ending meanwhile
            end.Open();
        });
    }
    ender.join();
    EXPECT_EQ(done, 1);
}
