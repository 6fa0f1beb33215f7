#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

namespace KAV::Tests {

/// Threads that start together, and go on until each of them has done enough: a thread that the system starts
/// late, or seldom runs, still meets all the others.
class CTogether final {
public:
    /// This many times each thread comes round, unless Add() gives another number.
    static constexpr int Rounds = 100;

    /// `round` is called with 0, 1, 2 and so on. Threads are added before Run().
    void Add(std::function<void(int)> round, int rounds = Rounds) {
        _members.push_back({std::move(round), rounds});
    }

    /// Ends when each thread has come round as often as it should and the time is over.
    void Run(std::chrono::seconds time = {}) {
        const auto end = std::chrono::steady_clock::now() + time;
        std::atomic<std::size_t> missing{_members.size()}; // no latch: the Windows library's may never open
        std::atomic<std::size_t> busy{_members.size()};
        std::vector<std::thread> threads;
        for (const SMember& member : _members) {
            threads.emplace_back([&missing, &busy, &member, end] {
                --missing;
                while (missing > 0) std::this_thread::yield();
                for (int n = 0; n < member.rounds || busy > 0 || std::chrono::steady_clock::now() < end;
                     ++n) {
                    member.round(n);
                    if (n + 1 == member.rounds) --busy;
                    // A thread that has done enough leaves the processors to the others: with none to spare,
                    // it would add work faster than they can do it.
                    if (n + 1 >= member.rounds) std::this_thread::sleep_for(std::chrono::microseconds(200));
                }
            });
        }
        for (auto& thread : threads) thread.join();
    }

private:
    struct SMember {
        std::function<void(int)> round;
        int rounds;
    };
    std::vector<SMember> _members;
};

} // namespace KAV::Tests
