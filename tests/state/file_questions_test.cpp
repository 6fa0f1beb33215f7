#include "state/file_questions.h"

#include "tests/support/state_fixture.h"

#include <thread>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class FileQuestions : public testing::Test {
protected:
    /// What an instance has of them.
    struct SInstance {
        Utils::CTurns turns;
        CFileQuestions questions{turns};
    };

    CAnsweringDialogs dialogs;
    std::unique_ptr<SInstance> instance = std::make_unique<SInstance>();
    std::vector<std::u16string> answers;

    bool AskToOpen(const std::u16string& name = u"") {
        return instance->questions.AskToOpen({u"Text||*.txt", name, u"/"}, Keep());
    }
    bool AskToSave(const std::u16string& name = u"") {
        return instance->questions.AskToSave({u"Text||*.txt", name, u"/"}, u"", Keep());
    }
    const std::u16string proposed = Utils::FromSystemPath(ScratchFolder() / "proposed") + u"/";

    /// As a store asks that adds the extension itself.
    bool AskToSaveText() {
        return instance->questions.AskToSave({u"Text||*.txt", u"a", proposed}, u"txt", Keep());
    }
    Utils::PathAnswer Keep() {
        return [this](std::u16string_view path) { answers.emplace_back(path); };
    }
    /// Waits for a turn of another thread, for ever if this one holds it.
    void LetAnotherThreadIn() {
        std::thread([this] { const Utils::CTurn turn(instance->turns); }).join();
    }
};

} // namespace

TEST_F(FileQuestions, AreAnsweredOnceAndMaybeAtOnce) {
    dialogs.answer = u"/a";
    EXPECT_TRUE(AskToOpen());
    EXPECT_EQ(answers, std::vector<std::u16string>{u"/a"});
    EXPECT_TRUE(AskToSave(u"proposed"));
    EXPECT_EQ(answers, (std::vector<std::u16string>{u"/a", u"/a"}));
    ASSERT_EQ(dialogs.questions.size(), 2u);
    EXPECT_EQ(dialogs.questions[1].filter, u"Text||*.txt");
    EXPECT_EQ(dialogs.questions[1].name, u"proposed");
    EXPECT_EQ(dialogs.questions[1].folder, u"/");
}

TEST_F(FileQuestions, MayBeAnsweredLongAfterTheyWereAsked) {
    dialogs.answersLater = true;
    EXPECT_TRUE(AskToOpen());
    EXPECT_TRUE(answers.empty());
    dialogs.AnswerNext(u"/late");
    EXPECT_EQ(answers, std::vector<std::u16string>{u"/late"});
}

TEST_F(FileQuestions, AreAskedOneAtATime) {
    dialogs.answersLater = true;
    EXPECT_TRUE(AskToSave(u"first"));
    EXPECT_FALSE(AskToOpen(u"second"));
    EXPECT_FALSE(AskToSave(u"third"));
    EXPECT_EQ(dialogs.questions.size(), 1u);
    dialogs.AnswerNext(u"/a");
    EXPECT_TRUE(AskToOpen(u"fourth"));
    dialogs.AnswerNext(u"/b");
    EXPECT_EQ(answers, (std::vector<std::u16string>{u"/a", u"/b"}));
}

TEST_F(FileQuestions, AreAskedOneAtATimeFromWithinTheDialogToo) {
    bool second = true;
    dialogs.whileOpen = [&] { second = AskToOpen(); };
    EXPECT_TRUE(AskToOpen());
    EXPECT_FALSE(second);
    EXPECT_EQ(answers.size(), 1u);
}

TEST_F(FileQuestions, ACancelledOneIsAnsweredWithNothingAndTheNextIsAsked) {
    EXPECT_TRUE(AskToSave());
    EXPECT_EQ(answers, std::vector<std::u16string>{u""});
    EXPECT_TRUE(AskToSave());
}

TEST_F(FileQuestions, AnAnswerMayAskTheNext) {
    dialogs.answersLater = true;
    bool next = false;
    instance->questions.AskToOpen({}, [&](std::u16string_view) { next = AskToSave(); });
    dialogs.AnswerNext(u"/a");
    EXPECT_TRUE(next);
    EXPECT_EQ(dialogs.questions.size(), 2u);
}

TEST_F(FileQuestions, AreAskedWhenTheTurnHasEnded) {
    {
        const Utils::CTurn turn(instance->turns);
        EXPECT_TRUE(AskToOpen());
        EXPECT_TRUE(dialogs.questions.empty());
        EXPECT_FALSE(AskToOpen()) << "one is about to be asked";
    }
    EXPECT_EQ(dialogs.questions.size(), 1u);
}

TEST_F(FileQuestions, LetOtherThreadsInWhileTheyAreOpenAndWhenTheyAreAnswered) {
    int open = 0;
    int answered = 0;
    dialogs.whileOpen = [&] {
        LetAnotherThreadIn();
        ++open;
    };
    instance->questions.AskToOpen({}, [&](std::u16string_view) {
        LetAnotherThreadIn();
        ++answered;
    });
    EXPECT_EQ(open, 1);
    EXPECT_EQ(answered, 1);
}

TEST_F(FileQuestions, AnAnswerAfterTheEndOfTheInstanceIsDropped) {
    dialogs.answersLater = true;
    AskToOpen();
    instance.reset();
    dialogs.AnswerNext(u"/late");
    EXPECT_TRUE(answers.empty());
}

TEST_F(FileQuestions, TheInstanceMayEndWhileTheDialogIsOpen) {
    dialogs.answer = u"/a";
    dialogs.whileOpen = [this] { instance.reset(); };
    EXPECT_TRUE(AskToSave());
    EXPECT_TRUE(answers.empty());
}

TEST_F(FileQuestions, AnAnswerThatFailsIsDroppedAndTheNextIsAsked) {
    EXPECT_TRUE(instance->questions.AskToOpen({}, [](std::u16string_view) { throw std::bad_alloc(); }));
    EXPECT_TRUE(AskToOpen());
    EXPECT_EQ(answers.size(), 1u);
}

TEST_F(FileQuestions, GetTheExtensionThatTheUserHasLeftOut) {
    const auto folder = Utils::FromSystemPath(ScratchFolder()) + u"/none/";
    dialogs.answer = folder + u"5.1";
    EXPECT_TRUE(AskToSaveText());
    dialogs.answer = folder + u"a.txt";
    EXPECT_TRUE(AskToSaveText());
    EXPECT_EQ(answers, (std::vector<std::u16string>{folder + u"5.1.txt", folder + u"a.txt"}));
    EXPECT_EQ(dialogs.questions.size(), 2u);
}

TEST_F(FileQuestions, AreAskedAgainBeforeAFileIsReplacedThatOnlyTheExtensionNames) {
    WriteText(ScratchFolder() / "there.txt", "kept");
    WriteText(ScratchFolder() / "other.txt", "kept");
    const auto folder = Utils::FromSystemPath(ScratchFolder()) + u"/";
    dialogs.answersLater = true;
    EXPECT_TRUE(AskToSaveText());
    dialogs.AnswerNext(folder + u"there");
    EXPECT_TRUE(answers.empty());
    ASSERT_EQ(dialogs.questions.size(), 2u);
    EXPECT_EQ(dialogs.questions[1].name, u"there.txt");
    EXPECT_EQ(dialogs.questions[1].folder, folder);
    EXPECT_EQ(dialogs.questions[1].filter, u"Text||*.txt");
    EXPECT_FALSE(AskToOpen()) << "the question is still open";
    dialogs.AnswerNext(folder + u"other");
    ASSERT_EQ(dialogs.questions.size(), 3u) << "the second answer is no better";
    EXPECT_EQ(dialogs.questions[2].name, u"other.txt");
    dialogs.AnswerNext(folder + u"other.txt");
    EXPECT_EQ(answers, std::vector<std::u16string>{folder + u"other.txt"});
    EXPECT_TRUE(AskToOpen());
}

TEST_F(FileQuestions, MayBeCancelledWhenTheyAreAskedAgain) {
    WriteText(ScratchFolder() / "there.txt", "kept");
    dialogs.answersLater = true;
    EXPECT_TRUE(AskToSaveText());
    dialogs.AnswerNext(Utils::FromSystemPath(ScratchFolder()) + u"/there");
    dialogs.AnswerNext(u"");
    EXPECT_EQ(answers, std::vector<std::u16string>{u""});
    EXPECT_EQ(dialogs.questions.size(), 2u);
    EXPECT_TRUE(AskToSaveText());
}

TEST_F(FileQuestions, AreNotAskedAgainAfterTheEndOfTheInstance) {
    WriteText(ScratchFolder() / "there.txt", "kept");
    dialogs.answersLater = true;
    EXPECT_TRUE(AskToSaveText());
    instance.reset();
    dialogs.AnswerNext(Utils::FromSystemPath(ScratchFolder()) + u"/there");
    EXPECT_EQ(dialogs.questions.size(), 1u);
    EXPECT_TRUE(answers.empty());
}

TEST_F(FileQuestions, FindTheFolderToSaveIn) {
    std::filesystem::remove_all(ScratchFolder() / "proposed");
    dialogs.whileOpen = [] { EXPECT_TRUE(std::filesystem::is_directory(ScratchFolder() / "proposed")); };
    EXPECT_TRUE(AskToSaveText());
    EXPECT_EQ(dialogs.questions.size(), 1u);
    EXPECT_FALSE(std::filesystem::exists(ScratchFolder() / "proposed")) << "it was cancelled";
    dialogs.whileOpen = [] { WriteText(ScratchFolder() / "proposed" / "kept.txt", ""); };
    EXPECT_TRUE(AskToSaveText());
    EXPECT_TRUE(std::filesystem::exists(ScratchFolder() / "proposed" / "kept.txt"));
    // To open a file, none is created.
    std::filesystem::remove_all(ScratchFolder() / "proposed");
    dialogs.whileOpen = nullptr;
    instance->questions.AskToOpen({u"Text||*.txt", u"", proposed}, Keep());
    EXPECT_FALSE(std::filesystem::exists(ScratchFolder() / "proposed"));
}
