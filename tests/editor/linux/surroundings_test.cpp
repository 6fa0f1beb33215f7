// The editor where libraries and fonts are missing or fail, where the user's folders are none, and where the
// clock is set back.

#include "tests/editor/linux/guest_editor.h"
#include "utils/location.h"

#include <cstdint>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <vector>

namespace KAV::Tests {

namespace {

namespace fs = std::filesystem;

class Surroundings : public CGuestEditor {
protected:
    enum class ELibrary { Missing, Failing };

    /// A folder for LD_LIBRARY_PATH, in which these libraries are found first: as files that are none, or as
    /// one whose functions all fail.
    static std::string FolderOf(ELibrary state, std::initializer_list<const char*> names) {
        const auto folder = Scratch() / (state == ELibrary::Missing ? "missing" : "failing");
        fs::remove_all(folder);
        fs::create_directories(folder);
        for (const char* const name : names) {
            if (state == ELibrary::Missing) {
                std::ofstream{folder / name};
            } else {
                fs::create_symlink(KAV_FAILING_LIBRARY, folder / name);
            }
        }
        return folder.string();
    }
    /// Whether the guest has loaded the library whose functions fail.
    bool HasFailingLibrary() const {
        const auto maps = ReadText("/proc/" + std::to_string(guest->Process()) + "/maps");
        return maps.find(fs::path(KAV_FAILING_LIBRARY).filename().string()) != std::string::npos;
    }
    /// The rest of a picture that stands still.
    std::vector<std::uint32_t> StillPictureOf(std::string_view name) {
        std::vector<std::uint32_t> last;
        EXPECT_TRUE(Until([&] {
            auto now = PictureOf(windows.Editor(), name);
            const bool isSame = now == last;
            last = std::move(now);
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            return isSame;
        }));
        return last;
    }
};

/// A character that the panel's typeface lacks.
const std::string OddPatch = "\xE6\x97\xA5.kvp";

/// What the user's variables hold where they lead to no folder of his.
constexpr std::initializer_list<const char*> UserVariables{
    "HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"};

} // namespace

TEST_F(Surroundings, StoresWhatItsUserSaves) { // what the other tests rely on
    Begin();
    DragThreshold(60);
    const double value = Threshold();
    EXPECT_LT(value, 1.0);
    SaveAsDefault();
    EXPECT_TRUE(Until([] { return fs::exists(Patch(DefaultPatch)); }));
    SaveAs("one");
    EXPECT_TRUE(Until([] { return fs::exists(Patch("one.kvp")); }));
    End();
    Begin();
    EXPECT_TRUE(Until([&] { return Threshold() == value; })) << "a new instance begins with it";
    End();
}

TEST_F(Surroundings, ShowsABoxWhereFontsAreMissingOrCannotBeLookedFor) {
    WritePatch(OddPatch, "0.5");
    const auto name = [this] {
        Begin();
        ExpectToWork();
        Click("ToolBtnNext"); // after the default patch
        MoveTo({1, 1});
        EXPECT_TRUE(Until([] { return Threshold() == 0.5; }));
        return StillPictureOf("ToolPatch");
    };
    std::vector<std::vector<std::uint32_t>> names;
    {
        const auto fonts = Scratch() / "fonts.conf";
        WriteText(fonts, "<?xml version=\"1.0\"?>\n<fontconfig></fontconfig>\n");
        const CVariable none("FONTCONFIG_FILE", fonts.string());
        names.push_back(name());
        End();
    }
    for (const auto state : {ELibrary::Missing, ELibrary::Failing}) {
        const CVariable libraries("LD_LIBRARY_PATH", FolderOf(state, {"libfontconfig.so.1"}));
        names.push_back(name());
        EXPECT_EQ(HasFailingLibrary(), state == ELibrary::Failing);
        End();
    }
    EXPECT_EQ(names[1], names[0]);
    EXPECT_EQ(names[2], names[0]);
}

TEST_F(Surroundings, DrawsWithTheProcessorWhereOpenGLWasChosenAndIsMissingOrFails) {
    constexpr std::uint32_t openGL = 1;
    for (const auto state : {ELibrary::Missing, ELibrary::Failing}) {
        SetUp();
        ASSERT_EQ(Utils::WriteUniversal(
                      u"HKEY_CURRENT_USER/Software/Kavelin/KAV Sorrel Limiter/GFX", &openGL, sizeof(openGL)),
            sizeof(openGL));
        fs::permissions(Home() / "config", fs::perms::all);
        const CVariable path("PATH", Home().string()); // no program shows the box
        const CVariable libraries(
            "LD_LIBRARY_PATH", FolderOf(state, {"libEGL.so.1", "libOpenGL.so.0", "libGL.so.1"}));
        Begin();
        ExpectToWork();
        EXPECT_NE(Log().find("Pixman=v"), std::string::npos) << Log();
        EXPECT_NE(Log().find("Error="), std::string::npos) << Log();
        End();
    }
}

TEST_F(Surroundings, AsksForFilesByItselfWhereTheMessageBusIsMissingOrFails) {
    for (const auto state : {ELibrary::Missing, ELibrary::Failing}) {
        SetUp();
        const CVariable libraries("LD_LIBRARY_PATH", FolderOf(state, {"libdbus-1.so.3"}));
        const CVariable choice("KAV_FILE_DIALOG", std::nullopt);
        const CVariable path("PATH", Home().string()); // no program of the desktop's
        const CVariable bus("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (Home() / "bus").string());
        Begin();
        SaveAs("one");
        EXPECT_TRUE(Until([] { return fs::exists(Patch("one.kvp")); }));
        EXPECT_EQ(HasFailingLibrary(), state == ELibrary::Failing);
        ExpectToWork();
        End();
    }
}

TEST_F(Surroundings, WorksWhereTheLibraryForTheWebIsMissingOrFails) {
    for (const auto state : {ELibrary::Missing, ELibrary::Failing}) {
        const CVariable libraries(
            "LD_LIBRARY_PATH", FolderOf(state, {"libcurl.so.4", "libcurl-gnutls.so.4"}));
        Begin(KAV_SERVED_LIBRARY); // which asks a server from the beginning
        EXPECT_TRUE(Until([&] { return HasFailingLibrary() == (state == ELibrary::Failing); }));
        ExpectToWork();
        End();
    }
}

// The user's folders

TEST_F(Surroundings, WorksWhereTheUsersVariablesLeadNowhere) {
    if (getuid() != 0) GTEST_SKIP() << "only root can become a user without a home";
    if (!IsOpenToOthers()) GTEST_SKIP() << "the temporary folder is closed to other users";
    const CVariable user("KAV_GUEST_USER", "4242"); // not in any user database
    const auto file = Scratch() / "a file";
    const auto closed = Scratch() / "closed";
    WriteText(file, "the user's");
    WriteText(closed / "file", "the user's");
    fs::permissions(closed, fs::perms::none);
    const std::vector<std::optional<std::string>> values{
        std::nullopt, "", "relative", "/proc/nowhere/at/all", file.string(), closed.string()};
    for (const auto& value : values) {
        SCOPED_TRACE(value.value_or("(unset)"));
        std::vector<std::unique_ptr<CVariable>> variables;
        for (const char* const name : UserVariables)
            variables.push_back(std::make_unique<CVariable>(name, value));
        const bool isAbsolute = value && value->starts_with('/');
        if (isAbsolute)
            variables.push_back(std::make_unique<CVariable>("TMPDIR", value)); // otherwise that is /tmp
        Begin();
        ExpectToWork();
        SaveAs("one");
        DragThreshold(-20);
        End();
    }
    EXPECT_FALSE(fs::exists("relative")) << "in the host's folder";
    EXPECT_EQ(ReadText(file), "the user's");
    EXPECT_EQ(ReadText(closed / "file"), "the user's");
    EXPECT_EQ(CountEntries(closed), 1u);
    fs::permissions(closed, fs::perms::all);
}

TEST_F(Surroundings, WorksWhereTheFolderForDocumentsIsNone) {
    const auto file = Home() / "a file";
    WriteText(file, "the user's");
    for (const std::string folder : {"/proc/nowhere", "relative", "$HOME/a file", "$HOME/a file/below"}) {
        SCOPED_TRACE(folder);
        WriteText(Home() / "config" / "user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"" + folder + "\"\n");
        Begin();
        ExpectToWork();
        End();
        EXPECT_EQ(ReadText(file), "the user's");
        EXPECT_EQ(fs::exists(Patch(DefaultPatch)), folder == "relative") << "then it is the usual one";
        fs::remove(Patch(DefaultPatch));
    }
}

// The clock

TEST_F(Surroundings, GoesOnWhenTheClockIsSetBack) {
    const auto file = Scratch() / "step";
    const auto step = [&file](std::int64_t seconds) {
        std::string bytes(sizeof(seconds), '\0');
        std::memcpy(bytes.data(), &seconds, sizeof(seconds));
        std::fstream(file, std::ios::in | std::ios::out | std::ios::binary).write(bytes.data(), 8);
    };
    WriteText(file, std::string(8, '\0'));
    const CVariable clock("KAV_CLOCK_STEP", file.string());
    const CVariable preloaded("LD_PRELOAD", KAV_STEPPING_CLOCK);
    constexpr std::int64_t year = 366 * 24 * 3600;
    Begin();
    DragThreshold(60);
    step(-10 * year);
    DragThreshold(-20);                                          // and its edit ends
    step(-static_cast<std::int64_t>(std::time(nullptr)) - year); // before 1970
    DragThreshold(-10);
    EXPECT_LT(Threshold(), 1.0);
    Click("Threshold");
    Click("Threshold"); // a double click returns it
    EXPECT_TRUE(Until([] { return Threshold() == 1.0; }));
    Click("Main Output Gain", 3); // the text box, whose cursor blinks
    Type({XKB_KEY_minus, XKB_KEY_1, XKB_KEY_2, XKB_KEY_Return});
    EXPECT_TRUE(Until([] { return Value(29) == 0.25; }));
    ExpectToWork();
    End();
    Begin(); // a session that is older than the log of the one before
    EXPECT_NE(Log().find("DateTime=19"), std::string::npos) << Log();
    ExpectToWork();
    step(0);
    DragThreshold(-10);
    End();
}

} // namespace KAV::Tests
