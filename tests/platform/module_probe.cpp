// A library that returns its own file, wherever it was loaded from.

#include "platform/module.h"
#include "utils/path.h"
#include "utils/text.h"

#include <cstring>

extern "C" __attribute__((visibility("default"))) std::size_t ProbeModulePath(
    char* text, std::size_t capacity);
extern "C" __attribute__((visibility("default"))) std::size_t ProbeModulePath(
    char* text, std::size_t capacity) {
    const auto path = KAV::Utils::ToUtf8(KAV::Utils::GetModulePath());
    if (path.size() < capacity) std::memcpy(text, path.c_str(), path.size() + 1);
    return path.size();
}
