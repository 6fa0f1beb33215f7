#pragma once

#include "vst/vst2.h"

#include <filesystem>

namespace KAV::Host {

/// A library file with a VST 2 effect, loaded for the life of the object.
class CEffectLibrary final {
public:
    /// Throws CFailure if the file is missing, is not a library, or has no entry point of an effect.
    explicit CEffectLibrary(const std::filesystem::path& file);
    ~CEffectLibrary();
    CEffectLibrary(const CEffectLibrary&) = delete;
    CEffectLibrary& operator=(const CEffectLibrary&) = delete;

    const std::filesystem::path& File() const noexcept { return _file; }
    VST::PluginEntry Entry() const noexcept { return _entry; }

private:
    std::filesystem::path _file; ///< absolute
    void* _library = nullptr;
    VST::PluginEntry _entry = nullptr;
};

} // namespace KAV::Host
