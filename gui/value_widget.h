#pragma once

#include "gui/history.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace KAV::GUI {

class CGUI;

/// The value of a widget: 0..1, and if it has named positions, the one that is nearest. The order of the
/// virtual operations is fixed. Threads: the window's, unless a class tells otherwise.
class CValueWidget {
public:
    CValueWidget(const CValueWidget&) = delete;
    CValueWidget& operator=(const CValueWidget&) = delete;
    virtual ~CValueWidget() = default;

    virtual float ToNormal(float a_fPlain) const noexcept;
    /// Holds the value to 0..1 and tells the device, unless it came from there. With `a_bHistory` the value
    /// before is recorded first. False when it is the present one, and then nothing happens.
    virtual bool SetValue(float a_fNormal, bool a_bHistory) = 0;
    virtual float GetPlain() const noexcept;
    virtual void SetPlain(float a_fPlain, bool a_bHistory);
    virtual void SetItems(std::vector<std::u16string> a_vsItems);
    /// The named position `a_nItem`; one that isn't there does nothing.
    virtual void SetItem(std::int32_t a_nItem, bool a_bHistory);
    virtual void OnValueChanged(float a_fNormal, std::int32_t a_nItem); ///< hook, after a change
    virtual CValueWidget& HistoryTarget();                              ///< what a step of history is about
    virtual std::unique_ptr<IHistory> MakeHistory();                    ///< null if there is none
    virtual bool HasHistory() const noexcept;

    float Value() const noexcept { return _fValue; }
    std::int32_t Item() const noexcept { return _nItem; }
    std::int32_t ItemCount() const noexcept { return static_cast<std::int32_t>(_vsItems.size()); }
    const std::vector<std::u16string>& Items() const noexcept { return _vsItems; }

protected:
    CValueWidget(float a_fValue, std::u16string_view a_sList);

    /// Changes to a value that is within 0..1; false if it is the present one.
    bool ChangeTo(float a_fNormal) noexcept;
    /// Changes to a named position and its value. Neither the device nor the host is notified.
    void ShowItemSilently(std::int32_t a_nItem) noexcept;
    static float Clamped(float a_fNormal) noexcept; ///< to 0..1; not-a-number is 0

private:
    std::int32_t NearestItem() const noexcept;
    float ValueOf(std::int32_t a_nItem) const noexcept;

    float _fValue; // 0..1
    std::vector<std::u16string> _vsItems;
    std::int32_t _nItem; // nearest to the value; 0 without a list
    float _fMin = 0.0f;
    float _fMax = 1.0f;
};

} // namespace KAV::GUI
