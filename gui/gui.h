#pragma once

#include "gui/error_report.h"
#include "gui/history.h"
#include "gui/widget.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace KAV::GUI {

/// The root of an editor: its widgets, its history, its size. It lives as long as the instance, with or
/// without a window, because widgets hold state that patches read and write. It tells the session log of its
/// beginning and end, and sends the log of the previous session to the vendor.
///
/// Threads: the window's; what patches read and write (texts, visibility, lists, the size, the history) under
/// CLock on any thread but the audio thread.
class CGUI : private CHistory {
public:
    /// `a_psService`: where to send reports.
    explicit CGUI(const Utils::SMakerService& a_psService);
    /// Waits for its helper thread without limit.
    virtual ~CGUI();

    // History operations, each under the lock.
    void EnableHistory(bool a_bEnable);
    bool IsHistoryEnabled() const;
    void AddRecord(std::unique_ptr<IHistory> a_piRecord);
    virtual void Undo();
    virtual void Redo();
    bool CanUndo() const;
    bool CanRedo() const;
    std::size_t Records() const;

    std::int32_t Width() const;  ///< pixels
    std::int32_t Height() const; ///< pixels
    /// In the order in which they were made, which is that of drawing.
    const std::vector<CWidget*>& Widgets() const noexcept { return _vpiWidgets; }

    /// The first widget of a class, or null; and all of them in order.
    template<typename TWidget>
    TWidget* Find() const {
        for (auto* const widget : _vpiWidgets) {
            if (auto* const found = dynamic_cast<TWidget*>(widget)) return found;
        }
        return nullptr;
    }
    template<typename TWidget>
    std::vector<TWidget*> FindAll() const {
        std::vector<TWidget*> all;
        for (auto* const widget : _vpiWidgets) {
            if (auto* const found = dynamic_cast<TWidget*>(widget)) all.push_back(found);
        }
        return all;
    }

    // What a widget reports to its device: the value 0..1 of a parameter, and that the user has it in hand.
    virtual void SetParameter(std::int32_t a_nId, float a_fNormal);
    virtual void BeginEdit(std::int32_t a_nId);
    virtual void EndEdit(std::int32_t a_nId);
    /// Once per frame of the window, and whenever a test wants: the exchange with the device.
    virtual void OnFrame(std::uint32_t a_nElapsedMs);

    // The window. Messages to it are numbers from 1025 to 2046. There is none to be seen yet: between these
    // two calls messages are kept, and the frame hands them out.
    virtual void CreateGUIWindow();
    virtual void DestroyGUIWindow();
    /// Any thread. Dropped without a window, and when the window goes before it has come.
    void PostUserMessage(std::uint32_t a_nMessage);
    /// On the window's thread. False if the message is unknown.
    virtual bool OnUserMessage(std::uint32_t a_nMessage);

protected:
    /// Hands the messages to OnUserMessage(), in the order in which they were posted.
    void DeliverMessages();
    /// The size to use from now on, in pixels.
    void Resize(std::int32_t a_nWidth, std::int32_t a_nHeight);

private:
    friend class CLock;
    friend class CWidget;
    void Enter(CWidget& a_piWidget) { _vpiWidgets.push_back(&a_piWidget); }
    void Leave(const CWidget& a_piWidget) noexcept;

    mutable std::recursive_mutex _iMutex;
    std::vector<CWidget*> _vpiWidgets; // not owned; changes only while the editor is built or destroyed
    std::int32_t _nWidth = 754;
    std::int32_t _nHeight = 553;
    bool _bWindow = false;
    std::vector<std::uint32_t> _vnMessages; // to the window, oldest first
    CErrorReport _iReport;
};

/// Locks the state that patches read and write. Recursive. Never call the host or open a dialog while it is
/// held: either may wait for a thread that waits for this lock.
class CLock final {
public:
    explicit CLock(const CGUI& a_piGUI) : _iLock(a_piGUI._iMutex) {}

private:
    std::lock_guard<std::recursive_mutex> _iLock;
};

} // namespace KAV::GUI
