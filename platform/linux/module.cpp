#include "platform/module.h"

#include "platform/whole_file.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <dlfcn.h>
#include <string>
#include <string_view>

namespace KAV::Platform {

namespace {

const char Anchor = 0; // any address in this module will do

/// The kernel's name of the file that is mapped at `address`: absolute, whatever path the host passed to the
/// loader. The kernel's table has one line per mapping: "from-to rights offset device inode   path".
std::string MappedFile(std::uintptr_t address) {
    const auto table = ReadTable("/proc/self/maps");
    std::string_view lines = table;
    while (!lines.empty()) {
        const auto line = lines.substr(0, lines.find('\n'));
        lines.remove_prefix(std::min(line.size() + 1, lines.size()));
        std::uintptr_t from = 0;
        std::uintptr_t to = 0;
        const char* const end = line.data() + line.size();
        const auto dash = std::from_chars(line.data(), end, from, 16).ptr;
        if (dash == end || *dash != '-') continue;
        std::from_chars(dash + 1, end, to, 16);
        if (address < from || address >= to) continue;
        const auto path = line.find('/');
        return path == std::string_view::npos ? std::string() : std::string(line.substr(path));
    }
    return {};
}

} // namespace

void* ThisModule() noexcept {
    Dl_info info{};
    dladdr(&Anchor, &info);
    return info.dli_fbase;
}

std::filesystem::path ModuleFile() {
    Dl_info info{};
    if (dladdr(&Anchor, &info) != 0 && info.dli_fname != nullptr && info.dli_fname[0] == '/')
        return info.dli_fname;
    return MappedFile(reinterpret_cast<std::uintptr_t>(&Anchor));
}

void AtUnload(void (*)()) noexcept {}

} // namespace KAV::Platform
