// Whatever a user, a host and the system do, in whatever order: the editor stays in a state that makes sense.

#include "tests/gui/random_use.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

constexpr int Steps = 10000;
constexpr std::uint32_t Editors = 8;

} // namespace

TEST(RandomInput, LeavesTheEditorInOrder) {
    std::size_t edits = 0;
    std::size_t records = 0;
    std::size_t menus = 0;
    std::size_t boxes = 0;
    for (std::uint32_t seed = 1; seed <= Editors && !HasFailure(); ++seed) {
        CRandomEditor editor{CChance(seed)};
        for (int step = 0; step < Steps && !HasFailure(); ++step) {
            SCOPED_TRACE("editor " + std::to_string(seed) + ", step " + std::to_string(step));
            UseAnyhow(editor);
            ExpectThatItMakesSense(editor);
            boxes += editor.window.Count("OpenTextBox");
            ForgetTheRecords(editor);
        }
        edits += editor.root.editsBegun;
        records += editor.root.Records();
        menus += editor.window.menus.size();
        ExpectThatHistoryLeadsBack(editor);
        ExpectThatNothingIsLeft(editor);
    }
    // Or what is tried has become too tame.
    EXPECT_GT(edits, 20 * Editors);
    EXPECT_GT(records, 4 * Editors);
    EXPECT_GT(menus, Editors);
    EXPECT_GT(boxes, 4 * Editors);
}

// Nothing but steps that are recorded: they lead back to the beginning.
TEST(RandomHistory, LeadsBackToTheBeginningAndToTheEnd) {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        CRandomEditor editor{CChance(seed)};
        const auto values = editor.root.FindAll<CValueWidget>();
        std::vector<CValueWidget*> recorded;
        for (auto* const value : values) {
            if (value->HasHistory() && dynamic_cast<CButton*>(value) == nullptr) recorded.push_back(value);
        }
        ASSERT_FALSE(recorded.empty());
        const auto first = editor.Values();
        for (int step = 0; step < 500; ++step) {
            auto& value = *editor.OneOf(recorded);
            if (editor.OneIn(2)) {
                value.SetValue(editor.Share(), true);
            } else {
                value.SetItem(editor.Between(-1, 4), true);
            }
        }
        const auto last = editor.Values();
        while (editor.root.CanUndo()) editor.root.Undo();
        EXPECT_EQ(editor.Values(), first) << seed;
        while (editor.root.CanRedo()) editor.root.Redo();
        EXPECT_EQ(editor.Values(), last) << seed;
    }
}
