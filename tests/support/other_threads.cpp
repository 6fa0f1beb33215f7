#include "tests/support/other_threads.h"

#include "tests/support/file_text.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

namespace KAV::Tests {

namespace fs = std::filesystem;

std::set<int> Threads() {
    // A sanitizer starts its own thread together with the first one.
    static const bool hasBegun = (std::thread([] {}).join(), true);
    static_cast<void>(hasBegun);
    std::set<int> numbers;
    for (const auto& entry : fs::directory_iterator("/proc/self/task"))
        numbers.insert(std::stoi(entry.path().filename().string()));
    return numbers;
}

std::set<int> AwaitNewThreads(const std::set<int>& before, std::size_t count) {
    std::set<int> started;
    for (int i = 0; i < 6000; ++i) {
        started.clear();
        std::ranges::set_difference(Threads(), before, std::inserter(started, started.end()));
        if (started.size() == count) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return started;
}

bool BlocksAllSignals(int thread) {
    const auto status = ReadText(fs::path("/proc/self/task") / std::to_string(thread) / "status");
    const std::string name = "SigBlk:\t";
    const auto place = status.find(name);
    if (place == std::string::npos) return false;
    const std::uint64_t blocked = std::stoull(status.substr(place + name.size(), 16), nullptr, 16);
    std::uint64_t all = ~std::uint64_t{0};
    for (const int number : {SIGKILL, SIGSTOP, 32, 33}) // the last two are the C library's own
        all &= ~(std::uint64_t{1} << (number - 1));
    return (blocked & all) == all;
}

} // namespace KAV::Tests
