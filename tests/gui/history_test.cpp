#include "gui/history.h"

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using namespace KAV;

namespace {

class CHistoryOnItsOwn final : public GUI::CHistory {};

/// What the steps of a test change and report.
struct SWorld {
    CHistoryOnItsOwn history;
    std::string state = "a";
    std::vector<std::string> calls;
    int living = 0; ///< steps that exist
    bool throws = false;
};

class CStep final : public GUI::IHistory {
public:
    explicit CStep(SWorld& world) : _world(world), _kept(world.state) { ++world.living; }
    ~CStep() override { --_world.living; }

    void Redo() override { Swap("redo"); }
    void Undo() override { Swap("undo"); }
    bool Differs(const IHistory& other) const override {
        return dynamic_cast<const CStep&>(other)._kept != _kept;
    }

private:
    void Swap(const std::string& call) {
        _world.calls.push_back(call + (_world.history.IsHistoryEnabled() ? ", enabled" : ""));
        if (_world.throws) throw std::runtime_error("no");
        _world.history.AddRecord(std::make_unique<CStep>(_world)); // as reading a patch does
        _world.history.Undo();
        _world.history.Redo();
        std::swap(_world.state, _kept);
    }

    SWorld& _world;
    std::string _kept;
};

class HistoryList : public testing::Test {
protected:
    SWorld world;
    CHistoryOnItsOwn& history = world.history;

    void SetUp() override { history.EnableHistory(true); }
    /// A change that is recorded first, as every change is.
    void ChangeTo(const std::string& state) {
        history.AddRecord(std::make_unique<CStep>(world));
        world.state = state;
    }
};

} // namespace

TEST_F(HistoryList, IsDisabledAndEmptyAtFirst) {
    const CHistoryOnItsOwn fresh;
    EXPECT_FALSE(fresh.IsHistoryEnabled());
    EXPECT_EQ(fresh.Records(), 0u);
    EXPECT_FALSE(fresh.CanUndo());
    EXPECT_FALSE(fresh.CanRedo());
}

TEST_F(HistoryList, TakesNothingWhileItIsDisabled) {
    history.EnableHistory(false);
    ChangeTo("b");
    EXPECT_EQ(history.Records(), 0u);
    EXPECT_EQ(world.living, 0);
}

TEST_F(HistoryList, TakesNoNull) {
    history.AddRecord(nullptr);
    EXPECT_EQ(history.Records(), 0u);
    EXPECT_FALSE(history.CanUndo());
}

TEST_F(HistoryList, NeitherUndoesNorRedoesAnythingWhileItIsEmpty) {
    history.Undo();
    history.Redo();
    EXPECT_TRUE(world.calls.empty());
    EXPECT_FALSE(history.CanUndo());
    EXPECT_FALSE(history.CanRedo());
}

TEST_F(HistoryList, WalksThroughTheStatesInBothDirections) {
    for (const char* const state : {"b", "c", "d"}) ChangeTo(state);
    EXPECT_EQ(history.Records(), 3u);
    EXPECT_FALSE(history.CanRedo());
    for (int turn = 0; turn < 3; ++turn) {
        for (const char* const state : {"c", "b", "a"}) {
            EXPECT_TRUE(history.CanUndo());
            history.Undo();
            EXPECT_EQ(world.state, state);
            EXPECT_TRUE(history.CanRedo());
        }
        EXPECT_FALSE(history.CanUndo());
        history.Undo();
        EXPECT_EQ(world.state, "a");
        for (const char* const state : {"b", "c", "d"}) {
            EXPECT_TRUE(history.CanRedo());
            history.Redo();
            EXPECT_EQ(world.state, state);
            EXPECT_TRUE(history.CanUndo());
        }
        EXPECT_FALSE(history.CanRedo());
        history.Redo();
        EXPECT_EQ(world.state, "d");
    }
    EXPECT_EQ(history.Records(), 3u);
}

TEST_F(HistoryList, TellsOfEachChangeOfItsStepsAndOfNothingElse) {
    auto known = history.Changes();
    const auto hasChanged = [&] { return std::exchange(known, history.Changes()) != known; };
    history.Undo();
    history.Redo();
    history.AddRecord(nullptr);
    EXPECT_FALSE(hasChanged()) << "there is no step";
    ChangeTo("b");
    EXPECT_TRUE(hasChanged());
    history.Undo();
    EXPECT_TRUE(hasChanged());
    history.Redo();
    EXPECT_TRUE(hasChanged());
    history.EnableHistory(false);
    history.Undo();
    ChangeTo("c");
    EXPECT_FALSE(hasChanged());
}

TEST_F(HistoryList, CallsTheOperationThatItIsNamedAfter) {
    ChangeTo("b");
    history.Undo();
    history.Redo();
    EXPECT_EQ(world.calls, (std::vector<std::string>{"undo", "redo"}));
}

TEST_F(HistoryList, IsDisabledWhileAStepIsAppliedAndEnabledAgainAfterwards) {
    ChangeTo("b");
    ChangeTo("c");
    history.Undo(); // the step itself tries to add one, to undo and to redo
    EXPECT_EQ(world.state, "b");
    EXPECT_EQ(history.Records(), 2u);
    EXPECT_TRUE(history.IsHistoryEnabled());
    history.Redo();
    EXPECT_EQ(world.state, "c");
    EXPECT_EQ(history.Records(), 2u);
    EXPECT_TRUE(history.IsHistoryEnabled());
    EXPECT_EQ(world.calls, (std::vector<std::string>{"undo", "redo"})) << "and none of them enabled";
}

TEST_F(HistoryList, StaysEnabledWhenAStepFails) {
    ChangeTo("b");
    world.throws = true;
    EXPECT_THROW(history.Undo(), std::runtime_error);
    EXPECT_TRUE(history.IsHistoryEnabled());
    EXPECT_TRUE(history.CanUndo());
}

TEST_F(HistoryList, KeepsItsStepsWhileItIsDisabled) {
    ChangeTo("b");
    ChangeTo("c");
    history.Undo();
    history.EnableHistory(false);
    EXPECT_TRUE(history.CanUndo());
    EXPECT_TRUE(history.CanRedo());
    history.Undo();
    history.Redo();
    EXPECT_EQ(world.state, "b");
    EXPECT_FALSE(history.IsHistoryEnabled());
    history.EnableHistory(true);
    history.Undo();
    EXPECT_EQ(world.state, "a");
    history.Redo();
    history.Redo();
    EXPECT_EQ(world.state, "c");
}

TEST_F(HistoryList, DropsAStepOfTheSameStateAsTheNewestAlone) {
    ChangeTo("b");
    ChangeTo("c");
    ChangeTo("a");
    ChangeTo("a"); // from "a", which isn't what the newest step holds
    EXPECT_EQ(history.Records(), 4u);
    ChangeTo("b");
    EXPECT_EQ(history.Records(), 4u);
    EXPECT_EQ(world.living, 4);
}

TEST_F(HistoryList, ANewStepDropsAndDestroysThoseThatCouldBeRedone) {
    for (const char* const state : {"b", "c", "d", "e"}) ChangeTo(state);
    for (int i = 0; i < 3; ++i) history.Undo();
    EXPECT_EQ(world.living, 4);
    ChangeTo("x");
    EXPECT_EQ(history.Records(), 2u);
    EXPECT_EQ(world.living, 2);
    EXPECT_FALSE(history.CanRedo());
    history.Undo();
    EXPECT_EQ(world.state, "b");
    history.Undo();
    EXPECT_EQ(world.state, "a");
}

// The newest step is the last of the list, even when it can only be redone.
TEST_F(HistoryList, ComparesWithTheEndOfTheListAndNotWithTheNextStepToUndo) {
    ChangeTo("b");
    ChangeTo("c");
    history.Undo(); // the last step holds "c" from now on
    world.state = "c";
    ChangeTo("d");
    EXPECT_EQ(history.Records(), 2u);
    EXPECT_TRUE(history.CanRedo());
    history.Undo();
    EXPECT_EQ(world.state, "a");
    ChangeTo("d"); // the step to undo next would hold "a" as well, the last one doesn't
    EXPECT_EQ(history.Records(), 1u);
    EXPECT_FALSE(history.CanRedo());
}

TEST_F(HistoryList, EndsWithItsSteps) {
    {
        SWorld other;
        other.history.EnableHistory(true);
        other.history.AddRecord(std::make_unique<CStep>(world));
        EXPECT_EQ(world.living, 1);
    }
    EXPECT_EQ(world.living, 0);
}
