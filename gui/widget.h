#pragma once

#include <cstdint>
#include <string>

namespace KAV::GUI {

class CGUI;

/// What a widget is made from. Texts are UTF-16.
struct SWidgetInfo {
    std::int32_t nId = -1;         ///< the parameter it is bound to; below 0: none
    std::u16string sName;          ///< may repeat
    std::u16string sText;          ///< labels
    std::u16string sList;          ///< the named positions of a value, "||" between them
    float fValue = 0.0f;           ///< values, 0..1
    std::int32_t nRadioGroup = -1; ///< buttons of one such group: one of them is on; -1: none
    bool bVisible = true;
};

/// One control or picture of the editor. It enters its root's list when it is made and leaves it when it
/// goes. Threads: as its root.
class CWidget {
public:
    CWidget(CGUI& a_piGUI, const SWidgetInfo& a_sInfo);
    virtual ~CWidget();
    CWidget(const CWidget&) = delete;
    CWidget& operator=(const CWidget&) = delete;

    std::int32_t Id() const noexcept { return _nId; }
    const std::u16string& Name() const noexcept { return _sName; }
    bool IsVisible() const noexcept;
    virtual void SetVisible(bool a_bShow);
    /// Takes a value 0..1 from the device, which isn't told of it again.
    virtual void SetFromHost(float a_fNormal);

protected:
    CGUI& Root() const noexcept { return _piGUI; }

private:
    CGUI& _piGUI;
    std::int32_t _nId;
    std::u16string _sName;
    bool _bVisible;
};

} // namespace KAV::GUI
