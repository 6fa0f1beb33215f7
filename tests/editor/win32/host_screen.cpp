#include "tests/editor/host_screen.h"

#include "platform/winapi/windows_header.h"

#include "tests/support/scratch_home.h"
#include "tests/support/software_renderer.h"

#include <array>
#include <utility>

namespace KAV::Tests {

namespace {

SIZE SpaceOf(CHostScreen::ESpace space) {
    if (space == CHostScreen::ESpace::Usual) return {800, 600};
    return {1600, 1200};
}

/// A user of the process's own, with no settings and no documents yet: those of the system's user outlive the
/// test.
class COwnUser final {
public:
    COwnUser() {
        // Not volatile: the system couldn't make its own keys in it.
        const auto name = L"Software\\EditorTests\\" + std::to_wstring(GetCurrentProcessId());
        EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                      &_own, nullptr),
            ERROR_SUCCESS);
        EXPECT_EQ(RegDeleteTreeW(_own, nullptr), ERROR_SUCCESS) << "what a test that has died has left";
        const auto documents = ScratchFolder() / "Documents";
        std::filesystem::create_directories(documents);
        const auto path = documents.wstring();
        EXPECT_EQ(
            RegSetKeyValueW(_own,
                L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders", L"Personal",
                REG_SZ, path.c_str(), static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t))),
            ERROR_SUCCESS);
        EXPECT_EQ(RegOverridePredefKey(HKEY_CURRENT_USER, _own), ERROR_SUCCESS);
        ChooseSoftwareRenderer();
    }
    ~COwnUser() {
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegDeleteTreeW(_own, nullptr);
        RegDeleteKeyW(_own, L"");
        RegCloseKey(_own);
    }
    COwnUser(const COwnUser&) = delete;
    COwnUser& operator=(const COwnUser&) = delete;

private:
    HKEY _own = nullptr;
};

void Send(const INPUT& input) {
    INPUT sent = input;
    EXPECT_EQ(SendInput(1, &sent, sizeof(sent)), 1U);
}

void SendMouse(DWORD flags, LONG x = 0, LONG y = 0, std::int32_t data = 0) {
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dx = x;
    input.mi.dy = y;
    input.mi.mouseData = static_cast<DWORD>(data);
    input.mi.dwFlags = flags;
    Send(input);
}

WORD VirtualKeyOf(int key) {
    switch (key) {
    case CHostScreen::Return:
        return VK_RETURN;
    case CHostScreen::Escape:
        return VK_ESCAPE;
    case CHostScreen::Down:
        return VK_DOWN;
    case CHostScreen::Right:
        return VK_RIGHT;
    case CHostScreen::Home:
        return VK_HOME;
    case CHostScreen::End:
        return VK_END;
    case CHostScreen::Shift:
        return VK_LSHIFT;
    case CHostScreen::Control:
        return VK_LCONTROL;
    default:
        return LOBYTE(VkKeyScanW(static_cast<wchar_t>(key)));
    }
}

bool IsOfClass(HWND window, const wchar_t* name) {
    std::array<wchar_t, 32> found{};
    GetClassNameW(window, found.data(), static_cast<int>(found.size()));
    return std::wstring(found.data()) == name;
}

/// A visible top-level window of this process; null: there is none.
HWND FindOwn(const wchar_t* className) {
    struct SSearch {
        const wchar_t* name;
        HWND found;
    } search{className, nullptr};
    EnumWindows(
        [](HWND window, LPARAM given) -> BOOL {
            auto& wanted = *reinterpret_cast<SSearch*>(given);
            DWORD process = 0;
            GetWindowThreadProcessId(window, &process);
            const bool fits = process == GetCurrentProcessId() && IsWindowVisible(window) != 0 &&
                              IsOfClass(window, wanted.name);
            if (fits) wanted.found = window;
            return fits ? FALSE : TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

constexpr const wchar_t* MenuClass = L"#32768";
constexpr const wchar_t* DialogClass = L"#32770";

} // namespace

struct CHostScreen::SParts {
    ESpace space;
    COwnUser user;
    CEditorHost* host = nullptr;
    HWND top = nullptr; ///< these go with the host's thread
    HWND parent = nullptr;

    HWND Editor() const { return GetWindow(parent, GW_CHILD); }
    void MakeWindows() {
        WNDCLASSW kind{};
        kind.lpfnWndProc = &DefWindowProcW;
        kind.hInstance = GetModuleHandleW(nullptr);
        kind.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        kind.hbrBackground = static_cast<HBRUSH>(GetStockObject(GRAY_BRUSH));
        kind.lpszClassName = L"Host";
        RegisterClassW(&kind);
        const auto [width, height] = SpaceOf(space);
        top = CreateWindowW(L"Host", L"host", WS_POPUP | WS_CLIPCHILDREN | WS_VISIBLE, 100, 80, width + 40,
            height + 50, nullptr, nullptr, kind.hInstance, nullptr);
        parent = CreateWindowW(L"Host", L"", WS_CHILD | WS_CLIPCHILDREN | WS_VISIBLE, 20, 30, width, height,
            top, nullptr, kind.hInstance, nullptr);
        SetForegroundWindow(top); // keys lead there
    }
};

CHostScreen::CHostScreen(ESpace space) : _parts(new SParts{space, {}}) {}

CHostScreen::~CHostScreen() = default;

std::uintptr_t CHostScreen::Begin(CEditorHost& host) {
    _parts->host = &host;
    host.Run([this] { _parts->MakeWindows(); });
    EXPECT_NE(_parts->parent, nullptr);
    return reinterpret_cast<std::uintptr_t>(_parts->parent);
}

bool CHostScreen::HasEditor() {
    return _parts->Editor() != nullptr;
}

CHostScreen::SSize CHostScreen::EditorSize() {
    RECT place{};
    GetClientRect(_parts->Editor(), &place);
    return {place.right, place.bottom};
}

std::vector<std::uint32_t> CHostScreen::Pixels(
    std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const HDC from = GetDC(_parts->Editor());
    const HDC to = CreateCompatibleDC(from);
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height; // rows from the top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(to, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ before = SelectObject(to, bitmap);
    EXPECT_NE(BitBlt(to, 0, 0, width, height, from, x, y, SRCCOPY), 0);
    GdiFlush();
    const auto* const read = static_cast<const std::uint32_t*>(bits);
    for (std::size_t n = 0; n < pixels.size(); ++n) pixels[n] = read[n] & 0xFFFFFF;
    SelectObject(to, before);
    DeleteObject(bitmap);
    DeleteDC(to);
    ReleaseDC(_parts->Editor(), from);
    return pixels;
}

bool CHostScreen::SeesHardware() {
    return false; // under Wine
}

void CHostScreen::MoveTo(std::int32_t x, std::int32_t y) {
    POINT at{x, y};
    ClientToScreen(_parts->parent, &at);
    // A screen is 2^16 wide and high for this, whatever its pixels; the first place of a pixel.
    const LONG width = GetSystemMetrics(SM_CXSCREEN);
    const LONG height = GetSystemMetrics(SM_CYSCREEN);
    SendMouse(MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE, (at.x * 65536 + width - 1) / width,
        (at.y * 65536 + height - 1) / height);
    // Wine moves the display's pointer, too, and the display tells the host's thread, which moves Windows'
    // pointer again. Told late, between later moves and presses, that would be a step back.
    Sleep(20);
    _parts->host->Run([] {});
}

void CHostScreen::Press(EButton button) {
    SendMouse(button == EButton::Left ? MOUSEEVENTF_LEFTDOWN : MOUSEEVENTF_RIGHTDOWN);
}

void CHostScreen::Release(EButton button) {
    SendMouse(button == EButton::Left ? MOUSEEVENTF_LEFTUP : MOUSEEVENTF_RIGHTUP);
}

void CHostScreen::Turn(int notches) {
    SendMouse(MOUSEEVENTF_WHEEL, 0, 0, notches * WHEEL_DELTA);
}

void CHostScreen::Key(int key, bool isDown) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = VirtualKeyOf(key);
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(input.ki.wVk, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = isDown ? 0 : KEYEVENTF_KEYUP;
    Send(input);
}

bool CHostScreen::IsMenuUp() {
    return FindOwn(MenuClass) != nullptr;
}

bool CHostScreen::AsksForFile() {
    const HWND dialog = FindOwn(DialogClass);
    GUITHREADINFO keys{};
    keys.cbSize = sizeof(keys);
    return dialog != nullptr && GetForegroundWindow() == dialog &&
           GetGUIThreadInfo(GetWindowThreadProcessId(dialog, nullptr), &keys) != 0 &&
           IsChild(dialog, keys.hwndFocus) != 0;
}

/// Not by keys: the dialog of Wine doesn't select the proposed name, which that of Windows does.
void CHostScreen::EnterFile(std::string_view name, bool) {
    GUITHREADINFO keys{};
    keys.cbSize = sizeof(keys);
    GetGUIThreadInfo(GetWindowThreadProcessId(FindOwn(DialogClass), nullptr), &keys);
    EXPECT_TRUE(IsOfClass(keys.hwndFocus, L"Edit"));
    const std::wstring wide(name.begin(), name.end());
    SendMessageW(keys.hwndFocus, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(wide.c_str()));
}

bool CHostScreen::HasQuestion() {
    return FindOwn(DialogClass) != nullptr;
}

} // namespace KAV::Tests
