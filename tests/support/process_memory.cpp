#include "tests/support/process_memory.h"

#if defined(_WIN32)
#include <windows.h>

#include <psapi.h>
#else
#include <fstream>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace KAV::Tests {

#if defined(_WIN32)
namespace {

PROCESS_MEMORY_COUNTERS Counters() {
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    return counters;
}

} // namespace

std::size_t ResidentBytes() {
    return Counters().WorkingSetSize;
}

/// This process's own committed pages. The system's count of them doesn't change under Wine.
std::size_t ReservedBytes() {
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    const char* place = nullptr;
    while (VirtualQuery(place, &region, sizeof(region)) == sizeof(region)) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
        place = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
    }
    return bytes;
}

std::optional<std::size_t> PageFaultsOfThisThread() {
    return std::nullopt;
}
#else
namespace {

/// A number of pages from the system's account of this process, as bytes.
std::size_t Bytes(std::size_t place) {
    std::ifstream file("/proc/self/statm");
    std::size_t pages = 0;
    for (std::size_t i = 0; i <= place; ++i) file >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

} // namespace

std::size_t ResidentBytes() {
    return Bytes(1);
}

std::size_t ReservedBytes() {
    return Bytes(0);
}

std::size_t CommittedBytes() {
    std::ifstream file("/proc/self/maps");
    std::size_t bytes = 0;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::size_t begin = 0;
        std::size_t end = 0;
        char dash = 0;
        std::string rights;
        if (words >> std::hex >> begin >> dash >> end >> rights && rights == "rw-p") bytes += end - begin;
    }
    return bytes;
}

std::size_t AnonymousBytes() {
    std::ifstream file("/proc/self/smaps_rollup");
    std::string word;
    std::size_t kilobytes = 0;
    while (file >> word && word != "Anonymous:") {}
    file >> kilobytes;
    return kilobytes * 1024;
}

std::optional<std::size_t> PageFaultsOfThisThread() {
    rusage usage{};
    if (getrusage(RUSAGE_THREAD, &usage) != 0) return std::nullopt;
    return static_cast<std::size_t>(usage.ru_minflt + usage.ru_majflt);
}
#endif

} // namespace KAV::Tests
