#pragma once

#include "device_gui/plugin_widget.h"

#include <cstddef>
#include <string>

namespace KAV {

class CMacroBtn;

/// The value of a macro. Its hint begins with the macro's name, that of its button.
class CMacroKnob final : public CPluginKnob {
public:
    /// `a_nMacro` 0..4.
    CMacroKnob(CXXXGUI& a_piPlugin, int a_nMacro);

    const std::u16string& GetText(bool a_bValueOnly) override;

private:
    const CMacroBtn& Button();

    std::size_t _nMacro;
    const CMacroBtn* _piButton = nullptr; // not owned; null until it is first needed
    std::u16string _sHintName;            // the name in the present hint
};

} // namespace KAV
