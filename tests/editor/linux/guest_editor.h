#pragma once

#include "tests/editor/editor_fixture.h"
#include "tests/editor/linux/guest.h"
#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"

#include <filesystem>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

/// A user at the editor of a host in a process of its own, whose surroundings the test has spoilt before.
class CGuestEditor : public CEditorFixture {
protected:
    void SetUp() override {
        namespace fs = std::filesystem;
        fs::remove_all(Home());
        for (const char* const folder : {"config", "tmp", "Documents"}) {
            fs::create_directories(Home() / folder);
            fs::permissions(Home() / folder, fs::perms::all); // whoever the guest is
        }
    }

    /// As ScratchFolder(), which would follow the guest's TMPDIR.
    static const std::filesystem::path& Scratch() {
        static const auto folder = ScratchFolder();
        return folder;
    }

    /// Whether another user gets to the folders of the test.
    static bool IsOpenToOthers() {
        for (auto folder = Scratch(); folder.has_relative_path(); folder = folder.parent_path()) {
            const auto mode = std::filesystem::status(folder).permissions();
            if ((mode & std::filesystem::perms::others_exec) == std::filesystem::perms::none) return false;
        }
        return true;
    }

    // The user's files
    static std::filesystem::path Home() { return Scratch() / "user"; }
    static std::filesystem::path Patch(std::string_view file) {
        return Home() / "Documents" / "Kavelin" / "KAV Sorrel Limiter" /
               std::u8string(file.begin(), file.end());
    }
    static inline const std::string DefaultPatch = "- Full Reset -.kvp";
    static void WritePatch(std::string_view file, const std::string& value) {
        WriteText(
            Patch(file), "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</plugin_id>\r\n"
                         "<patch_name>x</patch_name>\r\n<multi_fx>true</multi_fx>\r\n<param tag=\"33\" >" +
                             value + "</param>\r\n");
    }
    /// What all files of a folder hold.
    static std::string TextsIn(const std::filesystem::path& folder) {
        std::string all;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            if (entry.is_regular_file()) all += ReadText(entry.path());
        }
        return all;
    }
    static std::string Log() { return TextsIn(Home() / "tmp"); }

    // The editor
    /// Opens it; it shows its picture.
    void Begin(const char* plugin = KAV_PLUGIN_PATH) {
        guest.emplace(windows.Parent(), "use", Output(), plugin);
        ASSERT_TRUE(Until([this] { return windows.Editor() != 0 || guest->HasEnded(); }));
        ASSERT_FALSE(guest->HasEnded()) << guest->Result();
        ASSERT_TRUE(ShowsAPicture(windows.Editor()));
    }
    void End() {
        guest->AskToEnd();
        ASSERT_TRUE(Until([this] { return guest->HasEnded(); }));
        EXPECT_EQ(guest->Result(), 0);
        EXPECT_TRUE(Until([this] { return windows.Editor() == 0; }));
    }

    // What the host knows
    static int EndedEdits() { return std::atoi(ReadText(Output()).c_str()); }
    /// A parameter's value 0..1 in the state; below 0: there is no state yet.
    static double Value(int tag) {
        const auto value = InState("<param tag=\"" + std::to_string(tag) + "\"");
        return value.empty() ? -1.0 : std::strtod(value.c_str(), nullptr);
    }
    static double Threshold() { return Value(33); }
    static std::string PatchName() { return InState("<patch_name"); }
    static bool IsCalled(std::string_view name) {
        return Until([name] { return PatchName() == name; });
    }

    // The user
    /// Drags the threshold, and waits until the host knows its value and the end of the edit.
    void DragThreshold(std::int32_t dy) {
        const int edits = EndedEdits();
        const double before = Threshold();
        MoveTo({1, 1});
        windows.Click(1); // so that the press doesn't make a double click with the one before
        Drag(MiddleOf("Threshold"), 0, dy);
        windows.Release(1);
        EXPECT_TRUE(Until([&] { return Threshold() != before && Threshold() >= 0.0; }));
        EXPECT_TRUE(Until([&] { return EndedEdits() > edits; })) << "the edit doesn't end";
    }
    void Click(std::string_view name, int button = 1) {
        MoveTo(MiddleOf(name));
        windows.Click(button);
    }
    void Type(std::initializer_list<std::uint32_t> keys) {
        for (const auto key : keys) windows.Type(key);
    }
    void SaveAsDefault(const std::function<void()>& whenAsked = [] {}) {
        Click("ToolAbout");
        AwaitPopUp();
        whenAsked();
        Type({XKB_KEY_Down, XKB_KEY_Down, XKB_KEY_Down, XKB_KEY_Down, XKB_KEY_Down, XKB_KEY_Return});
        EXPECT_TRUE(Until([this] { return PopUps().empty(); }));
    }
    /// Saves by the editor's own list of files; `name` has small letters.
    void SaveAs(
        std::string_view name, const std::function<void()>& whenAsked = [] {}) {
        Click("ToolBtnSave");
        const auto list = AwaitPopUp();
        ASSERT_FALSE(list.empty());
        EXPECT_TRUE(Until([&] { return windows.Focused() == list[0]; }));
        whenAsked();
        for (const char letter : name) windows.Type(static_cast<std::uint32_t>(letter));
        Type({XKB_KEY_Return});
        EXPECT_TRUE(Until([this] { return PopUps().empty(); }));
    }
    void ExpectToWork() {
        DragThreshold(20);
        SaveAsDefault();
        DragThreshold(-10); // after what the menu has done
    }

    std::optional<CGuest> guest;

private:
    /// What an element of the state holds, whose mark begins with this.
    static std::string InState(const std::string& mark) {
        const auto state = ReadText(Output());
        const auto begin = state.find('>', state.find(mark));
        return begin == std::string::npos ? "" : state.substr(begin + 1, state.find('<', begin) - begin - 1);
    }
    static std::string Output() { return (Scratch() / "state.txt").string(); }

    CVariable _home{"HOME", Home().string()};
    CVariable _config{"XDG_CONFIG_HOME", (Home() / "config").string()};
    CVariable _temporary{"TMPDIR", (Home() / "tmp").string()};
    CVariable _dialog{"KAV_FILE_DIALOG", "list"};
};

} // namespace KAV::Tests
