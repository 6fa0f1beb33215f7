#include "device/value_flags.h"
#include "device_gui/channel_button.h"
#include "device_gui/routing_display.h"
#include "device_gui/xxx_gui.h"
#include "patch/patch_files.h"
#include "patch/routing_files.h"
#include "routing/routing_document.h"
#include "utils/dialogs.h"
#include "utils/marked_text.h"
#include "utils/path.h"
#include "utils/text.h"

#include <algorithm>

namespace KAV {

std::string CXXXGUI::GetRouting(int a_nGroup) {
    const GUI::CLock lock(*this);
    return _piDSP.GetRouting(a_nGroup < 0 ? _piDSP.GetCurrentGroup() : a_nGroup);
}

void CXXXGUI::SetRouting(std::string_view a_sText, int a_nGroup) {
    if (a_sText.empty()) return;
    const CChange change(*this);
    const int current = _piDSP.GetCurrentGroup();
    const int group = a_nGroup < 0 ? current : a_nGroup;
    _piDSP.SetRouting(a_sText, group);
    if (group == current) ApplyRouting();
}

void CXXXGUI::ApplyRouting() {
    const CChange change(*this);
    const auto text = GetRouting(-1);
    if (!text.empty()) {
        const std::size_t entries = RoutingEntryCount(text);
        Utils::CPieces names(RoutingValue(text, "<ch_names"), RoutingSeparator);
        std::size_t entry = 0;
        for (auto* const button : FindAll<CChannelBtn>()) {
            const bool isThere = entry++ < entries;
            if (!isThere) SetParam(button->Id(), 0.0f, Normalized | GroupRelative);
            button->SetText(names.Next() ? Utils::ToUtf16(names.Piece()) : std::u16string());
            button->SetVisible(isThere);
        }
    }
    if (auto* const display = Find<CRouting>()) display->SetText(Utils::ToUtf16(RoutingValue(text, "<name")));
}

void CXXXGUI::SelectRouting(std::int32_t a_nIndex, bool a_bAllGroups) {
    const CChange change(*this);
    const auto* const display = Find<CRouting>();
    if (display == nullptr || a_nIndex < 0 || a_nIndex >= display->ItemCount()) return;
    const auto text = ReadRoutingFile(display->Items()[static_cast<std::size_t>(a_nIndex)]);
    if (!a_bAllGroups) {
        SetRouting(text, -1);
        return;
    }
    for (int group = 0; group < _piDSP.GetGroupCount(); ++group) SetRouting(text, group);
}

void CXXXGUI::SaveRouting(std::u16string_view a_sPath) {
    auto* const display = Find<CRouting>();
    if (display == nullptr) return;
    std::u16string path(a_sPath);
    if (path.empty()) {
        path = Utils::Dialogs().SaveFile(
            {u"KAV Routing File||*.kvt", display->Text() + u" (User)", RoutingFolder()});
    }
    if (path.empty()) return;
    path = WithExtension(path, u"kvt");
    const CChange change(*this);
    std::vector<std::string> labels;
    std::vector<SRoutingButton> buttons;
    for (const auto* const button : FindAll<CChannelBtn>()) {
        labels.push_back(Utils::ToUtf8(button->Text()));
        buttons.push_back({{}, button->Value() != 0.0f});
    }
    for (std::size_t i = 0; i < buttons.size(); ++i) buttons[i].label = labels[i];
    const auto document = WriteRoutingDocument(Utils::ToUtf8(Utils::GetFileName(path)), buttons);
    WriteUserFile(path, document);
    display->Refresh();
    const auto found = std::find(display->Items().begin(), display->Items().end(), FileTitle(path));
    if (found != display->Items().end())
        SelectRouting(static_cast<std::int32_t>(found - display->Items().begin()), false);
}

} // namespace KAV
