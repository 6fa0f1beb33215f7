#pragma once

#include "gfx/gpu.h"
#include "gui/edit.h"
#include "gui/error_report.h"
#include "gui/frame.h"
#include "gui/hint.h"
#include "gui/history.h"
#include "gui/light.h"
#include "gui/pictures.h"
#include "gui/pointer.h"
#include "gui/screen.h"
#include "gui/size_drag.h"
#include "gui/texture_cache.h"
#include "gui/widget.h"
#include "gui/widget_list.h"
#include "gui/window.h"
#include "gui/window_events.h"
#include "utils/post_box.h"
#include "utils/turn.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace KAV::GUI {

/// What an editor needs of its surroundings. All parts live as long as the root; null: the one that does
/// nothing.
struct SSurroundings {
    IWindow* piWindow = nullptr;
    IPictures* piPictures = nullptr;
};

/// The root of an editor: its widgets, its window, its history, its size. It lives as long as the instance,
/// with or without a window. It tells the session log of its beginning and end, and sends the log of the
/// previous session to the vendor. The order of the virtual operations is fixed.
///
/// Threads: the window's, or without a window that of the turn. The history is changed in turns, and so
/// on any thread but the audio thread.
class CGUI : private CHistory {
public:
    /// `a_piTurns` lives longer. `a_psService`: where to send reports. Reads what the user has set for all
    /// editors.
    CGUI(Utils::CTurns& a_piTurns, const Utils::SMakerService& a_psService, const SWidgetInfo& a_sHint = {},
        const SSurroundings& a_sSurroundings = {});
    CGUI(const CGUI&) = delete;
    CGUI& operator=(const CGUI&) = delete;

    virtual void Render(std::uint32_t a_nMs); ///< one frame, `a_nMs` after the one before
    /// Makes the window in the host's, hidden, and the renderer. Between these two calls posted messages are
    /// kept for the next tick.
    virtual void CreateGUIWindow();
    virtual void DestroyGUIWindow();
    /// Waits for its helper thread without limit.
    virtual ~CGUI();

    // The pointer, in pixels of the window; flags as MouseFlag
    virtual void OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags);
    virtual void OnMouseUp(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags);
    virtual void OnMouseMove(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags);
    virtual void OnMouseLeave();
    virtual void OnMouseWheel(float a_fNotches, std::uint32_t a_nFlags);
    virtual void OnFocus(CWidget* a_piWidget); ///< was pressed or wheeled; null: a press on nothing

    virtual bool OnUserMessage(std::uint32_t a_nMessage);                      ///< false: it means nothing
    virtual void OnCommand(std::uint32_t a_nCommand, std::intptr_t a_nSource); ///< of a menu; source 0
    virtual void OnKeyDown(std::uint32_t a_nKey);
    virtual void OnKeyUp(std::uint32_t a_nKey);
    virtual void OnResized(std::int32_t a_nWidth, std::int32_t a_nHeight);
    /// At each tick of the window, and whenever a test wants: the exchange with the device.
    virtual void OnFrame(std::uint32_t a_nElapsedMs);
    /// What a widget tells its device: the value 0..1 of a parameter.
    virtual void SetParameter(std::int32_t a_nId, float a_fNormal);
    /// To another size, in pixels. Draws at once.
    virtual void Resize(std::int32_t a_nWidth, std::int32_t a_nHeight);
    /// Makes a widget the background, and the root as large.
    virtual void SetBackground(CWidget& a_piWidget);
    // What a widget tells its device: that the user has the parameter in hand.
    virtual void BeginEdit(std::int32_t a_nId);
    virtual void EndEdit(std::int32_t a_nId);

    // The history, each operation a turn
    void EnableHistory(bool a_bEnable);
    bool IsHistoryEnabled() const;
    void AddRecord(std::unique_ptr<IHistory> a_piRecord);
    void Undo();
    void Redo();
    bool CanUndo() const;
    bool CanRedo() const;
    std::size_t Records() const;
    /// Another number whenever there may be other steps to undo or redo. Takes no turn.
    std::uint32_t HistoryChanges() const noexcept { return Changes(); }

    // The window
    /// The host's window, into which the next CreateGUIWindow() goes, or the window at once if there is one.
    void SetParent(void* a_piParent);
    void Show(bool a_bShow);
    /// 1..1000 frames per second; kept for all editors of the user.
    void SetFPS(std::uint32_t a_nFPS);
    std::uint32_t FPS() const noexcept { return _nFPS; }
    /// The system has taken the window away.
    void LoseWindow();
    /// Whether it has, until DestroyGUIWindow(). Any thread.
    bool IsWindowLost() const noexcept { return _bLost; }
    /// Any thread. Dropped without a window, and when the window goes before it has come.
    void PostUserMessage(std::uint32_t a_nMessage);
    /// The user is dragging the window's size: pictures stretch until that is over.
    void SetResizing(bool a_bResizing);
    bool IsResizing() const noexcept { return _bResizing; }
    bool IsLayoutEditing() const noexcept { return false; } ///< no layout editor exists
    /// Pixels at the display's density for as many at 96 per inch.
    std::int32_t ScaleByDPI(std::int32_t a_nPixels) const noexcept;

    // What widgets ask of it
    void Invalidate() noexcept { _iFrame.Invalidate(); }
    std::int32_t Width() const noexcept { return _nWidth; }   ///< pixels
    std::int32_t Height() const noexcept { return _nHeight; } ///< pixels
    GFX::GPU& GPU() const noexcept { return _iScreen.GPU(); } ///< there always is one
    GFX::STexture GetTexture(
        const std::u16string& a_sName, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nBlur);
    void ReleaseTexture(GFX::STexture& a_rsTexture);
    IWindow& Window() const noexcept { return _piWindow; }
    /// Opens a widget's menu in place of any other. It closes when the widget goes. An empty one isn't
    /// opened.
    void ShowMenu(const CWidget& a_piFor, const Menu& a_vsMenu);
    IPictures& Pictures() const noexcept { return _piPictures; }
    CHint& Hint() noexcept { return _iHint; }
    CEdit& Edit() noexcept { return _iEdit; }
    CPointer& Pointer() noexcept { return _iPointer; }
    CFrame& Frame() noexcept { return _iFrame; }
    CScreen& Screen() noexcept { return _iScreen; }
    CSizeDrag& SizeDrag() noexcept { return _iSizeDrag; }
    CTextureCache& Textures() noexcept { return _iTextures; }

    // The widgets, in the order of drawing, the back first
    const std::vector<CWidget*>& AllWidgets() const noexcept { return _vpiWidgets; }
    /// Without the edit.
    CWidgetsBut Widgets() const noexcept { return {_vpiWidgets, &_iEdit}; }
    bool Has(const CWidget* a_piWidget) const noexcept;
    bool IsHintOrEdit(const CWidget& a_piWidget) const noexcept {
        return &a_piWidget == &_iHint || &a_piWidget == &_iEdit;
    }
    /// Takes a widget out, and ends it unless it is to be kept. False if it isn't one of the root's.
    bool RemoveWidget(CWidget& a_piWidget, bool a_bKeep);
    /// One place towards the front or the back, or all the way.
    void Restack(const CWidget& a_piWidget, bool a_bRaise, bool a_bToEnd);

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
    /// Ends the widgets that are not members of a class; for destructors, once.
    void DeleteWidgets();

private:
    friend class CWidget;
    void Enter(CWidget& a_piWidget) { _vpiWidgets.push_back(&a_piWidget); }
    void Leave(const CWidget& a_piWidget) noexcept;
    void EndWhatIsOpen();

    static constexpr std::size_t Params = 200;

    Utils::CTurns& _piTurns;
    IWindow& _piWindow;
    IPictures& _piPictures;
    CWindowEvents _iEvents{*this};
    CFrame _iFrame{*this};
    CPointer _iPointer{*this};
    CScreen _iScreen{*this};
    CSizeDrag _iSizeDrag{*this};
    CTextureCache _iTextures;
    void* _piParent = nullptr;
    const CWidget* _piMenuFor = nullptr; // whose menu was opened last; not owned
    std::uint32_t _nFPS = 60;
    std::int32_t _nWidth = 754;
    std::int32_t _nHeight = 553;
    bool _bResizing = false;
    std::atomic<bool> _bLost = false;
    std::array<void*, Params> _apiParams{}; // unused
    std::vector<CWidget*> _vpiWidgets;      // of others, but for the three below
    CHint _iHint;
    CEdit _iEdit;
    CLight _iLight;
    Utils::CPostBox _iMessages; // open while there is a window
    CErrorReport _iReport;
};

} // namespace KAV::GUI
