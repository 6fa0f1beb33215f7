// The editor of the delivered library in hosts on Windows that do unusual things, and what it brings into
// their processes.

#include "tests/editor/win32_host.h"
#include "tests/support/file_text.h"
#include "tests/support/process_memory.h"
#include "tests/support/scratch_home.h"
#include "tests/support/software_renderer.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace KAV::Tests {

namespace {

using namespace VST;
namespace fs = std::filesystem;

constexpr auto Knob = "Main Input Gain";
constexpr auto WithMenu = "Oversampling";

class WindowsHost : public testing::Test {
protected:
    CLoadedLibrary library;
    HWND top = MakeHostWindow();
    HWND parent = MakeHostWindow(top);

    void SetUp() override { ChooseSoftwareRenderer(); }
    void TearDown() override {
        DestroyWindow(top);
        Pump();
    }
    /// The window of an editor that the host has opened in `parent`; it shows a picture.
    HWND OpenEditor(CWin32Host& host) const {
        EXPECT_TRUE(host.Open(parent));
        const HWND editor = EditorIn(parent);
        EXPECT_NE(editor, nullptr);
        EXPECT_TRUE(ShowsAPicture(editor));
        return editor;
    }
    /// A drag in that editor changes the state and is told as one edit.
    static void ExpectItWorks(CWin32Host& host, HWND editor) {
        const auto before = host.Chunk();
        const auto edits = host.Edits().size();
        Drag(editor, Knob);
        EXPECT_TRUE(PumpUntil([&] {
            host.Dispatch(effEditIdle);
            return host.Edits().ends_with('e') && host.Edits().size() > edits;
        }));
        EXPECT_EQ(host.Edits().substr(edits), "bve");
        EXPECT_NE(host.Chunk(), before);
    }
    void ExpectItOpensAgain(CWin32Host& host) const {
        ExpectItWorks(host, OpenEditor(host));
        host.Close();
        EXPECT_EQ(EditorIn(parent), nullptr);
    }
};

/// The menu or the box of this class that is up; null without one.
HWND UpOf(const wchar_t* kind) {
    HWND found = nullptr;
    while ((found = FindWindowExW(nullptr, found, kind, nullptr)) != nullptr) {
        DWORD process = 0;
        GetWindowThreadProcessId(found, &process);
        if (process == GetCurrentProcessId() && IsWindowVisible(found)) return found;
    }
    return nullptr;
}
constexpr const wchar_t* MenuClass = L"#32768";
constexpr const wchar_t* BoxClass = L"#32770";

/// Opens a menu, in whose own loop the host does something.
void WithOpenMenu(HWND hostWindow, HWND editor, const std::function<void()>& work) {
    bool wasUp = false;
    InLoopOf(hostWindow, [&] {
        wasUp = UpOf(MenuClass) != nullptr;
        work();
    });
    Click(editor, WithMenu);
    Pump();
    EXPECT_TRUE(wasUp);
    EXPECT_EQ(UpOf(MenuClass), nullptr);
}

/// A copy of the library in a folder of its own, under its own name.
fs::path CopyIn(const char* folder) {
    const fs::path original = KAV_PLUGIN_PATH;
    const auto place = ScratchFolder() / folder;
    fs::create_directories(place);
    const auto copy = place / original.filename();
    fs::copy_file(original, copy, fs::copy_options::overwrite_existing);
    return copy;
}

/// The same, whose pictures can't be read: the editor says so in a box.
fs::path DamagedCopy() {
    const auto copy = CopyIn("damaged");
    auto bytes = ReadText(copy);
    const std::string signature = "\x89PNG\r\n\x1a\n";
    std::size_t pictures = 0;
    for (auto at = bytes.find(signature); at != std::string::npos; at = bytes.find(signature, at + 1)) {
        if (bytes.compare(at + 12, 4, "IHDR") != 0) continue; // the reader's own copy of the signature
        bytes[at + 1] = 'X';
        ++pictures;
    }
    EXPECT_GT(pictures, 10u);
    std::ofstream(copy, std::ios::binary | std::ios::trunc) << bytes;
    return copy;
}

HMODULE ModuleOf(HWND editor) {
    return reinterpret_cast<HMODULE>(GetWindowLongPtrW(editor, GWLP_HINSTANCE));
}

bool HasClass(HMODULE module) {
    WNDCLASSEXW kind{};
    kind.cbSize = sizeof(kind);
    return GetClassInfoExW(module, L"KAVGUIWindow", &kind) != 0 && kind.lpfnWndProc != nullptr;
}

} // namespace

// What comes into the host's process

TEST_F(WindowsHost, LoadsNoGraphicsLibraryBeforeItsEditorOpens) {
    const auto loaded = [] {
        std::vector<std::string> names;
        for (const char* const name : {"gdiplus", "comdlg32", "opengl32", "d3d9", "d2d1", "dwrite"}) {
            if (GetModuleHandleA(name) != nullptr) names.emplace_back(name);
        }
        return names;
    };
    const auto before = loaded(); // by the system itself
    ASSERT_EQ(std::count(before.begin(), before.end(), "gdiplus"), 0);
    ASSERT_EQ(std::count(before.begin(), before.end(), "comdlg32"), 0);
    RunSession(library.Entry());
    CWin32Host host(library);
    EXPECT_NE(host.Effect()->flags & effFlagsHasEditor, 0);
    host.Rect();
    EXPECT_EQ(loaded(), before);
    OpenEditor(host);
    EXPECT_NE(GetModuleHandleA("gdiplus"), nullptr);
    EXPECT_EQ(GetModuleHandleA("comdlg32"), nullptr) << "nobody has asked for a file";
}

TEST_F(WindowsHost, DrawsByDirect3DForAUserWhoHasChosenNothing) {
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Kavelin\\KAV Sorrel Limiter");
    {
        CWin32Host host(library);
        ASSERT_TRUE(host.Open(parent));
        EXPECT_NE(GetModuleHandleA("d3d9"), nullptr);
        Pump(200);
        Drag(EditorIn(parent), Knob);
        EXPECT_TRUE(PumpUntil([&] {
            host.Dispatch(effEditIdle);
            return host.Edits().ends_with('e');
        }));
        host.Close();
    }
    ChooseSoftwareRenderer();
}

TEST_F(WindowsHost, OpensTwoHundredTimesInTheSameMemory) {
    CWin32Host host(library);
    const auto openings = [&](int count) {
        for (int n = 0; n < count; ++n) {
            ASSERT_TRUE(host.Open(parent));
            Pump(20); // a frame
            host.Close();
        }
    };
    openings(20); // what the system and the library keep from the first ones
    const auto resident = ResidentBytes();
    const auto reserved = ReservedBytes();
    openings(180);
    // 10 KB of each opening would be 1.8 MB.
    EXPECT_LT(ResidentBytes(), resident + (1U << 20U));
    EXPECT_LT(ReservedBytes(), reserved + (1U << 20U));
}

// What would hold it until the host's thread ends would make that thread hang there.
TEST_F(WindowsHost, UnloadsTheLibraryWhoseEditorItHadOpen) {
    const auto file = CopyIn("unloaded");
    {
        const CLoadedLibrary copy(file);
        CWin32Host host(copy);
        ExpectItOpensAgain(host);
        EXPECT_NE(GetModuleHandleW(file.c_str()), nullptr);
    }
    EXPECT_EQ(GetModuleHandleW(file.c_str()), nullptr);
}

TEST_F(WindowsHost, TwoCopiesOfOneNameHaveAnEditorEach) {
    const HWND otherParent = MakeHostWindow(top);
    {
        const CLoadedLibrary second(CopyIn("second"));
        {
            const CLoadedLibrary first(CopyIn("first"));
            CWin32Host one(first);
            CWin32Host two(second);
            const HWND editor = OpenEditor(one);
            ASSERT_TRUE(two.Open(otherParent));
            const HWND other = EditorIn(otherParent);
            ASSERT_TRUE(ShowsAPicture(other));
            EXPECT_NE(ModuleOf(editor), ModuleOf(other));
            const auto untouched = two.Chunk();
            ExpectItWorks(one, editor);
            EXPECT_EQ(two.Chunk(), untouched);
            const HMODULE module = ModuleOf(editor);
            EXPECT_TRUE(HasClass(module));
            one.Close();
            EXPECT_FALSE(HasClass(module)) << "its procedure is about to be unloaded";
            EXPECT_TRUE(HasClass(ModuleOf(other)));
            ExpectItWorks(two, other);
            two.Close();
        }
        // The first one has been unloaded, by the host's word.
        CWin32Host two(second);
        ASSERT_TRUE(two.Open(otherParent));
        ASSERT_TRUE(ShowsAPicture(EditorIn(otherParent)));
        ExpectItWorks(two, EditorIn(otherParent));
    }
}

TEST_F(WindowsHost, InstancesShareTheClassOfTheirWindowsUntilTheLastEditorCloses) {
    const HWND otherParent = MakeHostWindow(top);
    CWin32Host one(library);
    CWin32Host two(library);
    const HWND editor = OpenEditor(one);
    const HMODULE module = ModuleOf(editor);
    ASSERT_TRUE(two.Open(otherParent));
    const HWND other = EditorIn(otherParent);
    one.Close();
    EXPECT_TRUE(HasClass(module));
    ExpectItWorks(two, other);
    ExpectItOpensAgain(one);
    two.Close();
    EXPECT_FALSE(HasClass(module));
    ExpectItOpensAgain(two);
}

TEST_F(WindowsHost, ClassOfThatNameInTheHostIsAnother) {
    WNDCLASSW kind{};
    kind.lpfnWndProc = &DefWindowProcW;
    kind.hInstance = GetModuleHandleW(nullptr);
    kind.lpszClassName = L"KAVGUIWindow";
    ASSERT_NE(RegisterClassW(&kind), 0);
    {
        CWin32Host host(library);
        const HWND editor = OpenEditor(host);
        EXPECT_NE(ModuleOf(editor), kind.hInstance);
        ExpectItWorks(host, editor);
    }
    EXPECT_TRUE(UnregisterClassW(L"KAVGUIWindow", kind.hInstance)) << "it is still the host's";
}

// Opening and closing in any order

TEST_F(WindowsHost, AnswersCallsOutOfOrder) {
    CWin32Host host(library);
    EXPECT_EQ(host.Dispatch(effEditIdle), 0);
    EXPECT_EQ(host.Dispatch(effEditClose), 0);
    EXPECT_FALSE(host.Open(nullptr));
    const HWND gone = MakeHostWindow(top);
    DestroyWindow(gone);
    EXPECT_FALSE(host.Open(gone));
    OpenEditor(host);
    host.Close();
    EXPECT_EQ(host.Dispatch(effEditClose), 0);
    EXPECT_EQ(host.Dispatch(effEditIdle), 0);
    EXPECT_EQ(EditorIn(parent), nullptr);
    ExpectItOpensAgain(host);
}

TEST_F(WindowsHost, OpensTwiceInOneParentAsOneWindow) {
    CWin32Host host(library);
    const HWND editor = OpenEditor(host);
    EXPECT_TRUE(host.Open(parent));
    EXPECT_EQ(EditorIn(parent), editor);
    EXPECT_EQ(FindWindowExW(parent, editor, L"KAVGUIWindow", nullptr), nullptr);
    ExpectItWorks(host, editor);
    host.Close();
    EXPECT_FALSE(IsWindow(editor)) << "one close ends it";
}

TEST_F(WindowsHost, OpensInAnotherParentThanBefore) {
    CWin32Host host(library);
    OpenEditor(host);
    const HWND other = MakeHostWindow(top);
    EXPECT_TRUE(host.Open(other));
    EXPECT_EQ(EditorIn(parent), nullptr);
    ASSERT_TRUE(ShowsAPicture(EditorIn(other)));
    ExpectItWorks(host, EditorIn(other));
}

TEST_F(WindowsHost, MayMoveTheEditorIntoAnotherOfItsWindows) {
    CWin32Host host(library);
    const HWND editor = OpenEditor(host);
    const HWND other = MakeHostWindow();
    ASSERT_NE(SetParent(editor, other), nullptr);
    EXPECT_TRUE(ShowsAPicture(editor));
    ExpectItWorks(host, editor);
    SetParent(parent, other); // and the window around it
    SetParent(editor, parent);
    ExpectItWorks(host, editor);
    host.Close();
    EXPECT_FALSE(IsWindow(editor));
    ExpectItOpensAgain(host);
    DestroyWindow(other);
}

TEST_F(WindowsHost, MayDestroyItsWindowFirst) {
    for (const bool wholeWindow : {false, true}) {
        CWin32Host host(library);
        const HWND other = MakeHostWindow();
        const HWND inner = MakeHostWindow(other);
        ASSERT_TRUE(host.Open(inner));
        const HWND editor = EditorIn(inner);
        ASSERT_TRUE(ShowsAPicture(editor));
        Drag(editor, Knob, false);
        DestroyWindow(wholeWindow ? other : inner);
        EXPECT_FALSE(IsWindow(editor));
        EXPECT_FALSE(HasClass(ModuleOf(editor)));
        host.Dispatch(effEditIdle);
        EXPECT_TRUE(PumpUntil([&] {
            host.Dispatch(effEditIdle);
            return host.Edits() == "bve";
        })) << host.Edits();
        ASSERT_TRUE(host.Open(parent)) << "afresh, though the host hasn't closed it";
        ExpectItWorks(host, EditorIn(parent));
        host.Close();
        ExpectItOpensAgain(host);
        if (!wholeWindow) DestroyWindow(other);
    }
}

TEST_F(WindowsHost, MayDestroyItsWindowAndOnlyThenClose) {
    CWin32Host host(library);
    OpenEditor(host);
    DestroyWindow(parent);
    Pump(50);
    host.Close();
    host.Close();
    parent = MakeHostWindow(top);
    ExpectItOpensAgain(host);
}

TEST_F(WindowsHost, MayEndTheInstanceWithTheEditorOpen) {
    CWin32Host host(library);
    const HWND editor = OpenEditor(host);
    Drag(editor, Knob, false);
    host.EndInstance();
    EXPECT_FALSE(IsWindow(editor));
    EXPECT_EQ(host.Edits(), "bve");
    Pump(50);
}

// Inside the host's own calls

TEST_F(WindowsHost, MayCloseInsideACallOfADrag) {
    CWin32Host host(library);
    for (const auto call : {audioMasterBeginEdit, audioMasterAutomate, audioMasterEndEdit}) {
        const HWND editor = OpenEditor(host);
        const auto edits = host.Edits().size();
        bool closed = false;
        host.Inside(call, [&] {
            host.Close();
            closed = true;
            EXPECT_FALSE(IsWindow(editor));
        });
        Drag(editor, Knob);
        EXPECT_TRUE(PumpUntil([&] {
            host.Dispatch(effEditIdle);
            return closed && host.Edits().ends_with('e');
        })) << call;
        EXPECT_EQ(GetCapture(), nullptr);
        EXPECT_EQ(host.Edits().substr(edits).front(), 'b');
    }
    ExpectItOpensAgain(host);
}

TEST_F(WindowsHost, MayEndTheInstanceInsideACallOfADrag) {
    for (const auto call : {audioMasterBeginEdit, audioMasterAutomate}) {
        CWin32Host host(library);
        const HWND editor = OpenEditor(host);
        host.Inside(call, [&] { host.EndInstance(); });
        Drag(editor, Knob);
        EXPECT_TRUE(PumpUntil([&] { return host.Effect() == nullptr; })) << call;
        EXPECT_FALSE(IsWindow(editor));
        Pump(50);
    }
}

TEST_F(WindowsHost, HearsOfADragWhileItLasts) {
    CWin32Host host(library);
    const HWND editor = OpenEditor(host);
    Drag(editor, Knob, false);
    EXPECT_EQ(host.Edits(), "bv") << "without an idle call";
    SendMessageW(editor, WM_LBUTTONUP, 0, 0);
    EXPECT_TRUE(PumpUntil([&] { return host.Edits() == "bve"; })) << "also without one";
}

TEST_F(WindowsHost, MayCloseWhileAMenuIsOpen) {
    CWin32Host host(library);
    const HWND editor = OpenEditor(host);
    WithOpenMenu(top, editor, [&] { host.Close(); });
    EXPECT_FALSE(IsWindow(editor));
    ExpectItOpensAgain(host);
}

TEST_F(WindowsHost, MayEndTheInstanceWhileAMenuIsOpen) {
    CWin32Host host(library);
    const HWND editor = OpenEditor(host);
    WithOpenMenu(top, editor, [&] { host.EndInstance(); });
    EXPECT_FALSE(IsWindow(editor));
    Pump(50);
}

TEST_F(WindowsHost, MayDestroyItsWindowWhileAMenuIsOpen) {
    CWin32Host host(library);
    const HWND editor = OpenEditor(host);
    WithOpenMenu(top, editor, [&] { DestroyWindow(parent); });
    EXPECT_FALSE(IsWindow(editor));
    parent = MakeHostWindow(top);
    ExpectItOpensAgain(host);
}

TEST_F(WindowsHost, MayCloseReopenOrEndWhileAMessageBoxIsUp) {
    const CLoadedLibrary damaged(DamagedCopy());
    for (const int what : {0, 1, 2, 3}) {
        CWin32Host host(damaged);
        ASSERT_TRUE(host.Open(parent)) << "opening doesn't wait for the user";
        EXPECT_EQ(UpOf(BoxClass), nullptr);
        bool wasUp = false;
        bool isDone = false;
        const std::function<void()> look = [&] {
            if (UpOf(BoxClass) == nullptr) { // not yet
                InLoopOf(top, look);
                return;
            }
            wasUp = true;
            if (what == 0) host.Close();
            if (what == 1) {
                host.Close();
                host.Open(parent);
                host.Close();
            }
            if (what == 2) host.EndInstance();
            if (what == 3) DestroyWindow(parent);
            isDone = true;
        };
        InLoopOf(top, look);
        EXPECT_TRUE(PumpUntil([&] { return isDone && UpOf(BoxClass) == nullptr; })) << what;
        EXPECT_TRUE(wasUp);
        EXPECT_EQ(EditorIn(parent), nullptr);
        EXPECT_TRUE(IsWindowEnabled(top)) << "the box has given it back";
        if (what == 3) parent = MakeHostWindow(top);
    }
    CWin32Host host(library);
    ExpectItOpensAgain(host);
}

// Messages that don't come

TEST_F(WindowsHost, MayHandleNoMessagesForSeconds) {
    CWin32Host host(library);
    const HWND editor = OpenEditor(host);
    const auto before = PixelsOf(editor, 0, 0, 700, 500);
    for (int second = 0; second < 3; ++second) {
        for (std::int32_t index = 0; index < host.Effect()->numParams; ++index)
            host.Effect()->setParameter(host.Effect(), index, second % 2 == 0 ? 0.25f : 0.75f);
        host.Dispatch(effEditIdle);
        Sleep(1000);
    }
    EXPECT_EQ(PixelsOf(editor, 0, 0, 700, 500), before) << "nothing can have been drawn";
    EXPECT_TRUE(PumpUntil([&] { return PixelsOf(editor, 0, 0, 700, 500) != before; }));
    ExpectItWorks(host, editor);
}

// The first size

namespace {

/// A value of the user's settings of the screen, which programs read that begin from now on.
class CScreenSetting final {
public:
    CScreenSetting(const wchar_t* name, DWORD value) : _name(name) {
        DWORD size = sizeof(_before);
        _had = RegGetValueW(HKEY_CURRENT_USER, Key, _name, RRF_RT_REG_DWORD, nullptr, &_before, &size) == 0;
        Set(value);
    }
    ~CScreenSetting() {
        if (_had)
            Set(_before);
        else
            RegDeleteKeyValueW(HKEY_CURRENT_USER, Key, _name);
    }
    CScreenSetting(const CScreenSetting&) = delete;
    CScreenSetting& operator=(const CScreenSetting&) = delete;

private:
    static constexpr const wchar_t* Key = L"Control Panel\\Desktop";

    void Set(DWORD value) const {
        EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, Key, _name, REG_DWORD, &value, sizeof(value)), 0);
    }

    const wchar_t* _name;
    DWORD _before = 0;
    bool _had = false;
};

/// The system's dots per inch. Wine hides them from programs that aren't aware of them only if it is told to.
struct SSystemDots {
    explicit SSystemDots(DWORD count) : dots(L"LogPixels", count) {}
    CScreenSetting dots;
    CScreenSetting stretches{L"DpiScalingVer", 0x1000};
};

/// The width that a host of its own finds: its exit code.
DWORD WidthInAHost(bool isAware) {
    auto command = fs::path(KAV_EDITOR_GUEST).wstring() + (isAware ? L" aware" : L" unaware");
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    PROCESS_INFORMATION process{};
    if (CreateProcessW(
            nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process) == 0)
        return 0;
    DWORD code = 0;
    WaitForSingleObject(process.hProcess, 60000);
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code;
}

} // namespace

TEST(WindowsHostDots, EditorBeginsAsWideAsTheSystemSaysInAHostThatIsAwareOfThem) {
    const SSystemDots dots(120);
    EXPECT_EQ(WidthInAHost(true), 943u); // 754 x 120 / 96, rounded
    EXPECT_EQ(WidthInAHost(false), 754u) << "the system stretches its windows";
}

TEST(WindowsHostDots, EditorBeginsNoWiderThanTheScreen) {
    const SSystemDots dots(480);
    EXPECT_EQ(WidthInAHost(true), static_cast<DWORD>(GetSystemMetrics(SM_CXSCREEN)));
}

} // namespace KAV::Tests
