// A plug-in that breaks the rules: it exports one name too many and two too few, and on Linux needs the C++
// run-time library, on Windows version 8 of the system.
#include <stdexcept>
#include <string>

#if defined(_WIN32)
#define EXPORT extern "C" __attribute__((dllexport))
#else
#define EXPORT extern "C" __attribute__((visibility("default")))
#endif

EXPORT int VSTPluginMain(const char* text) {
    if (!text) throw std::invalid_argument("text");
    return static_cast<int>(std::string(text).size());
}

EXPORT int Stray() {
    return 0;
}
