#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace KAV {

/// What writes and reads the device's whole state. `flags`: PatchFlag bits. The order of the operations is
/// fixed.
class CPatchSaveLoad {
public:
    CPatchSaveLoad(const CPatchSaveLoad&) = delete;
    CPatchSaveLoad& operator=(const CPatchSaveLoad&) = delete;

    /// Takes a patch in any form: a text, up to its first zero, or the older binary one. False when the data
    /// is neither, and then nothing changes.
    virtual bool ApplyPatchData(const void* data, std::size_t size, std::uint32_t flags) = 0;
    /// Takes what can be found in a text. False for an empty one, which changes nothing.
    virtual bool ReadPatch(std::string_view text, std::uint32_t flags) = 0;
    /// Where to find the present state as a text with a closing zero; gives its size with the zero, 0 for a
    /// null pointer. The text stays until the next call.
    virtual std::size_t WritePatch(const char** data, std::uint32_t flags) = 0;
    /// Loads a patch of the list. One that isn't there, or can't be read, does nothing; without `force`
    /// neither does the present one. With it, settings are taken that otherwise a project alone brings.
    virtual void SelectPatch(std::int32_t index, bool force) = 0;

protected:
    CPatchSaveLoad() = default;
    ~CPatchSaveLoad() = default;
};

} // namespace KAV
