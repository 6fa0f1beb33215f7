#include "gui/value_widget.h"

#include "utils/text.h"

#include <utility>

namespace KAV::GUI {

namespace {

std::vector<std::u16string> Entries(std::u16string_view a_sList) {
    std::vector<std::u16string> entries;
    for (const auto entry : Utils::Split(a_sList, u"||")) entries.emplace_back(entry);
    return entries;
}

/// A previous value of a widget.
class CWidgetHistory final : public IHistory {
public:
    explicit CWidgetHistory(CValueWidget& a_piTarget) : _piTarget(&a_piTarget), _fValue(a_piTarget.Value()) {}

    void Redo() override { Swap(); }
    void Undo() override { Swap(); }
    bool Differs(const IHistory& a_piOther) const override {
        const auto* const other = dynamic_cast<const CWidgetHistory*>(&a_piOther);
        return other == nullptr || other->_piTarget != _piTarget || _piTarget->Value() != _fValue;
    }

private:
    /// In a radio group the current target is not the button that was on then.
    void Swap() {
        CValueWidget& present = _piTarget->HistoryTarget();
        const float value = present.Value();
        _piTarget->SetValue(_fValue, false);
        _fValue = value;
        _piTarget = &present;
    }

    CValueWidget* _piTarget;
    float _fValue;
};

} // namespace

CValueWidget::CValueWidget(float a_fValue, std::u16string_view a_sList)
    : _fValue(Clamped(a_fValue)), _vsItems(Entries(a_sList)), _nItem(NearestItem()) {}

float CValueWidget::Clamped(float a_fNormal) noexcept {
    if (a_fNormal >= 1.0f) return 1.0f;
    return a_fNormal > 0.0f ? a_fNormal : 0.0f;
}

std::int32_t CValueWidget::NearestItem() const noexcept {
    if (_vsItems.empty()) return 0;
    const float place = static_cast<float>(ItemCount() - 1) * _fValue;
    return static_cast<std::int32_t>(place + 0.5f); // NOLINT(bugprone-incorrect-roundings): never below 0
}

float CValueWidget::ValueOf(std::int32_t a_nItem) const noexcept {
    const std::int32_t last = ItemCount() - 1;
    return last > 0 ? static_cast<float>(a_nItem) / static_cast<float>(last) : static_cast<float>(a_nItem);
}

bool CValueWidget::ChangeTo(float a_fNormal) noexcept {
    if (a_fNormal == _fValue) return false;
    _fValue = a_fNormal;
    _nItem = NearestItem();
    return true;
}

void CValueWidget::ShowItemSilently(std::int32_t a_nItem) noexcept {
    _nItem = a_nItem;
    _fValue = Clamped(ValueOf(a_nItem));
}

float CValueWidget::ToNormal(float a_fPlain) const noexcept {
    return (a_fPlain - _fMin) / (_fMax - _fMin);
}

float CValueWidget::GetPlain() const noexcept {
    return (_fMax - _fMin) * _fValue + _fMin;
}

void CValueWidget::SetPlain(float a_fPlain, bool a_bHistory) {
    SetValue(ToNormal(a_fPlain), a_bHistory);
}

void CValueWidget::SetItems(std::vector<std::u16string> a_vsItems) {
    _vsItems = std::move(a_vsItems);
    _nItem = NearestItem();
}

void CValueWidget::SetItem(std::int32_t a_nItem, bool a_bHistory) {
    if (a_nItem < 0 || a_nItem >= ItemCount()) return;
    SetValue(ValueOf(a_nItem), a_bHistory);
}

void CValueWidget::OnValueChanged(float, std::int32_t) {}

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
