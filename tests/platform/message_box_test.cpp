// The program that shows boxes is replaced by a script, which records how it was called.

#include "platform/message_box.h"

#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"

#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

using namespace KAV::Platform;
using namespace KAV::Tests;
namespace fs = std::filesystem;

namespace {

/// The desktop has programs of these names, and no others.
class CBoxes final {
public:
    explicit CBoxes(const std::vector<std::string>& names) {
        fs::remove_all(_folder);
        fs::create_directories(_folder);
        for (const auto& name : names) {
            const auto said = (_folder / "said").string();
            WriteText(_folder / name, "#!/bin/sh\n{ echo " + name + "; for a; do echo \"$a\"; done; } >" +
                                          said + ".new\n/bin/mv " + said + ".new " + said + "\n");
            chmod((_folder / name).c_str(), 0755);
        }
        setenv("PATH", _folder.c_str(), 1);
        setenv("DISPLAY", ":77", 1);
        unsetenv("WAYLAND_DISPLAY");
    }

    std::string Said() const {
        for (int i = 0; i < 500 && !fs::exists(_folder / "said"); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return ReadText(_folder / "said");
    }

private:
    fs::path _folder = ScratchFolder() / "boxes";
};

} // namespace

TEST(ShowErrorBox, UsesTheFirstProgramThatIsThere) {
    {
        const CBoxes boxes({"xmessage", "kdialog", "zenity"});
        EXPECT_TRUE(ShowErrorBox("Title", "Patch \"a b\" <i>"));
        EXPECT_EQ(boxes.Said(), "zenity\n--error\n--no-markup\n--title=Title\n--text=Patch \"a b\" <i>\n");
    }
    {
        const CBoxes boxes({"xmessage", "kdialog"});
        EXPECT_TRUE(ShowErrorBox("Title", "Text"));
        EXPECT_EQ(boxes.Said(), "kdialog\n--title\nTitle\n--error\nText\n");
    }
    const CBoxes boxes({"xmessage"});
    EXPECT_TRUE(ShowErrorBox("Title", "Text"));
    EXPECT_EQ(boxes.Said(), "xmessage\n-center\n-title\nTitle\nText\n");
}

TEST(ShowErrorBox, CannotWithoutADisplayOrAProgram) {
    {
        const CBoxes none({});
        EXPECT_FALSE(ShowErrorBox("Title", "Text"));
    }
    const CBoxes boxes({"zenity"});
    setenv("DISPLAY", "", 1);
    EXPECT_FALSE(ShowErrorBox("Title", "Text"));
    setenv("WAYLAND_DISPLAY", "wayland-0", 1);
    EXPECT_TRUE(ShowErrorBox("Title", "Text"));
    boxes.Said();
}
