#include "utils/dialogs.h"

#include "tests/support/file_text.h"
#include "utils/path.h"
#include "utils/session_log.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace KAV::Utils;
using namespace KAV::Tests;

namespace {

class CRefusingDialogs final : public IDialogs {
public:
    std::u16string OpenFile(const SFileQuestion&) noexcept override { return u"opened"; }
    std::u16string SaveFile(const SFileQuestion&) noexcept override { return u"saved"; }
    void ShowError(std::u16string_view, std::u16string_view) noexcept override { ++shown; }
    bool ErrorsWait() const noexcept override { return true; }

    int shown = 0;
};

} // namespace

TEST(Dialogs, AreTheSystemsUntilATestBringsItsOwn) {
    EXPECT_EQ(&Dialogs(), &SystemDialogs());
    CRefusingDialogs dialogs;
    UseDialogs(&dialogs);
    EXPECT_EQ(Dialogs().OpenFile({}), u"opened");
    EXPECT_EQ(Dialogs().SaveFile({}), u"saved");
    Dialogs().ShowError(u"", u"");
    UseDialogs(nullptr);
    EXPECT_EQ(dialogs.shown, 1);
    EXPECT_EQ(&Dialogs(), &SystemDialogs());
}

TEST(Dialogs, OfTheSystemAskForNoFiles) {
    EXPECT_EQ(SystemDialogs().OpenFile({u"a||*.a", {}, u"/"}), u"");
    EXPECT_EQ(SystemDialogs().SaveFile({u"a||*.a", u"b", u"/"}), u"");
}

TEST(Dialogs, OfTheSystemHoldUpTheirCallerOnWindowsAlone) {
#if defined(_WIN32)
    EXPECT_TRUE(SystemDialogs().ErrorsWait());
#else
    EXPECT_FALSE(SystemDialogs().ErrorsWait());
#endif
}

#if !defined(_WIN32) // there a box could really be shown, and would wait for somebody
TEST(Dialogs, AnErrorThatCannotBeShownIsLogged) {
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    SystemDialogs().ShowError(u"Title", u"Patch \"\u00E4\" was lost.");
    EXPECT_NE(
        ReadText(ToSystemPath(LogPath())).find("Error=Patch \"\xC3\xA4\" was lost.\r\n"), std::string::npos);
}
#endif
