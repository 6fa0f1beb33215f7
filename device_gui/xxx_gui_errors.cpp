// What the user is told of, and when.

#include "device_gui/xxx_gui.h"
#include "utils/dialogs.h"
#include "utils/product.h"
#include "utils/session_log.h"

#include <algorithm>
#include <utility>

namespace KAV {

void CXXXGUI::BeginCreation() {
    const GUI::CLock lock(*this);
    _bCreating = true;
}

void CXXXGUI::EndCreation() {
    {
        const GUI::CLock lock(*this);
        _bCreating = false;
    }
    if (!Utils::Dialogs().ErrorsWait()) ShowHeldErrors();
}

void CXXXGUI::TellOfError(std::u16string a_sText) {
    {
        const GUI::CLock lock(*this);
        if (_bCreating) {
            if (std::ranges::find(_vsErrors, a_sText) != _vsErrors.end()) return;
            if (Utils::Dialogs().ErrorsWait()) Utils::LogLine(u"Error=" + a_sText);
            _vsErrors.push_back(std::move(a_sText));
            return;
        }
    }
    Utils::Dialogs().ShowError(Utils::ProductName, a_sText);
}

void CXXXGUI::ShowHeldErrors() {
    std::vector<std::u16string> texts;
    {
        const GUI::CLock lock(*this);
        texts.swap(_vsErrors);
    }
    for (const auto& text : texts) Utils::Dialogs().ShowError(Utils::ProductName, text);
}

} // namespace KAV
