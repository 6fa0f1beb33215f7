#include "utils/file_modal.h"

#include "tests/support/added_log.h"
#include "tests/support/dialog_script.h"
#include "utils/dialogs.h"
#include "utils/path.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

using namespace KAV;
using namespace KAV::Utils;
using namespace KAV::Tests;

namespace {

/// The editor's own list, which answers when the test says so.
class CListDouble final : public Platform::IFileList {
public:
    bool Open(const Platform::SFileRequest& request,
        std::function<void(const std::string&)> answered) noexcept override {
        if (refuses) return false;
        asked = request;
        answer = std::move(answered);
        return true;
    }
    void Raise() noexcept override { ++raised; }
    void Close() noexcept override {
        ++closed;
        answer = nullptr;
    }

    bool refuses = false;
    Platform::SFileRequest asked;
    std::function<void(const std::string&)> answer;
    int raised = 0;
    int closed = 0;
};

/// A thread with an editor's window on a desktop whose programs are scripts.
class FileModal : public testing::Test {
protected:
    CDialogScripts scripts;
    std::atomic<int> woken{0};
    std::shared_ptr<Platform::CWindowLoop> loop =
        std::make_shared<Platform::CWindowLoop>([this] { ++woken; });
    std::vector<std::u16string> answers;

    FileModal() { Platform::CWindowLoop::SetOfThisThread(loop.get()); }
    ~FileModal() override {
        loop->End();
        Platform::CWindowLoop::SetOfThisThread(nullptr);
    }

    PathAnswer Keep() {
        return [this](std::u16string_view path) { answers.emplace_back(path); };
    }
    void Open(const SFileQuestion& question = {}) { SystemDialogs().OpenFile(question, Keep()); }
    /// Runs the loop until there are that many answers.
    bool Answered(std::size_t count = 1) {
        return Eventually([&] {
            loop->RunPosted();
            return answers.size() >= count;
        });
    }
    bool IsRunning(pid_t process) { return std::filesystem::exists("/proc/" + std::to_string(process)); }
};

constexpr auto Hangs = "while :; do /bin/sleep 1000; done";

} // namespace

TEST_F(FileModal, IsAnsweredOnTheThreadOfTheWindowOnce) {
    scripts.Put("zenity", "printf '/a/\\303\\244.kvp\\n'");
    Open();
    EXPECT_NE(loop->Modal(), nullptr);
    EXPECT_TRUE(Eventually([&] { return woken > 0; }));
    EXPECT_TRUE(answers.empty()) << "the loop hasn't run";
    loop->RunPosted();
    EXPECT_EQ(answers, std::vector<std::u16string>{u"/a/\u00E4.kvp"});
    EXPECT_EQ(loop->Modal(), nullptr);
    loop->RunPosted();
    loop->End();
    EXPECT_EQ(answers.size(), 1u);
}

TEST_F(FileModal, OfAFileToSaveSaysSo) {
    scripts.Put("zenity", "echo /a");
    SystemDialogs().SaveFile({u"KAV Preset File||*.kvp", u"USER_x", u""}, Keep());
    EXPECT_TRUE(Answered());
    EXPECT_NE(scripts.Arguments("zenity").find("--save\n--confirm-overwrite\n"), std::string::npos);
    EXPECT_NE(scripts.Arguments("zenity").find("USER_x\n"), std::string::npos);
    Open();
    EXPECT_TRUE(Answered(2));
    EXPECT_EQ(scripts.Arguments("zenity").find("--save"), std::string::npos);
}

TEST_F(FileModal, BelongsToTheHostsWindow) {
    scripts.Put("zenity", "exit 1");
    loop->SetHostWindow(77);
    Open();
    EXPECT_TRUE(Answered());
    EXPECT_NE(scripts.Arguments("zenity").find("--attach=77\n"), std::string::npos);
}

TEST_F(FileModal, IsCancelledAtOnceWhileAnotherOneIsUp) {
    scripts.Put("zenity", Hangs);
    Open();
    auto* const first = loop->Modal();
    Open();
    EXPECT_EQ(answers, std::vector<std::u16string>{u""});
    EXPECT_EQ(loop->Modal(), first);
    loop->End();
    EXPECT_EQ(answers, (std::vector<std::u16string>{u"", u""}));
}

TEST_F(FileModal, IsCancelledBeforeTheLoopHasEndedAndItsProgramIsKilled) {
    scripts.Put("zenity", Hangs);
    Open();
    const auto process = scripts.Process("zenity");
    EXPECT_TRUE(IsRunning(process));
    loop->End();
    EXPECT_EQ(answers, std::vector<std::u16string>{u""});
    EXPECT_TRUE(Eventually([&] { return !IsRunning(process); }));
    EXPECT_EQ(answers.size(), 1u) << "nothing follows";
}

TEST_F(FileModal, ThatIsCancelledDropsTheAnswerWhichIsOnItsWay) {
    scripts.Put("zenity", "echo /late");
    Open();
    EXPECT_TRUE(Eventually([&] { return woken > 0; }));
    loop->Modal()->Cancel();
    loop->RunPosted();
    EXPECT_EQ(answers, std::vector<std::u16string>{u""});
}

TEST_F(FileModal, IsCancelledAtOnceWhenTheWindowHasGone) {
    scripts.Put("zenity", "echo /a");
    loop->End();
    Open();
    EXPECT_EQ(answers, std::vector<std::u16string>{u""});
    EXPECT_FALSE(scripts.WasRun("zenity"));
}

TEST_F(FileModal, ThatIsAskedByTheAnswerOfACancelledOneIsCancelledToo) {
    scripts.Put("zenity", Hangs);
    int asked = 0;
    SystemDialogs().OpenFile({}, [&](std::u16string_view) {
        ++asked;
        Open();
    });
    loop->End();
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(answers, std::vector<std::u16string>{u""});
    EXPECT_EQ(loop->Modal(), nullptr);
}

TEST_F(FileModal, MayBeFollowedByTheNextOneFromItsAnswer) {
    scripts.Put("zenity", "echo /a");
    SystemDialogs().OpenFile({}, [&](std::u16string_view) { Open(); });
    EXPECT_TRUE(Answered());
    EXPECT_EQ(answers, std::vector<std::u16string>{u"/a"});
}

TEST_F(FileModal, WhoseDialogDiesIsCancelled) {
    scripts.Put("zenity", "kill -9 $$");
    Open();
    EXPECT_TRUE(Answered());
    EXPECT_EQ(answers, std::vector<std::u16string>{u""});
    EXPECT_EQ(loop->Modal(), nullptr);
}

TEST_F(FileModal, LogsAChoiceThatCannotBeUsed) {
    const CAddedLog log;
    scripts.Put("zenity", "echo sftp://server/a.kvp");
    Open();
    EXPECT_TRUE(Answered());
    EXPECT_EQ(answers, std::vector<std::u16string>{u""});
    EXPECT_NE(log.Text().find("Error=The name of the chosen file can't be used."), std::string::npos);
}

TEST_F(FileModal, ShowsTheEditorsOwnListWhereThereIsNoDialog) {
    CListDouble list;
    loop->SetFileList(&list);
    loop->SetHostWindow(5);
    Open({u"a||*.a", u"", u"/x/"});
    EXPECT_TRUE(Eventually([&] {
        loop->RunPosted();
        return list.answer != nullptr;
    }));
    EXPECT_EQ(list.asked.folder, "/x/");
    EXPECT_EQ(list.asked.hostWindow, 5u);
    ASSERT_NE(loop->Modal(), nullptr);
    loop->Modal()->Raise();
    EXPECT_EQ(list.raised, 1);
    const auto answer = std::exchange(list.answer, nullptr);
    answer("/x/y.a");
    EXPECT_EQ(answers, std::vector<std::u16string>{u"/x/y.a"});
    EXPECT_EQ(loop->Modal(), nullptr);
    EXPECT_EQ(list.closed, 0);
}

TEST_F(FileModal, ClosesTheListWithTheLoop) {
    CListDouble list;
    loop->SetFileList(&list);
    Open();
    EXPECT_TRUE(Eventually([&] {
        loop->RunPosted();
        return list.answer != nullptr;
    }));
    loop->End();
    EXPECT_EQ(list.closed, 1);
    EXPECT_EQ(answers, std::vector<std::u16string>{u""});
}

TEST_F(FileModal, IsCancelledWhereThereIsNoListEither) {
    Open();
    EXPECT_TRUE(Answered());
    CListDouble list;
    list.refuses = true;
    loop->SetFileList(&list);
    Open();
    EXPECT_TRUE(Answered(2));
    EXPECT_EQ(answers, (std::vector<std::u16string>{u"", u""}));
    EXPECT_EQ(loop->Modal(), nullptr);
}

TEST(FileRequest, ReadsTheGrammarOfFilters) {
    const auto request = FileRequest(
        {u"Preset File||*.fxp;*.kvp|||VST Preset File||*.fxp|||All|||||*.x", u"n\u00E4me", u"/f/"}, true);
    ASSERT_EQ(request.filters.size(), 4u);
    EXPECT_EQ(request.filters[0].title, "Preset File");
    EXPECT_EQ(request.filters[0].patterns, (std::vector<std::string>{"*.fxp", "*.kvp"}));
    EXPECT_EQ(request.filters[1].patterns, std::vector<std::string>{"*.fxp"});
    EXPECT_EQ(request.filters[2].title, "All");
    EXPECT_EQ(request.filters[2].patterns, std::vector<std::string>{"*"}) << "all files";
    EXPECT_EQ(request.filters[3].title, "");
    EXPECT_EQ(request.name, "n\xC3\xA4me");
    EXPECT_EQ(request.folder, "/f/");
    EXPECT_TRUE(request.saves);
    EXPECT_FALSE(FileRequest({}, false).saves);
    EXPECT_TRUE(FileRequest({}, false).filters.empty());
}
