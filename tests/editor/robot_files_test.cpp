// What a user does with files: the editor asks for them by a dialog of the system's, or by its own list.

#include "tests/editor/robot.h"

namespace KAV::Tests {

namespace fs = std::filesystem;

TEST_F(Robot, MakesARoutingAndSavesIt) {
    const auto before = Still();
    Click("ToolBtnRoutingEdit");
    const auto editing = Still();
    EXPECT_NE(editing, before);
    Click("ToolCh3"); // names the third channel
    Type({'x', EKey::Return});
    ShiftClick("ToolCh4");
    EXPECT_NE(Still(), editing);
    Click("ToolBtnRoutingEdit");
    AnswerFile("q");
    const auto file = Documents() / "Kavelin" / "Routings" / "q.kvt";
    EXPECT_TRUE(Until([&] { return fs::exists(file); }));
    EXPECT_NE(ReadText(file).find("<map>0,-1|*|1,-1|*|2,-1|*|3,-1</map>"), std::string::npos)
        << ReadText(file);
    EXPECT_TRUE(StateHas("<name>q<"));
}

TEST_F(Robot, SavesAPatchAndLoadsItAgain) {
    Click("ToolBtnSave");
    AnswerFile("one");
    const auto file = Documents() / "Kavelin" / "KAV Sorrel Limiter" / "one.kvp";
    EXPECT_TRUE(Until([&] { return fs::exists(file); }));
    Still();
    Drag(MiddleOf("Threshold"), 0, 60);
    Heard();
    EXPECT_LT(Value(33), 1.0);
    Click("ToolBtnLoad");
    ChooseFile("one.kvp");
    EXPECT_TRUE(HasValue(33, 1.0));
}

TEST_F(Robot, StepsThroughPatchesAndChoosesFromTheirList) {
    Click("ToolBtnSave");
    AnswerFile("one");
    Still();
    Drag(MiddleOf("Threshold"), 0, 60);
    Heard();
    const double dragged = Value(33);
    Click("ToolBtnSave");
    AnswerFile("two");
    Still();
    Click("ToolBtnPrev");
    EXPECT_TRUE(HasValue(33, 1.0));
    Click("ToolBtnNext");
    EXPECT_TRUE(HasValue(33, dragged));
    Click("ToolPatch");
    AwaitMenu();
    Type({EKey::Home, EKey::Return});
    EXPECT_TRUE(HasValue(33, 1.0));
    EXPECT_TRUE(Until([this] { return InState("<patch_name>") == "one"; })) << InState("<patch_name>");
}

TEST_F(Robot, CancelsAQuestionAndAsksAgain) {
    const auto folder = Documents() / "Kavelin" / "KAV Sorrel Limiter";
    Click("ToolBtnSave");
    EXPECT_TRUE(Until([this] { return screen.AsksForFile(); }));
    Type({EKey::Escape});
    EXPECT_TRUE(Until([this] { return !screen.HasQuestion(); }));
    Still();
    EXPECT_FALSE(fs::exists(folder / "one.kvp"));
    Click("ToolBtnSave");
    AnswerFile("one");
    EXPECT_TRUE(Until([&] { return fs::exists(folder / "one.kvp"); }));
    Click("Limiter");
    EXPECT_TRUE(HasValue(34, 0.0)) << "the editor takes input again";
}

TEST_F(Robot, ClosesTheEditorWhileAQuestionIsUp) {
    Click("ToolBtnSave");
    EXPECT_TRUE(Until([this] { return screen.AsksForFile(); }));
    effect->Close();
    EXPECT_TRUE(Until([this] { return !screen.HasQuestion(); })) << "it outlives the editor";
    Reopen();
    Click("Limiter");
    EXPECT_TRUE(HasValue(34, 0.0)) << "the host's window takes input again";
    Click("ToolBtnSave");
    AnswerFile("one");
    EXPECT_TRUE(Until([] { return fs::exists(Documents() / "Kavelin" / "KAV Sorrel Limiter" / "one.kvp"); }));
}

} // namespace KAV::Tests
