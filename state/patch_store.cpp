// Patches as files, the two sides, and copies of groups.

#include "device/parameter_table.h"
#include "patch/patch_files.h"
#include "patch/patch_flags.h"
#include "patch/patch_formats.h"
#include "state/device_state.h"
#include "utils/path.h"

#include <memory>
#include <utility>

namespace KAV {

/// Empty when there is nothing to take. The user sees a box for a file that belongs to another plug-in.
std::string CDeviceState::LoadPatchFile(std::u16string_view path) {
    auto file = ReadPatchFile(path);
    if (file.isForeign) _errors.Tell(ForeignPatchMessage(path));
    return std::move(file.data);
}

void CDeviceState::SelectPatch(std::int32_t index, bool force) {
    std::u16string name;
    {
        const Turn turn(_turns);
        if (!force && index == _current) return;
        if (index < 0 || index >= _panel.patch.Count()) return;
        name = _panel.patch.Names()[static_cast<std::size_t>(index)];
    }
    LoadListed(index, name, force);
}

void CDeviceState::ChoosePatch(std::int32_t index, std::u16string name) {
    {
        const Turn turn(_turns);
        index = _panel.patch.Find(index, name);
        if (index >= 0 && index == _current) {
            if (_panel.patch.Choose(index)) _panel.Touch();
            return;
        }
        // Before the file is read: whatever comes of it, the widget with the choice shows what is then true.
        _panel.Touch();
        if (index < 0) return;
    }
    LoadListed(index, name, false);
}

void CDeviceState::LoadListed(std::int32_t index, const std::u16string& name, bool force) {
    const auto path = PatchPath(name);
    if (path.empty()) return;
    const auto data = LoadPatchFile(path);
    if (data.empty()) return;
    const auto patch = Prepare(data.data(), data.size());
    if (patch.text.empty()) return;
    Turn turn(_turns);
    index = _panel.patch.Find(index, name); // the list may be another than before the file was read
    if (index >= 0) {
        _current = index;
        _device.SetProgram(index, false);
    }
    Read(turn, patch, force ? InstanceDefaultFlags : 0);
    if (index != _panel.patch.Place() && _panel.patch.Choose(index)) _panel.Touch();
    _current = _panel.patch.Place();
}

bool CDeviceState::SavePatch(std::u16string_view path, std::uint32_t flags) {
    if (!path.empty()) return SavePatchAs(path, flags);
    const auto isSaved = std::make_shared<bool>(false);
    _questions.AskToSave({u"KAV Preset File||*.kvp", u"USER_" + PatchName(), PatchFolder()}, u"kvp",
        [this, flags, isSaved](std::u16string_view chosen) {
            if (!chosen.empty()) *isSaved = SavePatchAs(chosen, flags);
        });
    return *isSaved;
}

bool CDeviceState::SavePatchAs(std::u16string_view path, std::uint32_t flags) {
    const auto target = WithExtension(path, u"kvp");
    auto text = PatchText(flags);
    text += '\0'; // part of the file: readers of old took the file's content as it is
    WriteUserFile(target, text);
    auto names = PatchNames();
    const Turn turn(_turns);
    if (_panel.patch.SetNames(std::move(names))) _panel.Touch();
    ShowPatchName(turn, FileTitle(target));
    return true;
}

bool CDeviceState::SaveAsDefault() {
    const auto folder = PatchFolder();
    return !folder.empty() && SavePatch(folder + u"- Full Reset -.kvp", InstanceDefaultFlags);
}

bool CDeviceState::OpenPatch(std::u16string_view path) {
    if (!path.empty()) return OpenPatchFile(path);
    const auto isOpened = std::make_shared<bool>(false);
    _questions.AskToOpen(
        {u"Preset File||*.fxp;*.kvp|||VST Preset File||*.fxp|||KAV Preset File||*.kvp", {}, PatchFolder()},
        [this, isOpened](std::u16string_view chosen) { *isOpened = OpenPatchFile(chosen); });
    return *isOpened;
}

bool CDeviceState::OpenPatchFile(std::u16string_view path) {
    const auto extension = Utils::GetExtension(path);
    if (extension != u"fxp" && extension != u"kvp") return false;
    const auto data = LoadPatchFile(path);
    if (data.empty()) return false; // after a box, during which the instance may have ended
    return ApplyPatchData(data.data(), data.size(), 0);
}

void CDeviceState::ShowPatchName(const Turn&, std::u16string_view name) {
    if (_panel.patch.Show(name)) _panel.Touch();
    _current = _panel.patch.Place();
}

void CDeviceState::SetPatchName(std::u16string_view name) {
    const Turn turn(_turns);
    ShowPatchName(turn, name);
}

std::u16string CDeviceState::PatchName() {
    const Turn turn(_turns);
    return _panel.patch.Name();
}

std::u16string CDeviceState::PatchNameAt(std::int32_t index) {
    const Turn turn(_turns);
    if (index < 0 || index >= _panel.patch.Count()) return {};
    return _panel.patch.Names()[static_cast<std::size_t>(index)];
}

std::int32_t CDeviceState::CurrentPatch() {
    const Turn turn(_turns);
    return _current;
}

void CDeviceState::SwitchAB(std::uint8_t side) {
    const Turn turn(_turns);
    if (_panel.side == side) return;
    EndRoutingEdit(turn); // the first time no patch is read, which would do so
    _panel.Put(_panel.side, side);
    auto present = Write(turn, KAV::Routing);
    const auto other = std::exchange(_otherSide, std::move(present));
    ApplyPatchData(other.data(), other.size(), KAV::Routing);
}

void CDeviceState::CopyAB() {
    const Turn turn(_turns);
    _otherSide = Write(turn, 0);
}

void CDeviceState::CopyGroup(int from, int to) {
    if (from == to) return;
    const Turn turn(_turns);
    const auto text = Patch::CopyGroup(Write(turn, EffectiveValues), from, to,
        [](std::int32_t tag) { return HostIndexOf(tag) != NoHostIndex; });
    ApplyPatchData(text.data(), text.size(), 0);
}

} // namespace KAV
