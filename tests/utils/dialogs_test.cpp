#include "utils/dialogs.h"

#include "tests/support/file_text.h"
#include "utils/path.h"
#include "utils/session_log.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV::Utils;
using namespace KAV::Tests;

namespace {

class CRefusingDialogs final : public IDialogs {
public:
    void OpenFile(const SFileQuestion&, PathAnswer answered) noexcept override { answered(u"opened"); }
    void SaveFile(const SFileQuestion&, PathAnswer answered) noexcept override { answered(u"saved"); }
    void ShowError(std::u16string_view, std::u16string_view) noexcept override { ++shown; }
    bool ErrorsWait() const noexcept override { return true; }

    int shown = 0;
};

/// The answers to one question, as they stand when the call has returned.
std::vector<std::u16string> Answers(void (IDialogs::*ask)(const SFileQuestion&, PathAnswer) noexcept,
    IDialogs& dialogs, const SFileQuestion& question = {}) {
    std::vector<std::u16string> answers;
    (dialogs.*ask)(question, [&answers](std::u16string_view path) { answers.emplace_back(path); });
    return answers;
}

} // namespace

TEST(Dialogs, AreTheSystemsUntilATestBringsItsOwn) {
    EXPECT_EQ(&Dialogs(), &SystemDialogs());
    CRefusingDialogs dialogs;
    UseDialogs(&dialogs);
    EXPECT_EQ(Answers(&IDialogs::OpenFile, Dialogs()), std::vector<std::u16string>{u"opened"});
    EXPECT_EQ(Answers(&IDialogs::SaveFile, Dialogs()), std::vector<std::u16string>{u"saved"});
    Dialogs().ShowError(u"", u"");
    UseDialogs(nullptr);
    EXPECT_EQ(dialogs.shown, 1);
    EXPECT_EQ(&Dialogs(), &SystemDialogs());
}

TEST(Dialogs, OfTheSystemAskForNoFilesWithoutAnEditor) {
    const std::vector<std::u16string> cancelledAtOnce{u""};
    EXPECT_EQ(Answers(&IDialogs::OpenFile, SystemDialogs(), {u"a||*.a", {}, u"/"}), cancelledAtOnce);
    EXPECT_EQ(Answers(&IDialogs::SaveFile, SystemDialogs(), {u"a||*.a", u"b", u"/"}), cancelledAtOnce);
}

TEST(Dialogs, OfTheSystemHoldUpTheirCallerOnWindowsAlone) {
#if defined(_WIN32)
    EXPECT_TRUE(SystemDialogs().ErrorsWait());
#else
    EXPECT_FALSE(SystemDialogs().ErrorsWait());
#endif
}

#if !defined(_WIN32) // there a box could really be shown, and would wait for a user
TEST(Dialogs, AnErrorThatCannotBeShownIsLogged) {
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    SystemDialogs().ShowError(u"Title", u"Patch \"\u00E4\" was lost.");
    EXPECT_NE(
        ReadText(ToSystemPath(LogPath())).find("Error=Patch \"\xC3\xA4\" was lost.\r\n"), std::string::npos);
}
#endif
