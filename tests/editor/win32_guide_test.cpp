// F1 in the editor of the delivered library, and the program for PDF files.

#include "platform/folders.h"
#include "tests/editor/win32_host.h"
#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"
#include "tests/support/software_renderer.h"

#include <array>
#include <filesystem>
#include <string>

namespace KAV::Tests {

namespace {

namespace fs = std::filesystem;

/// A documents folder of the process's own, and a program for PDF files that only notes what it is asked to
/// open. That program is the system's until the end of the test.
class CGuideReader final {
public:
    CGuideReader() {
        DWORD size = sizeof(_before);
        RegGetValueW(HKEY_CLASSES_ROOT, L".pdf", nullptr, RRF_RT_REG_SZ, nullptr, _before.data(), &size);
        Set(HKEY_CLASSES_ROOT, L".pdf", nullptr, L"GuideTest");
        Set(HKEY_CLASSES_ROOT, L"GuideTest\\shell\\open\\command", nullptr,
            L"cmd /c echo %1>" + _note.wstring());
        EXPECT_EQ(RegCreateKeyW(HKEY_CURRENT_USER, L"Software\\GuideTest", &_own), 0);
        Set(_own, L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders", L"Personal",
            (ScratchFolder() / "Documents").wstring());
        EXPECT_EQ(RegOverridePredefKey(HKEY_CURRENT_USER, _own), 0);
        ChooseSoftwareRenderer();
    }
    ~CGuideReader() {
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegCloseKey(_own);
        RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\GuideTest");
        RegDeleteTreeW(HKEY_CLASSES_ROOT, L"GuideTest");
        Set(HKEY_CLASSES_ROOT, L".pdf", nullptr, _before.data());
    }
    CGuideReader(const CGuideReader&) = delete;
    CGuideReader& operator=(const CGuideReader&) = delete;

    /// Whether it is asked for this file now, and for no other.
    bool Opens(const fs::path& file) const {
        const auto wanted = file.string() + "\r\n";
        const bool isAsked = PumpUntil([&] { return ReadText(_note).ends_with('\n'); });
        EXPECT_EQ(ReadText(_note), wanted);
        fs::remove(_note);
        return isAsked;
    }

private:
    static void Set(HKEY root, const wchar_t* key, const wchar_t* name, const std::wstring& value) {
        const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
        EXPECT_EQ(RegSetKeyValueW(root, key, name, REG_SZ, value.c_str(), size), 0);
    }

    std::array<wchar_t, 256> _before{};
    HKEY _own = nullptr;
    const fs::path _note = ScratchFolder() / "opened.txt";
};

} // namespace

TEST(WindowsHostGuide, IsTheOneNextToTheLibraryUnlessTheUserHasACopy) {
    fs::create_directories(ScratchFolder() / "Documents");
    const CGuideReader reader;
    const auto folder = ScratchFolder() / "guide";
    fs::create_directories(folder);
    const auto file = folder / "KAVSorrelLimiter.dll";
    fs::copy_file(KAV_PLUGIN_PATH, file, fs::copy_options::overwrite_existing);
    const auto beside = folder / "KAV Sorrel Limiter User Guide.pdf";
    const auto own =
        ScratchFolder() / "Documents" / "Kavelin" / "KAV Sorrel Limiter" / "Tessel User Guide.pdf";
    ASSERT_EQ(Platform::DocumentsFolder(), ScratchFolder() / "Documents");
    WriteText(beside, "guide");
    const CLoadedLibrary copy(file);
    CWin32Host host(copy);
    const HWND top = MakeHostWindow();
    ASSERT_TRUE(host.Open(top));
    const HWND editor = EditorIn(top);
    ASSERT_TRUE(ShowsAPicture(editor));
    PostMessageW(editor, WM_KEYDOWN, VK_F1, 0);
    EXPECT_TRUE(reader.Opens(beside));
    WriteText(own, "guide");
    PostMessageW(editor, WM_KEYDOWN, VK_F1, 0);
    EXPECT_TRUE(reader.Opens(own));
    host.Close();
    DestroyWindow(top);
}

} // namespace KAV::Tests
