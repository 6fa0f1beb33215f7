#include "pixels/sheet_store.h"

#include "tests/support/together.h"

#include <atomic>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

using namespace KAV;
using Pixels::CSheetStore;
using Pixels::ISheet;
using Pixels::SBitmap;

namespace {

/// A store of square pictures of one cell, 1000 pixels wide, named by the test.
class SheetStore : public testing::Test {
protected:
    std::shared_ptr<const ISheet> Sheet(const std::u16string& name) {
        return store.Sheet(name, [&] {
            ++described;
            return Pixels::SStoredPicture{name, 1000, 1000, {}, [this]() -> std::optional<SBitmap> {
                                              ++decoded;
                                              return Pixels::TransparentBitmap(1000, 1000);
                                          }};
        });
    }
    /// As a renderer holds a picture.
    void Draw(const std::u16string& name, std::int32_t side) { held[name] = Sheet(name)->Cells(side, side); }
    void Ticks(int count) {
        for (int i = 0; i < count; ++i) store.Tick();
    }
    static std::size_t Bytes(std::size_t side) { return 4 * side * side; }

    CSheetStore store;
    int described = 0;
    int decoded = 0;
    std::map<std::u16string, std::shared_ptr<const SBitmap>> held;
};

} // namespace

TEST_F(SheetStore, HasOneSheetForAName) {
    const auto sheet = Sheet(u"A");
    EXPECT_EQ(Sheet(u"A"), sheet);
    EXPECT_NE(Sheet(u"B"), sheet);
    EXPECT_EQ(described, 2);
    EXPECT_EQ(decoded, 0);
}

TEST_F(SheetStore, AsksAgainForASheetThatCouldNotBeDescribed) {
    EXPECT_THROW(store.Sheet(u"A", []() -> Pixels::SStoredPicture { throw std::runtime_error("no"); }),
        std::runtime_error);
    EXPECT_EQ(Sheet(u"A")->Width(), 1000);
}

TEST_F(SheetStore, KeepsWhatIsDrawnWhileAnEditorIsOpen) {
    store.Begin();
    Draw(u"A", 100);
    Draw(u"B", 50);
    Ticks(1000);
    EXPECT_EQ(store.KeptBytes(), Bytes(100) + Bytes(50));
    EXPECT_EQ(Sheet(u"A")->Cells(100, 100), held[u"A"]);
    EXPECT_EQ(decoded, 2);
    store.End();
}

TEST_F(SheetStore, KeepsTheLastSizeAfterTheLastEditor) {
    store.Begin();
    Draw(u"A", 100);
    Draw(u"B", 50);
    Ticks(1);
    held.clear(); // the renderer ends before the editor has closed
    store.End();
    EXPECT_EQ(store.KeptBytes(), Bytes(100) + Bytes(50));

    store.Begin();
    Draw(u"A", 100);
    Draw(u"B", 50);
    EXPECT_EQ(decoded, 2) << "the next editor needs no decoding";
    store.End();
}

TEST_F(SheetStore, DropsASizeThatIsNoLongerDrawn) {
    store.Begin();
    Draw(u"A", 100);
    Ticks(1);
    Draw(u"A", 120);
    Ticks(CSheetStore::RestTicks);
    EXPECT_EQ(store.KeptBytes(), Bytes(100) + Bytes(120)) << "it may be needed again at once";
    Ticks(1);
    EXPECT_EQ(store.KeptBytes(), Bytes(120));
    Draw(u"A", 100);
    EXPECT_EQ(decoded, 3) << "a new size decodes again";
    store.End();
}

TEST_F(SheetStore, CountsTheRestFromTheLastUse) {
    store.Begin();
    Draw(u"A", 100);
    held.clear();
    Ticks(CSheetStore::RestTicks);
    Draw(u"A", 100);
    Ticks(1);
    held.clear();
    Ticks(CSheetStore::RestTicks);
    EXPECT_EQ(store.KeptBytes(), Bytes(100));
    EXPECT_EQ(decoded, 1);
    // To be asked for it is enough, without a tick while it is held.
    Sheet(u"A")->Cells(100, 100);
    Ticks(CSheetStore::RestTicks);
    EXPECT_EQ(store.KeptBytes(), Bytes(100));
    store.End();
}

TEST_F(SheetStore, DoesNotKeepAnEarlierSizeAfterTheLastEditor) {
    store.Begin();
    Draw(u"A", 100);
    Draw(u"B", 100);
    Ticks(1);
    Draw(u"A", 120);
    Draw(u"B", 120);
    Ticks(1);
    held.clear();
    store.End();
    EXPECT_EQ(store.KeptBytes(), 2 * Bytes(120));
}

TEST_F(SheetStore, DropsWhatAnEditorOfAnotherSizeDoesNotDraw) {
    store.Begin();
    Draw(u"A", 100);
    Draw(u"B", 100);
    held.clear();
    store.End();
    store.Begin();
    Draw(u"A", 120);
    Ticks(1);
    held.clear();
    store.End();
    EXPECT_EQ(store.KeptBytes(), Bytes(120));
}

TEST_F(SheetStore, KeepsAllUntilTheLastOfSeveralEditorsHasClosed) {
    store.Begin();
    store.Begin();
    for (const auto* const name : {u"A", u"B", u"C", u"D"}) Draw(name, 1000); // 16 MB
    store.End();
    EXPECT_EQ(store.KeptBytes(), 4 * Bytes(1000));
    held.clear();
    store.End();
    EXPECT_EQ(store.KeptBytes(), 3 * Bytes(1000));
}

TEST_F(SheetStore, KeepsTwelveMegabytesAtMostAndWhatWasDrawnLast) {
    store.Begin();
    for (const auto* const name : {u"A", u"B", u"C", u"D"}) Draw(name, 1000); // 4 MB each
    Draw(u"E", 2000);                                                         // 16 MB: it can't stay
    Draw(u"F", 10);
    Draw(u"A", 1000);
    held.clear();
    store.End();
    EXPECT_EQ(store.KeptBytes(), Bytes(10) + 2 * Bytes(1000));
    EXPECT_LE(store.KeptBytes(), 12'000'000u);
    const int before = decoded;
    store.Begin();
    Draw(u"A", 1000);
    Draw(u"D", 1000);
    EXPECT_EQ(decoded, before);
    Draw(u"B", 1000);
    EXPECT_EQ(decoded, before + 1);
    store.End();
}

TEST_F(SheetStore, KeepsNothingWithoutAnEditor) {
    Draw(u"A", 100);
    EXPECT_EQ(store.KeptBytes(), 0u);
    held.clear();
    Draw(u"A", 100);
    EXPECT_EQ(decoded, 2);
}

TEST_F(SheetStore, SharesAPictureThatSomebodyHoldsBetweenEditors) {
    store.Begin();
    Draw(u"A", 100);
    store.End();
    const auto holder = std::move(held[u"A"]);
    store.Begin();
    EXPECT_EQ(Sheet(u"A")->Cells(100, 100), holder) << "all share one";
    store.End();
    EXPECT_EQ(decoded, 1);
}

TEST_F(SheetStore, TakesEditorsOnSeveralThreads) {
    std::atomic<int> wrong{0};
    const auto sheet = store.Sheet(u"C", [&] {
        return Pixels::SStoredPicture{
            u"C", 40, 40, {}, [] { return std::optional(Pixels::TransparentBitmap(40, 40)); }};
    });
    Tests::CTogether together;
    for (int t = 0; t < 3; ++t) {
        together.Add([&, t](int round) {
            store.Begin();
            const auto picture = sheet->Cells(10 + (round + t) % 3, 10);
            store.Tick();
            wrong += picture->height == 10 ? 0 : 1;
            store.End();
        });
    }
    together.Run();
    EXPECT_EQ(wrong, 0);
    EXPECT_LE(store.KeptBytes(), 3 * Bytes(12));
}

TEST(SheetStoreOfProcess, IsOne) {
    EXPECT_EQ(&CSheetStore::OfProcess(), &CSheetStore::OfProcess());
}
