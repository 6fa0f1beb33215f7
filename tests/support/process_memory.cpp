#include "tests/support/process_memory.h"

#if defined(_WIN32)
#include <windows.h>

#include <psapi.h>
#else
#include <fstream>
#include <unistd.h>
#endif

namespace KAV::Tests {

#if defined(_WIN32)
std::size_t ResidentBytes() {
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    return counters.WorkingSetSize;
}
#else
std::size_t ResidentBytes() {
    std::ifstream file("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    file >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}
#endif

} // namespace KAV::Tests
