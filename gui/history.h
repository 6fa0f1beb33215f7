#pragma once

#include "utils/shared.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace KAV::GUI {

/// One step that can be undone. It holds the other side of a change: applying it puts what it replaces into
/// it, so that the same record serves undo and redo in turn.
class IHistory {
public:
    virtual ~IHistory() = default;
    IHistory(const IHistory&) = delete;
    IHistory& operator=(const IHistory&) = delete;

    virtual void Redo() = 0;
    virtual void Undo() = 0;
    /// The other record holds another state than this one.
    virtual bool Differs(const IHistory& a_piOther) const = 0;

protected:
    IHistory() = default;
};

/// The steps of one instance, without a limit on their number. It takes steps only while the editor is open,
/// and none while one is being applied. Threads: one at a time; the owner sees to that.
class CHistory {
public:
    CHistory() = default;
    CHistory(const CHistory&) = delete;
    CHistory& operator=(const CHistory&) = delete;

    void EnableHistory(bool a_bEnable) noexcept { _bEnabled = a_bEnable; }
    bool IsHistoryEnabled() const noexcept { return _bEnabled; }

    /// Null does nothing. A record that tells the same state as the newest one is dropped; any other drops
    /// the steps that could have been redone.
    void AddRecord(std::unique_ptr<IHistory> a_piRecord);
    void Undo();
    void Redo();
    bool CanUndo() const noexcept { return _nIndex >= 0; }
    bool CanRedo() const noexcept { return _nIndex + 1 < static_cast<std::int32_t>(_vpiRecords.size()); }
    std::size_t Records() const noexcept { return _vpiRecords.size(); }
    /// Another number whenever one of the three above may have changed. Any thread, at any time.
    std::uint32_t Changes() const noexcept { return _nChanges; }

protected:
    ~CHistory() = default;

private:
    void Touch() noexcept { _nChanges = _nChanges + 1; }

    bool _bEnabled = false;
    Utils::CShared<std::uint32_t> _nChanges{0};
    std::vector<std::unique_ptr<IHistory>> _vpiRecords;
    std::int32_t _nIndex = -1; // of the record that the next undo applies
};

} // namespace KAV::GUI
