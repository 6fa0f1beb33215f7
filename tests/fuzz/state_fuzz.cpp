// An instance gets any bytes as a patch, as a file in the older format and as names, and groups are copied.
// Whatever it accepts, its state can be written, read back, and written again with the same result.

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "device_gui/xxx_gui.h"
#include "patch/patch_flags.h"
#include "patch/patch_formats.h"
#include "plugin/device_dsp.h"
#include "utils/path.h"
#include "utils/text.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <vector>

using namespace KAV;

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

/// An instance of a user without files.
CDeviceDSP& Device() {
    static const auto device = [] {
        Utils::UseDocumentsFolder(u"");
        return std::make_unique<CDeviceDSP>(nullptr);
    }();
    return *device;
}

/// The writer adds a tab to each routing that a reader has left without its group's number.
std::string WithoutTabs(std::string text) {
    std::erase(text, '\t');
    return text;
}

void CheckState(CDeviceDSP& device) {
    for (const std::int32_t tag : HostParamTable()) {
        const float value = device.GetParam(tag, Normalized);
        Require(value >= 0.0f && value <= 1.0f);
    }
    Require(device.GetCurrentGroup() >= 0 && device.GetCurrentGroup() < 4);
    Require(device.GUI().Width() >= 500 && device.GUI().Height() > 0);
    const char* data = nullptr;
    const std::size_t size = device.GUI().WritePatch(&data, HostChunkFlags);
    Require(size > 1 && data[size - 1] == '\0' && Patch::IsText({data, size}));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    CDeviceDSP& device = Device();
    CXXXGUI& gui = device.GUI();
    const std::uint32_t flags = data[0];
    const std::uint8_t kind = data[1];
    const std::vector<char> bytes(data + 2, data + size); // whose end the sanitizer guards
    device.SetCurrentGroup(kind >> 2 & 3);
    switch (kind & 3) {
    case 0:
        gui.ApplyPatchData(bytes.data(), bytes.size(), flags);
        break;
    case 1: // most bytes aren't a patch: these are lines of one
        gui.ReadPatch({bytes.data(), bytes.size()}, flags);
        break;
    case 2: {
        const auto patch = Patch::PatchFromFxp(bytes, u"a name");
        gui.ApplyPatchData(patch.data(), patch.size(), flags);
        break;
    }
    default:
        gui.State().SetPatchName(Utils::ToUtf16({bytes.data(), bytes.size()}));
        device.SetRouting({bytes.data(), bytes.size()}, kind >> 4 & 3);
        gui.State().ApplyRouting();
        gui.State().CopyGroup(kind >> 6, device.GetCurrentGroup());
        break;
    }
    CheckState(device);
    // After it has been read back once, a state no longer changes: names have been cut at marks of the text,
    // and macros have moved switches, which keep no value apart from their offset.
    gui.ReadPatch(gui.State().PatchText(HostChunkFlags), HostChunkFlags);
    gui.ReadPatch(gui.State().PatchText(0), 0);
    const auto settled = gui.State().PatchText(0);
    gui.ReadPatch(settled, 0);
    Require(WithoutTabs(gui.State().PatchText(0)) == WithoutTabs(settled));
    return 0;
}
