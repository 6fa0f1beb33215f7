#include "gui/history.h"

#include <utility>

namespace KAV::GUI {

namespace {

/// Stops recording while it lives: what an applied step changes is not a new step.
class CPause final {
public:
    explicit CPause(bool& a_bEnabled) noexcept : _bEnabled(a_bEnabled) { a_bEnabled = false; }
    ~CPause() { _bEnabled = true; }
    CPause(const CPause&) = delete;
    CPause& operator=(const CPause&) = delete;

private:
    bool& _bEnabled;
};

} // namespace

void CHistory::AddRecord(std::unique_ptr<IHistory> a_piRecord) {
    if (a_piRecord == nullptr || !_bEnabled) return;
    if (!_vpiRecords.empty() && !_vpiRecords.back()->Differs(*a_piRecord)) return;
    ++_nIndex;
    _vpiRecords.resize(static_cast<std::size_t>(_nIndex));
    _vpiRecords.push_back(std::move(a_piRecord));
    Touch();
}

void CHistory::Undo() {
    if (!_bEnabled || !CanUndo()) return;
    const CPause pause(_bEnabled);
    _vpiRecords[static_cast<std::size_t>(_nIndex)]->Undo();
    --_nIndex;
    Touch();
}

void CHistory::Redo() {
    if (!_bEnabled || !CanRedo()) return;
    const CPause pause(_bEnabled);
    ++_nIndex;
    Touch();
    _vpiRecords[static_cast<std::size_t>(_nIndex)]->Redo();
}

} // namespace KAV::GUI
