#include "device/parameter_table.h"
#include "device_gui/patch_display.h"
#include "device_gui/xxx_gui.h"
#include "patch/patch_files.h"
#include "patch/patch_flags.h"
#include "patch/patch_formats.h"
#include "utils/dialogs.h"
#include "utils/path.h"

#include <utility>

namespace KAV {

std::vector<std::u16string> CXXXGUI::Patches() const {
    const GUI::CLock lock(*this);
    const auto* const display = Find<CPatch>();
    return display != nullptr ? display->Items() : PatchNames();
}

/// Empty when there is nothing to take. The user is told of a file that belongs to another plug-in.
std::string CXXXGUI::LoadPatchFile(std::u16string_view a_sPath) {
    auto file = ReadPatchFile(a_sPath);
    if (file.isForeign) TellOfError(ForeignPatchMessage(a_sPath));
    return std::move(file.data);
}

void CXXXGUI::SelectPatch(std::int32_t a_nIndex, bool a_bForce) {
    if (!a_bForce && a_nIndex == CurrentPatch()) return;
    const auto names = Patches();
    if (a_nIndex < 0 || static_cast<std::size_t>(a_nIndex) >= names.size()) return;
    const auto path = PatchPath(names[static_cast<std::size_t>(a_nIndex)]);
    if (path.empty()) return;
    const auto data = LoadPatchFile(path);
    if (data.empty()) return;
    const CChange change(*this);
    _nPatch = a_nIndex;
    _piDSP.SetProgram(a_nIndex, false);
    ApplyPatchData(data.data(), data.size(), a_bForce ? InstanceDefaultFlags : 0);
    if (auto* const display = Find<CPatch>()) {
        display->ShowItem(a_nIndex);
        _nPatch = display->Item();
    }
}

bool CXXXGUI::SavePatch(std::u16string_view a_sPath, std::uint32_t a_nFlags) {
    std::u16string path(a_sPath);
    if (path.empty())
        path = Utils::Dialogs().SaveFile({u"KAV Preset File||*.kvp", u"USER_" + PatchName(), PatchFolder()});
    if (path.empty()) return false;
    path = WithExtension(path, u"kvp");
    auto text = PatchText(a_nFlags);
    text += '\0'; // part of the file: readers of old took the file's content as it is
    WriteUserFile(path, text);
    const CChange change(*this);
    if (auto* const display = Find<CPatch>()) display->SetItems(PatchNames());
    SetPatchName(FileTitle(path));
    return true;
}

bool CXXXGUI::SaveAsDefault() {
    const auto folder = PatchFolder();
    return !folder.empty() && SavePatch(folder + u"- Full Reset -.kvp", InstanceDefaultFlags);
}

bool CXXXGUI::OpenPatch(std::u16string_view a_sPath) {
    std::u16string path(a_sPath);
    if (path.empty()) {
        path = Utils::Dialogs().OpenFile(
            {u"Preset File||*.fxp;*.kvp|||VST Preset File||*.fxp|||KAV Preset File||*.kvp", {},
                PatchFolder()});
    }
    const auto extension = Utils::GetExtension(path);
    if (extension != u"fxp" && extension != u"kvp") return false;
    const auto data = LoadPatchFile(path);
    return ApplyPatchData(data.data(), data.size(), 0);
}

void CXXXGUI::SwitchAB(std::uint8_t a_nSide) {
    const CChange change(*this);
    if (_nSide == a_nSide) return;
    _nSide = a_nSide;
    auto present = PatchText(KAV::Routing);
    const auto other = std::exchange(_sOtherSide, std::move(present));
    ApplyPatchData(other.data(), other.size(), KAV::Routing);
}

void CXXXGUI::CopyAB() {
    const CChange change(*this);
    _sOtherSide = PatchText(0);
}

void CXXXGUI::CopyGroup(int a_nFrom, int a_nTo) {
    if (a_nFrom == a_nTo) return;
    const CChange change(*this);
    const auto text = Patch::CopyGroup(PatchText(EffectiveValues), a_nFrom, a_nTo,
        [](std::int32_t a_nTag) { return HostIndexOf(a_nTag) != NoHostIndex; });
    ApplyPatchData(text.data(), text.size(), 0);
}

} // namespace KAV
