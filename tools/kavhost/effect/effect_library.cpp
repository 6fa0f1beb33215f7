#include "tools/kavhost/effect/effect_library.h"

#include "platform/library.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"

#include <string>

namespace KAV::Host {

CEffectLibrary::CEffectLibrary(const std::filesystem::path& file)
    : _file(std::filesystem::absolute(file)) { // a bare name would be looked up in the system's folders
    if (!std::filesystem::exists(_file)) throw CFailure(Utf8(file) + ": no such file");
    if (!std::filesystem::is_regular_file(_file)) throw CFailure(Utf8(file) + ": not a file");
    std::string reason;
    _library = Platform::OpenLibrary(_file, reason);
    if (_library == nullptr) throw CFailure(Utf8(file) + ": cannot be loaded as a library: " + reason);
    for (const char* name : {"VSTPluginMain", "main"}) { // effects older than 2.4 only have the second
        _entry = reinterpret_cast<VST::PluginEntry>(Platform::FindSymbol(_library, name));
        if (_entry != nullptr) return;
    }
    Platform::CloseLibrary(_library);
    throw CFailure(Utf8(file) + ": not a VST 2 effect: no entry point \"VSTPluginMain\" or \"main\"");
}

CEffectLibrary::~CEffectLibrary() {
    Platform::CloseLibrary(_library);
}

} // namespace KAV::Host
