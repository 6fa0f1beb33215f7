#pragma once

#include "gui/animation.h"
#include "gui/history.h"
#include "gui/widget_info.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace KAV::GUI {

class CGUI;
class CWidget;

/// The value of a widget: 0..1, and if it has named positions, the one that is nearest. The order of the
/// virtual operations is fixed. Threads: the window's, unless a class says otherwise.
class CValueWidget {
public:
    CValueWidget(const CValueWidget&) = delete;
    CValueWidget& operator=(const CValueWidget&) = delete;

    virtual float ToNormal(float a_fPlain) const noexcept;
    /// Limits the value to 0..1 and reports it to the device, unless it came from there. With `a_bHistory`
    /// the previous value is recorded first. False when it is the present one, and then nothing is reported.
    virtual bool SetValue(float a_fNormal, bool a_bHistory);
    virtual float GetPlain() const noexcept;
    virtual void SetPlain(float a_fPlain, bool a_bHistory);
    virtual void SetItems(std::vector<std::u16string> a_vsItems);
    /// The named position `a_nItem`. Nothing happens if there is no such position.
    virtual void SetItem(std::int32_t a_nItem, bool a_bHistory);
    virtual void OnValueChanged(float a_fNormal, std::int32_t a_nItem); ///< hook, after a change
    virtual CValueWidget& HistoryTarget();                              ///< what a step of history is about
    virtual std::unique_ptr<IHistory> MakeHistory();                    ///< null if there is none
    virtual bool HasHistory() const noexcept;

    float Value() const noexcept { return sValue.fTarget; }
    std::int32_t Item() const noexcept { return nItem; }
    std::int32_t ItemCount() const noexcept { return static_cast<std::int32_t>(vsItems.size()); }
    const std::vector<std::u16string>& Items() const noexcept { return vsItems; }

    SAnimValue sValue; ///< 0..1: the target is the value, and what is drawn follows it
    std::vector<std::u16string> vsItems;
    std::int32_t nItem = 0; ///< nearest to the value; 0 without a list
    float fMin, fMax;       ///< what the values 0 and 1 stand for
    std::u16string sUnit;
    std::int32_t nDecimals; ///< after the point, in texts

protected:
    /// `a_piWidget` is the widget whose value this is.
    CValueWidget(CGUI& a_piGUI, CWidget& a_piWidget, const SWidgetInfo& a_sInfo);
    ~CValueWidget();

    /// What every SetValue() begins with: the step of history, the value, its item, the redraw. False when
    /// the value is the present one.
    bool TakeValue(float a_fNormal, bool a_bHistory);
    /// Reports the value to the device, unless it came from there.
    void TellDevice();
    /// Sets a value of the device's without reporting it to the device again.
    void TakeFromHost(float a_fNormal);
    /// Changes to a named position and its value. Neither the device nor the host is notified.
    void ShowItemSilently(std::int32_t a_nItem) noexcept;
    /// What the present position is called, without its marks; empty without a list.
    std::u16string ItemText() const;
    static float Clamped(float a_fNormal) noexcept; ///< to 0..1; not-a-number is 0

    static constexpr float NoTextYet = 0.01f; ///< from the first value, so that the first text is made
    static constexpr std::uint32_t SoakPauseMs = 100; ///< between two steps of a SoakTest()

private:
    class CWidgetHistory;
    /// Steps of history outlive the widgets that they are about. This tells them.
    using Link = std::shared_ptr<CValueWidget*>;

    const Link& LinkToThis();
    std::int32_t NearestItem() const noexcept;
    float ValueOf(std::int32_t a_nItem) const noexcept;

    CGUI& _piGUI;
    CWidget& _piWidget;
    Link _piLink; // made by the first step
};

} // namespace KAV::GUI
