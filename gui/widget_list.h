#pragma once

#include <cstddef>
#include <vector>

namespace KAV::GUI {

class CWidget;

/// Widgets in order, one of them left out. Valid until the list changes.
class CWidgetsBut final {
public:
    class CIterator final {
    public:
        CIterator(
            const std::vector<CWidget*>& a_vpiList, std::size_t a_nPlace, const CWidget* a_piLeftOut) noexcept
            : _vpiList(a_vpiList), _nPlace(a_nPlace), _piLeftOut(a_piLeftOut) {
            Skip();
        }
        CWidget* operator*() const noexcept { return _vpiList[_nPlace]; }
        CIterator& operator++() noexcept {
            ++_nPlace;
            Skip();
            return *this;
        }
        bool operator==(const CIterator& a_rsOther) const noexcept { return _nPlace == a_rsOther._nPlace; }

    private:
        void Skip() noexcept {
            while (_nPlace < _vpiList.size() && _vpiList[_nPlace] == _piLeftOut) ++_nPlace;
        }

        const std::vector<CWidget*>& _vpiList;
        std::size_t _nPlace;
        const CWidget* _piLeftOut;
    };

    CWidgetsBut(const std::vector<CWidget*>& a_vpiList, const CWidget* a_piLeftOut) noexcept
        : _vpiList(a_vpiList), _piLeftOut(a_piLeftOut) {}

    CIterator begin() const noexcept { return {_vpiList, 0, _piLeftOut}; }
    CIterator end() const noexcept { return {_vpiList, _vpiList.size(), _piLeftOut}; }

private:
    const std::vector<CWidget*>& _vpiList;
    const CWidget* _piLeftOut;
};

} // namespace KAV::GUI
