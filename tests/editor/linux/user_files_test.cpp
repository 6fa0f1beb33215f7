// The user's patches on disks that are full or read-only, and in folders that are crowded.

#include "tests/editor/linux/guest_editor.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <sys/resource.h>
#include <thread>

namespace KAV::Tests {

namespace {

namespace fs = std::filesystem;

class UserFiles : public CGuestEditor {
protected:
    /// From now on no file of the guest's grows beyond this.
    void LimitFiles(rlim_t bytes) const {
        const rlimit limit{bytes, RLIM_INFINITY};
        ASSERT_EQ(prlimit(guest->Process(), RLIMIT_FSIZE, &limit, nullptr), 0);
    }
    static fs::path Folder() { return Patch("").parent_path(); }
    /// The most memory that the guest has had so far, in bytes.
    std::size_t Peak() const {
        const auto status = ReadText("/proc/" + std::to_string(guest->Process()) + "/status");
        const auto line = status.find("VmHWM:");
        return line == std::string::npos ? 0 : std::strtoull(status.c_str() + line + 6, nullptr, 10) * 1024;
    }
};

/// Another program that adds, renames and removes patches during its lifetime.
class COtherProgram final {
public:
    explicit COtherProgram(const fs::path& folder)
        : _thread([this, folder] {
              std::error_code ignored; // the folder may be what the test makes of it
              for (int n = 0; !_ends; ++n) {
                  WriteText(folder / ("q" + std::to_string(n % 100) + ".kvp"), "x");
                  fs::rename(folder / ("q" + std::to_string((n + 30) % 100) + ".kvp"),
                      folder / ("r" + std::to_string(n % 50) + ".kvp"), ignored);
                  fs::remove(folder / ("q" + std::to_string((n + 60) % 100) + ".kvp"), ignored);
                  std::this_thread::sleep_for(std::chrono::milliseconds(1));
              }
          }) {}
    ~COtherProgram() {
        _ends = true;
        _thread.join();
    }
    COtherProgram(const COtherProgram&) = delete;
    COtherProgram& operator=(const COtherProgram&) = delete;

private:
    std::atomic<bool> _ends{false};
    std::thread _thread;
};

} // namespace

TEST_F(UserFiles, StayAsTheyAreOnAFullDiskAndTheEditorGoesOn) {
    const auto fill = [this] { LimitFiles(1000); }; // room for a part of a patch
    Begin();
    DragThreshold(20);
    SaveAsDefault();
    EXPECT_TRUE(Until([] { return fs::exists(Patch(DefaultPatch)); }));
    const auto before = ReadText(Patch(DefaultPatch));
    DragThreshold(20);
    SaveAsDefault(fill);
    DragThreshold(20); // after that
    EXPECT_EQ(ReadText(Patch(DefaultPatch)), before);
    LimitFiles(RLIM_INFINITY);
    SaveAs("one", fill);
    DragThreshold(-20);
    LimitFiles(RLIM_INFINITY);
    EXPECT_EQ(CountEntries(Folder()), 1u);
    SaveAs("one");
    EXPECT_TRUE(Until([] { return fs::exists(Patch("one.kvp")); })) << "there is room again";
    End();
    EXPECT_EQ(ReadText(Patch(DefaultPatch)), before);
}

TEST_F(UserFiles, StayAsTheyAreInAReadOnlyFolderAndTheEditorGoesOn) {
    if (!IsOpenToOthers()) GTEST_SKIP() << "the temporary folder is closed to other users";
    const CVariable user("KAV_GUEST_USER", "4242"); // root may write everywhere
    WritePatch(DefaultPatch, "0.5");
    const auto before = ReadText(Patch(DefaultPatch));
    fs::permissions(Patch(DefaultPatch), fs::perms::all);
    fs::permissions(Folder(),
        fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_read | fs::perms::others_exec);
    Begin();
    EXPECT_TRUE(Until([] { return Threshold() == 0.5; }));
    ExpectToWork();
    SaveAs("one");
    DragThreshold(-20);
    End();
    EXPECT_EQ(ReadText(Patch(DefaultPatch)), before);
    EXPECT_EQ(CountEntries(Folder()), 1u);
    fs::permissions(Folder(), fs::perms::all);
}

TEST_F(UserFiles, OfTwentyThousandWhichChangeMeanwhileAreListedAndWalkedThrough) {
    constexpr std::uintmax_t giga = std::uintmax_t{1} << 30;
    for (int n = 0; n < 20'000; ++n) {
        char name[16];
        std::snprintf(name, sizeof(name), "p%05d.kvp", n);
        WritePatch(name, "0.5");
    }
    fs::resize_file(Patch("p00003.kvp"), giga); // which takes no space on the disk
    const COtherProgram other(Folder());
    const auto begin = std::chrono::steady_clock::now();
    Begin();
    const auto opened = std::chrono::steady_clock::now();
    EXPECT_TRUE(IsCalled("p00000"));
    for (const char* const name : {"p00001", "p00002"}) {
        Click("ToolBtnNext");
        EXPECT_TRUE(IsCalled(name));
    }
    Click("ToolBtnNext"); // the large one
    DragThreshold(20);    // after that
    EXPECT_EQ(PatchName(), "p00002");
    Click("ToolBtnPrev");
    EXPECT_TRUE(IsCalled("p00001"));
    Click("ToolPatch");
    AwaitPopUp();
    Type({XKB_KEY_Home, XKB_KEY_Return});
    EXPECT_TRUE(IsCalled("p00000"));
    Click("ToolPatch", 5); // the wheel
    EXPECT_TRUE(IsCalled("p00001"));
    SaveAs("new");
    EXPECT_TRUE(IsCalled("new"));
    EXPECT_TRUE(fs::exists(Patch("new.kvp")));
    const auto peak = Peak();
    std::printf("From the start of the host to the first picture: %lld ms. Most memory: %zu MB.\n",
        static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(opened - begin).count()),
        peak >> 20);
    EXPECT_GT(peak, 0u);
    EXPECT_LT(peak, giga / 4);
    End();
}

} // namespace KAV::Tests
