#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace KAV {

/// Writes and reads the whole state of the device. `flags`: PatchFlag bits. The order of the operations is
/// fixed.
class CPatchSaveLoad {
public:
    CPatchSaveLoad(const CPatchSaveLoad&) = delete;
    CPatchSaveLoad& operator=(const CPatchSaveLoad&) = delete;

    /// Takes a patch in any form: a text, up to its first zero, or the older binary format. False if the data
    /// is neither, and then nothing changes.
    virtual bool ApplyPatchData(const void* data, std::size_t size, std::uint32_t flags) = 0;
    /// Takes every element that it finds in a text. False for an empty text, which changes nothing.
    virtual bool ReadPatch(std::string_view text, std::uint32_t flags) = 0;
    /// Points `*data` at the current state as a text with a closing zero. Returns its size including the
    /// zero, or 0 for a null pointer. The text is valid until the next call.
    virtual std::size_t WritePatch(const char** data, std::uint32_t flags) = 0;
    /// Loads a patch of the list. Does nothing if it doesn't exist or can't be read, or, without `force`, if
    /// it is already current. With `force` it also takes settings that are otherwise only read from a
    /// project.
    virtual void SelectPatch(std::int32_t index, bool force) = 0;

protected:
    CPatchSaveLoad() = default;
    ~CPatchSaveLoad() = default;
};

} // namespace KAV
