#include "routing/routing_record.h"

#include <climits>
#include <gtest/gtest.h>

using namespace KAV;

namespace {

void ExpectPair(const SRoutingRecord& record, int entry, std::int32_t first, std::int32_t second) {
    const SRoutingPair& pair = record.map[static_cast<std::size_t>(entry)];
    EXPECT_EQ(std::int32_t{pair.first}, first) << entry;
    EXPECT_EQ(std::int32_t{pair.second}, second) << entry;
}

} // namespace

TEST(RoutingRecord, NewOneHasTwoEntriesOfOneChannelEach) {
    const SRoutingRecord record;
    ExpectPair(record, 0, 0, -1);
    ExpectPair(record, 1, 1, -1);
    for (int entry = 2; entry < RoutingEntries; ++entry) ExpectPair(record, entry, -1, -1);
    EXPECT_EQ(ERoutingType{record.type}, ERoutingType::None);
    EXPECT_EQ(record.text, DefaultRoutingText());
}

TEST(RoutingRecord, NumbersBelowZeroMeanNoChannel) {
    SRoutingRecord record;
    record.SetPair(15, -5, 3);
    ExpectPair(record, 15, -1, 3);
    record.SetPair(15, 2, INT_MIN);
    ExpectPair(record, 15, 2, -1);
}

TEST(RoutingRecord, DefaultDocumentEndsItsLinesWithBothCharacters) {
    const auto text = DefaultRoutingText();
    for (std::size_t i = 0; i < text.size(); ++i) {
        EXPECT_EQ(text[i] == '\n', i > 0 && text[i - 1] == '\r') << i;
    }
}
