#include "native/win32/editor_window.h"

#include "native/win32/system_menu.h"
#include "platform/module.h"
#include "platform/window_loop.h"

#include <shellapi.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace KAV::Native {

namespace {

constexpr const wchar_t* ClassName = L"KAVGUIWindow";
constexpr std::uint32_t LeastFrames = 1;
constexpr UINT_PTR Second = 1000; // milliseconds
constexpr UINT FirstUserMessage = WM_USER + 1;
constexpr UINT LastUserMessage = 2046;
constexpr UINT Posted = WM_APP; // something waits for this thread

std::int32_t SignedX(LPARAM lParam) noexcept {
    return static_cast<std::int16_t>(LOWORD(lParam));
}

std::int32_t SignedY(LPARAM lParam) noexcept {
    return static_cast<std::int16_t>(HIWORD(lParam));
}

/// The word that mouse messages carry has the bits of GUI::MouseFlag; those of other buttons are left out.
std::uint32_t FlagsOf(WPARAM wParam) noexcept {
    static_assert(MK_LBUTTON == GUI::MouseLeft && MK_RBUTTON == GUI::MouseRight &&
                  MK_SHIFT == GUI::MouseShift && MK_CONTROL == GUI::MouseControl);
    constexpr WPARAM known = MK_LBUTTON | MK_RBUTTON | MK_SHIFT | MK_CONTROL;
    return static_cast<std::uint32_t>(LOWORD(wParam) & known);
}

LPCWSTR NameOf(GUI::ECursor cursor) noexcept {
    switch (cursor) {
    case GUI::ECursor::SizeWidth:
        return IDC_SIZEWE;
    case GUI::ECursor::SizeBoth:
        return IDC_SIZENWSE;
    case GUI::ECursor::Arrow:
        break;
    }
    return IDC_ARROW;
}

/// Keys that the editor has a use for; all others are the host's.
bool IsUsed(WPARAM key) noexcept {
    if (key == GUI::KeyF1) return true;
    return (key == GUI::KeyY || key == GUI::KeyZ) && GetKeyState(VK_LCONTROL) < 0;
}

/// Closes the box of an error, which belongs to the window that contains the editor's.
void CloseBox(HWND window, const std::wstring& title) noexcept {
    struct SWanted {
        HWND owner;
        const std::wstring& title;
    } wanted{GetAncestor(window, GA_ROOT), title};
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND found, LPARAM parameter) -> BOOL {
            const auto& sought = *reinterpret_cast<const SWanted*>(parameter);
            std::array<wchar_t, MAX_PATH> name{};
            const auto is = [&name](const std::wstring& text) {
                return text.compare(0, name.size() - 1, name.data()) == 0;
            };
            GetClassNameW(found, name.data(), static_cast<int>(name.size()));
            if (GetWindow(found, GW_OWNER) != sought.owner || !is(L"#32770")) return TRUE;
            GetWindowTextW(found, name.data(), static_cast<int>(name.size()));
            if (!is(sought.title)) return TRUE;
            PostMessageW(found, WM_COMMAND, IDOK, 0);
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&wanted));
}

/// While a message is handled, its window's loop is that of the thread: a host has several editors on one
/// thread, and their messages may nest.
class CLoopOfThread final {
public:
    explicit CLoopOfThread(std::shared_ptr<Platform::CWindowLoop> loop) noexcept
        : _loop(std::move(loop)), _before(Platform::CWindowLoop::OfThisThread()) {
        Platform::CWindowLoop::SetOfThisThread(_loop.get());
    }
    ~CLoopOfThread() { Platform::CWindowLoop::SetOfThisThread(_before.get()); }
    CLoopOfThread(const CLoopOfThread&) = delete;
    CLoopOfThread& operator=(const CLoopOfThread&) = delete;

private:
    std::shared_ptr<Platform::CWindowLoop> _loop;
    std::shared_ptr<Platform::CWindowLoop> _before;
};

} // namespace

/// What a message needs, which outlives the window if the message ends it.
struct CEditorWindow::SState : std::enable_shared_from_this<SState> {
    explicit SState(IEditor& owner)
        : editor(&owner), box([this] {
              if (client != nullptr) client->OnTyped();
          }),
          loop(std::make_shared<Platform::CWindowLoop>([this] { PostMessageW(window, Posted, 0, 0); })) {}

    /// The user has to answer something before the editor takes input again.
    bool IsModal() const noexcept { return loop->Modal() != nullptr; }

    IEditor* editor;                      ///< null from the end on
    GUI::IWindowClient* client = nullptr; ///< null before the beginning and from the end on
    HWND window = nullptr;
    CTextBox box;
    CSystemMenu menu;
    std::shared_ptr<Platform::CWindowLoop> loop; ///< ends before this does
    GUI::ECursor cursor = GUI::ECursor::Arrow;
    int depth = 0; ///< of messages within messages

    // What has a loop of its own waits for the end of the outermost message.
    std::optional<GUI::Menu> nextMenu;
    std::wstring boxTitle; ///< of the error that is or will be up
    std::wstring boxText;
    bool isBoxDue = false;
    bool isBoxUp = false;
};

CEditorWindow::CEditorWindow(IEditor& editor) noexcept : _state(std::make_shared<SState>(editor)) {}

CEditorWindow::~CEditorWindow() {
    End();
}

std::int32_t CEditorWindow::Begin(
    HWND host, GUI::IWindowClient& client, const SSize& size, std::uint32_t framesPerSecond) noexcept {
    const auto instance = static_cast<HINSTANCE>(Platform::ThisModule());
    WNDCLASSEXW kind{};
    kind.cbSize = sizeof(kind);
    kind.lpfnWndProc = &CEditorWindow::OnMessage;
    kind.hInstance = instance; // so that two modules of one name have a class each
    kind.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    kind.lpszClassName = ClassName;
    RegisterClassExW(&kind); // fails if another editor of this module has done so
    auto& state = *_state;
    state.client = &client;
    ++state.depth; // the editor is at work until it has opened
    const HWND window = CreateWindowExW(0, ClassName, L"", WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN, 0, 0,
        std::max(size.width, 1), std::max(size.height, 1), host, nullptr, instance, &state);
    if (window == nullptr) {
        const auto error = static_cast<std::int32_t>(GetLastError());
        state.window = nullptr;
        state.client = nullptr;
        --state.depth;
        UnregisterClassW(ClassName, instance);
        return error != 0 ? error : -1;
    }
    DragAcceptFiles(state.window, TRUE);
    state.box.Begin(state.window);
    SetRate(framesPerSecond);
    return 0;
}

void CEditorWindow::Opened() noexcept {
    if (_state->window != nullptr) --_state->depth;
}

void CEditorWindow::Cancel() noexcept {
    const auto state = _state;
    state->loop->End();
}

void CEditorWindow::End() noexcept {
    const auto state = _state;
    state->loop->End();
    state->client = nullptr;
    state->editor = nullptr;
    const HWND window = std::exchange(state->window, nullptr);
    if (window == nullptr) return;
    CloseWhatIsUp(*state, window);
    state->box.End();
    KillTimer(window, reinterpret_cast<UINT_PTR>(state.get())); // before the window goes
    if (IsWindow(window)) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        DestroyWindow(window);
    }
    UnregisterClassW(
        ClassName, static_cast<HINSTANCE>(Platform::ThisModule())); // fails while another editor has a window
}

bool CEditorWindow::Exists() const noexcept {
    return _state->window != nullptr && IsWindow(_state->window);
}

HWND CEditorWindow::Handle() const noexcept {
    return _state->window;
}

void CEditorWindow::Show(bool show) noexcept {
    ShowWindow(_state->window, show ? SW_SHOW : SW_HIDE);
    if (show) UpdateWindow(_state->window);
}

void CEditorWindow::Resize(std::int32_t width, std::int32_t height) noexcept {
    constexpr UINT sizeAlone = SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOOWNERZORDER;
    SetWindowPos(_state->window, nullptr, 0, 0, std::max(width, 1), std::max(height, 1), sizeAlone);
}

void CEditorWindow::SetRate(std::uint32_t framesPerSecond) noexcept {
    const auto timer = reinterpret_cast<UINT_PTR>(_state.get());
    KillTimer(_state->window, timer);
    SetTimer(_state->window, timer, static_cast<UINT>(Second / std::max(framesPerSecond, LeastFrames)),
        &CEditorWindow::OnTimer);
}

void CEditorWindow::Capture(bool capture) noexcept {
    if (capture)
        SetCapture(_state->window);
    else if (GetCapture() == _state->window)
        ReleaseCapture();
}

void CEditorWindow::SetCursor(GUI::ECursor cursor) noexcept {
    _state->cursor = cursor;
    ::SetCursor(LoadCursorW(nullptr, NameOf(cursor)));
}

void CEditorWindow::TrackLeave() noexcept {
    TRACKMOUSEEVENT track{};
    track.cbSize = sizeof(track);
    track.dwFlags = TME_LEAVE;
    track.hwndTrack = _state->window;
    TrackMouseEvent(&track);
}

void CEditorWindow::ShowMenu(const GUI::Menu& menu) noexcept {
    const auto state = _state;
    if (state->IsModal()) return;
    try {
        state->nextMenu = menu;
    } catch (...) { // no memory: no menu
        return;
    }
    if (state->depth == 0) ShowNextMenu(state);
}

void CEditorWindow::CloseMenu() noexcept {
    _state->nextMenu.reset();
    _state->menu.Close();
}

bool CEditorWindow::OpenTextBox(
    const GUI::SPixelRect& place, std::u16string_view text, bool numbersOnly) noexcept {
    return !_state->IsModal() && _state->box.Open(place, text, numbersOnly);
}

std::u16string CEditorWindow::BoxText() const {
    return _state->box.Text();
}

void CEditorWindow::CloseTextBox() noexcept {
    _state->box.Close();
}

void CEditorWindow::ShowBox(std::u16string_view title, std::u16string_view text) noexcept {
    auto& state = *_state;
    if (IsBoxUp()) return;
    try {
        state.boxTitle.assign(title.begin(), title.end());
        state.boxText.assign(text.begin(), text.end());
    } catch (...) { // no memory to say it
        return;
    }
    state.isBoxDue = state.window != nullptr; // for the next tick
    if (state.isBoxDue) return;
    // There is no window, and so no tick: that is what the error is about.
    MessageBoxW(nullptr, state.boxText.c_str(), state.boxTitle.c_str(), MB_OK | MB_ICONERROR);
}

bool CEditorWindow::IsBoxUp() const noexcept {
    return _state->isBoxDue || _state->isBoxUp;
}

void CEditorWindow::CloseWhatIsUp(SState& state, HWND window) noexcept {
    state.nextMenu.reset();
    state.isBoxDue = false;
    state.menu.Close();
    if (state.isBoxUp && IsWindow(window)) CloseBox(window, state.boxTitle);
}

// Menus and boxes have loops of their own, in which the host may close the editor or end the instance. So
// they are shown when no function of the editor is being executed: a menu after the message that asks for it,
// a box by a tick, since messages are also sent while the editor opens.

void CEditorWindow::ShowNextMenu(const std::shared_ptr<SState>& state) noexcept {
    const auto menu = std::exchange(state->nextMenu, std::nullopt);
    if (!menu || state->client == nullptr) return;
    const auto chosen = state->menu.Show(state->window, *menu);
    if (chosen == 0 || state->client == nullptr) return;
    BeginMessage(*state);
    state->client->OnCommand(chosen);
    EndMessage(state);
}

void CEditorWindow::ShowBoxThatIsDue(const std::shared_ptr<SState>& state) noexcept {
    if (state->depth > 0 || state->client == nullptr || !std::exchange(state->isBoxDue, false)) return;
    state->isBoxUp = true;
    MessageBoxW(state->window, state->boxText.c_str(), state->boxTitle.c_str(), MB_OK | MB_ICONERROR);
    state->isBoxUp = false;
}

// Messages

LRESULT CALLBACK CEditorWindow::OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_NCCREATE) {
        auto* const state =
            static_cast<SState*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        state->window = window; // more messages come before the call that creates it returns
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(state));
    }
    auto* const found = reinterpret_cast<SState*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (found == nullptr || found->client == nullptr) return DefWindowProcW(window, message, wParam, lParam);
    const auto state = found->weak_from_this().lock();
    const CLoopOfThread loop(state->loop);
    BeginMessage(*state);
    LRESULT answer = 0;
    try {
        answer = Handle(*state, message, wParam, lParam);
    } catch (...) { // no memory: this message is lost
        answer = 0;
    }
    EndMessage(state);
    return answer;
}

void CEditorWindow::BeginMessage(SState& state) noexcept {
    if (state.depth++ == 0 && state.editor != nullptr) state.editor->OnMessage();
}

void CEditorWindow::EndMessage(const std::shared_ptr<SState>& state) noexcept {
    if (--state->depth > 0) return;
    if (state->editor != nullptr) state->editor->OnRound();
    ShowNextMenu(state);
}

void CALLBACK CEditorWindow::OnTimer(HWND window, UINT, UINT_PTR, DWORD time) noexcept {
    auto* const found = reinterpret_cast<SState*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (found == nullptr || found->client == nullptr) return;
    const auto state = found->weak_from_this().lock();
    const CLoopOfThread loop(state->loop);
    BeginMessage(*state);
    try {
        state->client->OnTick(time);
    } catch (...) { // no memory: this tick is lost
        state->box.Close();
    }
    EndMessage(state);
    ShowBoxThatIsDue(state);
}

LRESULT CEditorWindow::Handle(SState& state, UINT message, WPARAM wParam, LPARAM lParam) {
    const HWND window = state.window;
    switch (message) {
    case WM_PAINT: {
        PAINTSTRUCT paint{};
        BeginPaint(window, &paint);
        EndPaint(window, &paint);
        state.client->OnPaint();
        return 0;
    }
    case WM_DRAWITEM: // the window in which OpenGL draws was covered
        state.client->OnPaint();
        return TRUE;
    case WM_ERASEBKGND:
        return 1;
    case WM_CANCELMODE:
        state.client->OnCancel();
        return 0;
    case WM_SETCURSOR:
        if (LOWORD(lParam) != HTCLIENT || reinterpret_cast<HWND>(wParam) != window) break;
        ::SetCursor(LoadCursorW(nullptr, NameOf(state.cursor)));
        return TRUE;
    case WM_MOUSELEAVE:
        state.client->OnLeave();
        return 0;
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_LBUTTONUP:
    case WM_RBUTTONUP:
    case WM_MOUSEMOVE:
    case WM_MOUSEWHEEL:
        return HandlePointer(state, message, wParam, lParam);
    case WM_GETDLGCODE:
        return DLGC_WANTALLKEYS;
    case WM_KEYDOWN:
    case WM_KEYUP:
        return HandleKey(state, message, wParam, lParam);
    case WM_COMMAND:
        if (HIWORD(wParam) == 0 && lParam == 0) state.client->OnCommand(LOWORD(wParam));
        return 0;
    case Posted:
        state.loop->RunPosted();
        return 0;
    case WM_DROPFILES: // they are accepted and mean nothing
        DragFinish(reinterpret_cast<HDROP>(wParam));
        return 0;
    case WM_DESTROY:
        CloseWhatIsUp(state, window);
        state.box.End();
        KillTimer(window, reinterpret_cast<UINT_PTR>(&state));
        break;
    case WM_NCDESTROY: {
        // By the host, which has destroyed its own window: End() finds nothing left to do.
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        state.loop->End();
        state.window = nullptr;
        if (auto* const client = std::exchange(state.client, nullptr)) client->OnGone();
        break;
    }
    default:
        if (message < FirstUserMessage || message > LastUserMessage) break;
        state.client->OnUserMessage(message);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

LRESULT CEditorWindow::HandlePointer(SState& state, UINT message, WPARAM wParam, LPARAM lParam) {
    auto& client = *state.client;
    const auto flags = FlagsOf(wParam);
    const auto x = SignedX(lParam);
    const auto y = SignedY(lParam);
    const bool isDown = message == WM_LBUTTONDOWN || message == WM_RBUTTONDOWN;
    if (state.IsModal() && (isDown || message == WM_MOUSEWHEEL)) {
        if (isDown) state.loop->Modal()->Raise();
        return 0;
    }
    if (message != WM_MOUSEMOVE) // hosts move their windows into others
        state.loop->SetHostWindow(reinterpret_cast<std::uintptr_t>(GetAncestor(state.window, GA_ROOT)));
    switch (message) {
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
        client.OnPress(x, y, flags, static_cast<std::uint32_t>(GetMessageTime()));
        break;
    case WM_LBUTTONUP:
        client.OnRelease(x, y, flags | GUI::MouseLeft);
        break;
    case WM_RBUTTONUP:
        client.OnRelease(x, y, flags | GUI::MouseRight);
        break;
    case WM_MOUSEWHEEL:
        client.OnWheel(static_cast<float>(static_cast<std::int16_t>(HIWORD(wParam))) / WHEEL_DELTA, flags);
        break;
    default:
        client.OnMove(x, y, flags);
        break;
    }
    return 0;
}

LRESULT CEditorWindow::HandleKey(SState& state, UINT message, WPARAM wParam, LPARAM lParam) {
    const bool isDown = message == WM_KEYDOWN;
    if (IsUsed(wParam) && !state.IsModal())
        state.client->OnKey(static_cast<std::uint32_t>(wParam), isDown);
    else if (const HWND parent = GetParent(state.window); parent != nullptr && !state.box.IsOpen())
        PostMessageW(parent, message, wParam, lParam); // the host's own keys, such as play
    return 0;
}

} // namespace KAV::Native
