#include "patch/macro.h"

#include <algorithm>
#include <gtest/gtest.h>

using KAV::CMacro;

namespace {

class CTable final : public CMacro {
public:
    std::int32_t Tag(std::size_t macro, std::size_t slot) const { return tags[macro][slot]; }
    float SlotSensitivity(std::size_t macro, std::size_t slot) const { return sensitivities[macro][slot]; }
    std::size_t Held(std::size_t macro) const {
        return static_cast<std::size_t>(std::count_if(tags[macro].begin(), tags[macro].end(),
            [](const auto& tag) { return std::int32_t{tag} != NoTag; }));
    }
};

} // namespace

TEST(Macro, NewTableIsEmpty) {
    const CTable table;
    for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
        EXPECT_EQ(table.Held(macro), 0u);
        for (std::size_t slot = 0; slot < CMacro::Slots; ++slot) {
            EXPECT_EQ(table.SlotSensitivity(macro, slot), CMacro::NoSensitivity);
        }
    }
}

TEST(Macro, TargetsTakeTheFirstFreeSlotOfTheirMacro) {
    CTable table;
    table.AssignMacro(1, 33, 0.75f);
    table.AssignMacro(1, 132, 0.25f);
    EXPECT_EQ(table.Tag(1, 0), 33);
    EXPECT_EQ(table.SlotSensitivity(1, 0), 0.75f);
    EXPECT_EQ(table.Tag(1, 1), 132);
    EXPECT_EQ(table.SlotSensitivity(1, 1), 0.25f);
    for (const std::size_t other : {0u, 2u, 3u, 4u}) EXPECT_EQ(table.Held(other), 0u);
}

TEST(Macro, HeldTargetTakesANewSensitivityInItsSlot) {
    CTable table;
    table.AssignMacro(0, 33, 0.75f);
    table.AssignMacro(0, 33, 1.0f);
    EXPECT_EQ(table.Held(0), 1u);
    EXPECT_EQ(table.SlotSensitivity(0, 0), 1.0f);
}

TEST(Macro, EverySlotOfAHeldTargetTakesTheNewSensitivity) {
    CTable table;
    for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
        for (std::size_t slot = 0; slot < CMacro::Slots; ++slot) table.tags[macro][slot] = slot % 2 ? 33 : 36;
    }
    table.AssignMacro(4, 33, 0.75f);
    for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
        for (std::size_t slot = 0; slot < CMacro::Slots; ++slot) {
            const bool taken = macro == 4 && slot % 2 == 1;
            EXPECT_EQ(table.SlotSensitivity(macro, slot), taken ? 0.75f : CMacro::NoSensitivity)
                << macro << " " << slot;
            EXPECT_EQ(table.Tag(macro, slot), slot % 2 ? 33 : 36);
        }
    }
}

TEST(Macro, CentredSensitivityFreesOnlyTheFirstSlotOfItsTag) {
    CTable table;
    for (const std::size_t slot : {2u, 5u, 63u}) {
        table.tags[4][slot] = 33;
        table.sensitivities[4][slot] = 0.75f;
    }
    table.AssignMacro(4, 33, CMacro::NoSensitivity);
    EXPECT_EQ(table.Held(4), 2u);
    EXPECT_EQ(table.Tag(4, 2), CMacro::NoTag);
    for (const std::size_t slot : {5u, 63u}) {
        EXPECT_EQ(table.Tag(4, slot), 33);
        EXPECT_EQ(table.SlotSensitivity(4, slot), CMacro::NoSensitivity);
    }
}

TEST(Macro, EveryMacroTakesSixtyFourTargetsInOrder) {
    for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
        CTable table;
        for (std::int32_t n = 0; n < 64; ++n) {
            table.AssignMacro(macro, 100 + n, static_cast<float>(n) / 256.0f);
        }
        for (std::size_t slot = 0; slot < CMacro::Slots; ++slot) {
            EXPECT_EQ(table.Tag(macro, slot), 100 + static_cast<std::int32_t>(slot));
            EXPECT_EQ(table.SlotSensitivity(macro, slot), static_cast<float>(slot) / 256.0f);
            EXPECT_EQ(table.Sensitivity(macro, 100 + static_cast<std::int32_t>(slot)),
                static_cast<float>(slot) / 256.0f);
        }
        for (std::size_t other = 0; other < CMacro::Macros; ++other) {
            EXPECT_EQ(table.Held(other), other == macro ? CMacro::Slots : 0u);
        }
    }
}

TEST(Macro, CentredSensitivityFreesTheSlotForTheNextTarget) {
    CTable table;
    table.AssignMacro(0, 33, 0.75f);
    table.AssignMacro(0, 36, 0.75f);
    table.AssignMacro(0, 33, CMacro::NoSensitivity);
    EXPECT_EQ(table.Held(0), 1u);
    EXPECT_EQ(table.Tag(0, 0), CMacro::NoTag);
    table.AssignMacro(0, 37, 1.0f);
    EXPECT_EQ(table.Tag(0, 0), 37);
}

TEST(Macro, CentredSensitivityOfATargetThatIsNotHeldTakesASlot) {
    CTable table;
    table.AssignMacro(0, 33, CMacro::NoSensitivity);
    EXPECT_EQ(table.Tag(0, 0), 33);
    EXPECT_EQ(table.SlotSensitivity(0, 0), CMacro::NoSensitivity);
}

TEST(Macro, AssignmentWithNoSlotFreeIsLost) {
    CTable table;
    for (std::int32_t tag = 100; tag < 164; ++tag) table.AssignMacro(0, tag, 0.75f);
    ASSERT_EQ(table.Held(0), CMacro::Slots);
    table.AssignMacro(0, 200, 1.0f);
    for (std::size_t slot = 0; slot < CMacro::Slots; ++slot) {
        EXPECT_EQ(table.Tag(0, slot), 100 + static_cast<std::int32_t>(slot));
        EXPECT_EQ(table.SlotSensitivity(0, slot), 0.75f);
    }
    EXPECT_EQ(table.Held(1), 0u) << "nor is it given to the next macro";
}

TEST(Macro, ClearingEmptiesEverySlotOfEveryMacro) {
    CTable table;
    for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
        for (std::int32_t tag = 1; tag <= 64; ++tag) table.AssignMacro(macro, tag, 1.0f);
    }
    table.ClearMacros();
    for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
        EXPECT_EQ(table.Held(macro), 0u);
        for (std::size_t slot = 0; slot < CMacro::Slots; ++slot) {
            EXPECT_EQ(table.SlotSensitivity(macro, slot), CMacro::NoSensitivity);
        }
    }
}

TEST(Macro, TheLastSlotThatHoldsATagDecidesItsSensitivity) {
    CTable macro;
    EXPECT_EQ(macro.Sensitivity(1, 33), 0.5f);
    macro.tags[1][3] = 33;
    macro.sensitivities[1][3] = 0.25f;
    macro.tags[1][9] = 33;
    macro.sensitivities[1][9] = 0.75f;
    EXPECT_EQ(macro.Sensitivity(1, 33), 0.75f);
    EXPECT_EQ(macro.Sensitivity(0, 33), 0.5f);
    macro.tags[1][9] = CMacro::NoTag;
    EXPECT_EQ(macro.Sensitivity(1, 33), 0.25f);
}
