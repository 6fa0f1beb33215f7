#include "gui/value_widget.h"

#include "gui/gui.h"
#include "gui/menu.h"
#include "utils/text.h"

#include <string_view>
#include <utility>

namespace KAV::GUI {

namespace {

std::vector<std::u16string> Entries(std::u16string_view a_sList) {
    std::vector<std::u16string> entries;
    for (const auto entry : Utils::Split(a_sList, u"||")) entries.emplace_back(entry);
    return entries;
}

std::uint32_t WholeMs(float a_fMs) noexcept {
    return a_fMs > 0.0f ? static_cast<std::uint32_t>(a_fMs) : 0;
}

} // namespace

/// A previous value of a widget. It does nothing once the widget is gone.
class CValueWidget::CWidgetHistory final : public IHistory {
public:
    explicit CWidgetHistory(CValueWidget& a_piTarget)
        : _piTarget(a_piTarget.LinkToThis()), _fValue(a_piTarget.Value()) {}

    void Redo() override { Swap(); }
    void Undo() override { Swap(); }
    bool Differs(const IHistory& a_piOther) const override {
        const auto* const other = dynamic_cast<const CWidgetHistory*>(&a_piOther);
        return other == nullptr || other->_piTarget != _piTarget || *_piTarget == nullptr ||
               (*_piTarget)->Value() != _fValue;
    }

private:
    /// In a radio group the current target is not the button that was on then.
    void Swap() {
        if (*_piTarget == nullptr) return;
        CValueWidget& present = (*_piTarget)->HistoryTarget();
        const float value = present.Value();
        (*_piTarget)->SetValue(_fValue, false);
        _fValue = value;
        _piTarget = present.LinkToThis();
    }

    Link _piTarget;
    float _fValue;
};

CValueWidget::CValueWidget(CGUI& a_piGUI, CWidget& a_piWidget, const SWidgetInfo& a_sInfo)
    : vsItems(Entries(a_sInfo.sList)), fMin(a_sInfo.fMin), fMax(a_sInfo.fMax), sUnit(a_sInfo.sUnit),
      nDecimals(a_sInfo.nDecimals), _piGUI(a_piGUI), _piWidget(a_piWidget) {
    sValue.Jump(Clamped(a_sInfo.fValue));
    sValue.nRiseMs = WholeMs(a_sInfo.fValueRiseMs);
    sValue.nFallMs = WholeMs(a_sInfo.fValueFallMs);
    nItem = NearestItem(); // NOLINT(cppcoreguidelines-prefer-member-initializer): once there is a value
}

CValueWidget::~CValueWidget() {
    if (_piLink != nullptr) *_piLink = nullptr;
}

const CValueWidget::Link& CValueWidget::LinkToThis() {
    if (_piLink == nullptr) _piLink = std::make_shared<CValueWidget*>(this);
    return _piLink;
}

float CValueWidget::Clamped(float a_fNormal) noexcept {
    if (a_fNormal >= 1.0f) return 1.0f;
    return a_fNormal > 0.0f ? a_fNormal : 0.0f;
}

std::int32_t CValueWidget::NearestItem() const noexcept {
    if (vsItems.empty()) return 0;
    const float place = static_cast<float>(ItemCount() - 1) * sValue.fTarget;
    return static_cast<std::int32_t>(place + 0.5f); // NOLINT(bugprone-incorrect-roundings): never below 0
}

float CValueWidget::ValueOf(std::int32_t a_nItem) const noexcept {
    const std::int32_t last = ItemCount() - 1;
    return last > 0 ? static_cast<float>(a_nItem) / static_cast<float>(last) : static_cast<float>(a_nItem);
}

void CValueWidget::ShowItemSilently(std::int32_t a_nItem) noexcept {
    nItem = a_nItem;
    sValue.Retarget(Clamped(ValueOf(a_nItem)));
}

std::u16string CValueWidget::ItemText() const {
    if (nItem < 0 || nItem >= ItemCount()) return {};
    return WithoutMarks(vsItems[static_cast<std::size_t>(nItem)]);
}

// The plain range

float CValueWidget::ToNormal(float a_fPlain) const noexcept {
    return (a_fPlain - fMin) / (fMax - fMin);
}

float CValueWidget::GetPlain() const noexcept {
    if (sValue.fTarget == 0.0f) return fMin; // also of a range without an end
    return (fMax - fMin) * sValue.fTarget + fMin;
}

void CValueWidget::SetPlain(float a_fPlain, bool a_bHistory) {
    SetValue(ToNormal(a_fPlain), a_bHistory);
}

// The value

bool CValueWidget::TakeValue(float a_fNormal, bool a_bHistory) {
    if (a_bHistory) _piGUI.AddRecord(MakeHistory());
    const float value = Clamped(a_fNormal);
    if (value == sValue.fTarget) return false;
    sValue.Retarget(value);
    if (!vsItems.empty()) nItem = NearestItem();
    _piGUI.Invalidate();
    return true;
}

void CValueWidget::TellDevice() {
    if (!_piWidget.bFromHost) _piGUI.SetParameter(_piWidget.nId, sValue.fTarget);
}

void CValueWidget::TakeFromHost(float a_fNormal) {
    /// Also when a hook of the change throws.
    struct SMark {
        explicit SMark(bool& a_bFromHost) noexcept : bFromHost(a_bFromHost) { a_bFromHost = true; }
        ~SMark() { bFromHost = false; }
        SMark(const SMark&) = delete;
        SMark& operator=(const SMark&) = delete;

        bool& bFromHost;
    };
    const SMark mark(_piWidget.bFromHost);
    SetValue(a_fNormal, false);
}

bool CValueWidget::SetValue(float a_fNormal, bool a_bHistory) {
    if (!TakeValue(a_fNormal, a_bHistory)) return false;
    OnValueChanged(Value(), Item());
    TellDevice();
    return true;
}

void CValueWidget::SetItems(std::vector<std::u16string> a_vsItems) {
    vsItems = std::move(a_vsItems);
    nItem = NearestItem();
}

void CValueWidget::SetItem(std::int32_t a_nItem, bool a_bHistory) {
    if (a_nItem < 0 || a_nItem >= ItemCount()) return;
    SetValue(ValueOf(a_nItem), a_bHistory);
}

void CValueWidget::OnValueChanged(float, std::int32_t) {}

// The history

CValueWidget& CValueWidget::HistoryTarget() {
    return *this;
}

std::unique_ptr<IHistory> CValueWidget::MakeHistory() {
    if (!HasHistory()) return nullptr;
    return std::make_unique<CWidgetHistory>(HistoryTarget());
}

bool CValueWidget::HasHistory() const noexcept {
    return false;
}

} // namespace KAV::GUI
