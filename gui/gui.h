#pragma once

#include "gui/error_report.h"
#include "gui/history.h"
#include "gui/widget.h"
#include "utils/post_box.h"
#include "utils/turn.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace KAV::GUI {

/// The root of an editor: its widgets, its history, its size. It lives as long as the instance, with or
/// without a window. It tells the session log of its beginning and end, and sends the log of the previous
/// session to the vendor.
///
/// Threads: the window's, or without a window whoever has the turn. The history is changed in turns, and so
/// on any thread but the audio thread.
class CGUI : private CHistory {
public:
    /// `a_piTurns` lives longer. `a_psService`: where to send reports.
    CGUI(Utils::CTurns& a_piTurns, const Utils::SMakerService& a_psService);

    // The window. Messages to it are numbers from 1025 to 2046. There is none to be seen yet: between these
    // two calls messages are kept, and the frame hands them out.
    virtual void CreateGUIWindow();
    virtual void DestroyGUIWindow();
    /// Waits for its helper thread without limit.
    virtual ~CGUI();
    /// On the window's thread. False when nobody knows the message.
    virtual bool OnUserMessage(std::uint32_t a_nMessage);
    /// Once per frame of the window, and whenever a test wants: the exchange with the device.
    virtual void OnFrame(std::uint32_t a_nElapsedMs);

    // What a widget tells its device: the value 0..1 of a parameter, and that the user has it in hand.
    virtual void SetParameter(std::int32_t a_nId, float a_fNormal);
    virtual void BeginEdit(std::int32_t a_nId);
    virtual void EndEdit(std::int32_t a_nId);

    // The history, each operation a turn.
    void EnableHistory(bool a_bEnable);
    bool IsHistoryEnabled() const;
    void AddRecord(std::unique_ptr<IHistory> a_piRecord);
    void Undo();
    void Redo();
    bool CanUndo() const;
    bool CanRedo() const;
    std::size_t Records() const;

    /// Any thread. Dropped without a window, and when the window goes before it has come.
    void PostUserMessage(std::uint32_t a_nMessage);

    std::int32_t Width() const noexcept { return _nWidth; }   ///< pixels
    std::int32_t Height() const noexcept { return _nHeight; } ///< pixels
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

protected:
    /// Hands the messages to OnUserMessage(), in the order in which they were posted.
    void DeliverMessages();
    /// The size to use from now on, in pixels.
    void Resize(std::int32_t a_nWidth, std::int32_t a_nHeight);

private:
    friend class CWidget;
    void Enter(CWidget& a_piWidget) { _vpiWidgets.push_back(&a_piWidget); }
    void Leave(const CWidget& a_piWidget) noexcept;

    Utils::CTurns& _piTurns;
    std::vector<CWidget*> _vpiWidgets; // not owned; changes only while the editor is built or destroyed
    std::int32_t _nWidth = 754;
    std::int32_t _nHeight = 553;
    Utils::CPostBox _iMessages; // open while there is a window
    CErrorReport _iReport;
};

} // namespace KAV::GUI
