#include "platform/system_info.h"

#include "platform/shell_variable.h"
#include "platform/whole_file.h"
#include "platform/x11/screen.h"

#include <algorithm>
#include <array>
#include <boost/uuid/name_generator_sha1.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <ctime>
#include <sys/utsname.h>
#include <unistd.h>

namespace KAV::Platform {

namespace {

/// The value of the first line "name : value" in one of the kernel's tables.
std::string TableValue(const std::string& table, const std::string& name) {
    for (std::size_t line = 0; line < table.size();) {
        const auto end = std::min(table.find('\n', line), table.size());
        const auto colon = table.find(':', line);
        if (colon < end && table.compare(line, name.size(), name) == 0 &&
            table.find_first_not_of(" \t", line + name.size()) == colon) {
            const auto value = table.find_first_not_of(" \t", colon + 1);
            return value < end ? table.substr(value, end - value) : std::string();
        }
        line = end + 1;
    }
    return {};
}

std::uint64_t Kilobytes(const std::string& table, const char* name) {
    const auto value = TableValue(table, name);
    std::uint64_t kilobytes = 0;
    std::from_chars(value.data(), value.data() + value.size(), kilobytes);
    return kilobytes * 1024;
}

/// The machine's identifier, 32 random hexadecimal digits chosen when the system was installed.
std::string RawMachineIdentifier() {
    for (const char* const file : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
        auto text = ReadTable(file).substr(0, 32);
        if (text.size() == 32 && std::all_of(text.begin(), text.end(),
                                     [](unsigned char digit) { return std::isxdigit(digit) != 0; })) {
            return text;
        }
    }
    return {};
}

utsname Kernel() noexcept {
    utsname kernel{};
    uname(&kernel);
    return kernel;
}

} // namespace

std::uint32_t TickMs() noexcept {
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<std::uint32_t>(
        static_cast<std::uint64_t>(now.tv_sec) * 1000u + static_cast<std::uint64_t>(now.tv_nsec) / 1000000u);
}

std::tm LocalTime() noexcept {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    if (localtime_r(&now, &parts) == nullptr) return {};
    return parts;
}

std::string SystemName() {
    std::string name;
    for (const char* const file : {"/etc/os-release", "/usr/lib/os-release"}) {
        if (name.empty()) name = ShellVariable(ReadTable(file), "PRETTY_NAME");
    }
    const utsname kernel = Kernel();
    const auto version = std::string(kernel.sysname) + " " + kernel.release;
    return name.empty() ? version : name + ", " + version;
}

std::string ProcessorName() {
    return TableValue(ReadTable("/proc/cpuinfo"), "model name");
}

std::string MachineName() {
    return Kernel().nodename;
}

std::string MachineIdentifier() {
    const auto raw = RawMachineIdentifier();
    if (raw.empty()) return {};
    // A name-based UUID: a hash of the user's number, with the machine's identifier as its key.
    boost::uuids::uuid key{};
    for (std::size_t i = 0; i < key.size(); ++i)
        std::from_chars(&raw[2 * i], &raw[2 * i] + 2, key.data[i], 16);
    const boost::uuids::name_generator_sha1 hash(key);
    return boost::uuids::to_string(hash("KAV Sorrel Limiter/" + std::to_string(geteuid())));
}

SMemory PhysicalMemory() noexcept {
    try {
        const auto table = ReadTable("/proc/meminfo");
        return {Kilobytes(table, "MemAvailable"), Kilobytes(table, "MemTotal")};
    } catch (...) { // no memory to read it into
        return {};
    }
}

SDisplay Display() {
    return ScreenOfDisplay();
}

SDisplay DisplayAtOnce() {
    return ScreenOfDisplay(std::chrono::seconds(1));
}

} // namespace KAV::Platform
