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
        return instance->questions.AskToSave({u"Text||*.txt", name, u"/"}, Keep());
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
