#include "native/line_editor.h"

#include <gtest/gtest.h>
#include <string>

namespace KAV::Tests {

namespace {

using Native::CLineEditor;
using EMove = CLineEditor::EMove;

/// The text with the caret as |, and [ ] around the selection.
std::u16string Shown(const CLineEditor& line) {
    auto text = line.Text();
    if (!line.HasSelection()) return text.insert(line.Caret(), u"|");
    const bool isCaretLast = line.Caret() == line.Last();
    text.insert(line.Last(), isCaretLast ? u"|]" : u"]");
    return text.insert(line.First(), isCaretLast ? u"[" : u"[|");
}

CLineEditor At(std::u16string_view text, std::size_t caret) {
    CLineEditor line(text, false);
    line.MoveTo(caret, false);
    return line;
}

} // namespace

TEST(LineEditor, OpensWithAllOfItsTextSelected) {
    EXPECT_EQ(Shown(CLineEditor(u"Voice", false)), u"[Voice|]");
    EXPECT_EQ(Shown(CLineEditor(u"", false)), u"|");
}

TEST(LineEditor, TypingReplacesTheSelection) {
    CLineEditor line(u"Voice", false);
    EXPECT_TRUE(line.Type(u"D"));
    EXPECT_TRUE(line.Type(u"rum"));
    EXPECT_EQ(Shown(line), u"Drum|");
    line.MoveTo(1, false);
    line.MoveTo(3, true);
    line.Type(u"e");
    EXPECT_EQ(Shown(line), u"De|m");
}

TEST(LineEditor, ArrowsMoveTheCaretAndStopAtTheEnds) {
    auto line = At(u"abc", 2);
    line.Move(EMove::Right, false);
    line.Move(EMove::Right, false);
    EXPECT_EQ(Shown(line), u"abc|");
    for (int n = 0; n < 5; ++n) line.Move(EMove::Left, false);
    EXPECT_EQ(Shown(line), u"|abc");
}

TEST(LineEditor, ArrowsLeaveTheSelectionOnTheirSide) {
    CLineEditor line(u"abc", false);
    line.Move(EMove::Left, false);
    EXPECT_EQ(Shown(line), u"|abc");
    line.SelectAll();
    line.Move(EMove::Right, false);
    EXPECT_EQ(Shown(line), u"abc|");
}

TEST(LineEditor, ShiftExtendsTheSelectionFromItsAnchor) {
    auto line = At(u"abcd", 2);
    line.Move(EMove::Right, true);
    EXPECT_EQ(Shown(line), u"ab[c|]d");
    line.Move(EMove::Home, true);
    EXPECT_EQ(Shown(line), u"[|ab]cd");
    line.Move(EMove::End, true);
    EXPECT_EQ(Shown(line), u"ab[cd|]");
}

TEST(LineEditor, HomeAndEndGoToTheEnds) {
    auto line = At(u"abcd", 2);
    line.Move(EMove::Home, false);
    EXPECT_EQ(Shown(line), u"|abcd");
    line.Move(EMove::End, false);
    EXPECT_EQ(Shown(line), u"abcd|");
}

TEST(LineEditor, ControlMovesByWords) {
    auto line = At(u"Left  ear, right", 0);
    std::u16string stops;
    for (int n = 0; n < 5; ++n) {
        line.Move(EMove::WordRight, false);
        stops += Shown(line) + u"\n";
    }
    EXPECT_EQ(stops, u"Left  |ear, right\nLeft  ear|, right\nLeft  ear, |right\nLeft  ear, right|\nLeft  "
                     u"ear, right|\n");
    stops.clear();
    for (int n = 0; n < 5; ++n) {
        line.Move(EMove::WordLeft, false);
        stops += Shown(line) + u"\n";
    }
    EXPECT_EQ(stops, u"Left  ear, |right\nLeft  ear|, right\nLeft  |ear, right\n|Left  ear, right\n|Left  "
                     u"ear, right\n");
    line.Move(EMove::WordRight, true);
    EXPECT_EQ(Shown(line), u"[Left  |]ear, right");
}

TEST(LineEditor, BackspaceAndDeleteTakeOneCharacterOrTheSelection) {
    auto line = At(u"abcd", 2);
    line.Erase(EMove::Left);
    EXPECT_EQ(Shown(line), u"a|cd");
    line.Erase(EMove::Right);
    EXPECT_EQ(Shown(line), u"a|d");
    line.SelectAll();
    line.Erase(EMove::Left);
    EXPECT_EQ(Shown(line), u"|");
    line.Erase(EMove::Left);
    line.Erase(EMove::Right);
    EXPECT_EQ(Shown(line), u"|");
}

TEST(LineEditor, ControlErasesWords) {
    auto line = At(u"one two three", 8);
    line.Erase(EMove::WordLeft);
    EXPECT_EQ(Shown(line), u"one |three");
    line.Erase(EMove::WordRight);
    EXPECT_EQ(Shown(line), u"one |");
}

TEST(LineEditor, SurrogatePairIsOneCharacter) {
    auto line = At(u"a\U0001D11Eb", 1);
    line.Move(EMove::Right, false);
    EXPECT_EQ(line.Caret(), 3u);
    line.Move(EMove::Left, true);
    EXPECT_EQ(line.Selected(), u"\U0001D11E");
    line.MoveTo(2, false);
    EXPECT_EQ(line.Caret(), 1u) << "never inside";
    line.Erase(EMove::Right);
    EXPECT_EQ(line.Text(), u"ab");
    line = At(u"a\U0001D11Eb", 3);
    line.Erase(EMove::Left);
    EXPECT_EQ(line.Text(), u"ab");
}

TEST(LineEditor, DropsControlCharactersAndLineEnds) {
    CLineEditor line(u"", false);
    EXPECT_TRUE(line.Type(u"a\r\nb\tc\u0001d\u007Fe\u0085f\u2028g\u2029h"));
    EXPECT_EQ(line.Text(), u"abcdefgh");
}

TEST(LineEditor, DropsBrokenSurrogates) {
    CLineEditor line(u"", false);
    const std::u16string broken{u'a', char16_t{0xD834}, u'b', char16_t{0xDD1E}, u'c', char16_t{0xD834}};
    EXPECT_TRUE(line.Type(broken));
    EXPECT_EQ(line.Text(), u"abc");
}

TEST(LineEditor, WhatLeavesNothingToTypeKeepsTheSelection) {
    CLineEditor line(u"abc", false);
    EXPECT_FALSE(line.Type(u"\n"));
    EXPECT_FALSE(line.Type(u""));
    EXPECT_EQ(Shown(line), u"[abc|]");
}

TEST(LineEditor, NumbersOnlyTakesWhatANumberMayHave) {
    CLineEditor line(u"", true);
    EXPECT_TRUE(line.Type(u"-1x2,3 k.\b\fé4"));
    EXPECT_EQ(line.Text(), u"-123k.4");
    EXPECT_FALSE(line.Type(u"dB"));
}

TEST(LineEditor, WhatItOpensWithIsKeptAsItIs) {
    EXPECT_EQ(CLineEditor(u"2 dB\n", true).Text(), u"2 dB\n");
}

TEST(LineEditor, SelectsWords) {
    auto line = At(u"Left ear, right", 0);
    line.SelectWord(6);
    EXPECT_EQ(line.Selected(), u"ear");
    line.SelectWord(8);
    EXPECT_EQ(line.Selected(), u",");
    line.SelectWord(100);
    EXPECT_EQ(line.Selected(), u"right");
    auto greek = At(u"ένα δύο", 0);
    greek.SelectWord(5);
    EXPECT_EQ(greek.Selected(), u"δύο");
    CLineEditor empty(u"", false);
    empty.SelectWord(0);
    EXPECT_EQ(Shown(empty), u"|");
}

TEST(LineEditor, TakesNoMoreThanItsLimit) {
    CLineEditor line(u"", false);
    EXPECT_TRUE(line.Type(std::u16string(CLineEditor::MostUnits - 1, u'a')));
    EXPECT_FALSE(line.Type(u"\U0001D11E")) << "half of a character would be left";
    EXPECT_TRUE(line.Type(u"bc"));
    EXPECT_EQ(line.Text().size(), CLineEditor::MostUnits);
    EXPECT_EQ(line.Text().back(), u'b');
    EXPECT_FALSE(line.Type(u"d"));
}

} // namespace KAV::Tests
