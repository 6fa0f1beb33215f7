#include "routing/routing_record.h"

#include <climits>
#include <gtest/gtest.h>
#include <string>

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

TEST(RoutingRecord, TellsWhichEntriesNameAChannel) {
    SRoutingRecord record;
    EXPECT_EQ(std::uint32_t{record.entriesWithChannels}, 0b11u);
    record.SetPair(0, -1, -1);
    record.SetPair(15, -1, 3);
    EXPECT_EQ(std::uint32_t{record.entriesWithChannels}, 0x8002u);
    record.Set("<map>-1,-1|*|-1,2|*|5,-1</map>");
    EXPECT_EQ(std::uint32_t{record.entriesWithChannels}, 0b110u);
    record.Set("");
    EXPECT_EQ(std::uint32_t{record.entriesWithChannels}, 0u);
}

TEST(RoutingRecord, DefaultDocumentEndsItsLinesWithBothCharacters) {
    const auto text = DefaultRoutingText();
    for (std::size_t i = 0; i < text.size(); ++i) {
        EXPECT_EQ(text[i] == '\n', i > 0 && text[i - 1] == '\r') << i;
    }
}

namespace {

std::string Document(const std::string& map, const std::string& more = {}) {
    return "<kav_input_routing>\r\n\t<name>Any</name>\r\n" + more + "\t<map>" + map +
           "</map>\r\n</kav_input_routing>";
}

void ExpectEmptyFrom(const SRoutingRecord& record, int entry) {
    for (; entry < RoutingEntries; ++entry) ExpectPair(record, entry, -1, -1);
}

} // namespace

TEST(RoutingRecord, TakesTheEntriesOfTheMapAndClearsTheRest) {
    SRoutingRecord record;
    record.Set(Document("4,5|*|2,-1|*|0,1"));
    ExpectPair(record, 0, 4, 5);
    ExpectPair(record, 1, 2, -1);
    ExpectPair(record, 2, 0, 1);
    ExpectEmptyFrom(record, 3);
    record.Set(Document("7,-1"));
    ExpectPair(record, 0, 7, -1);
    ExpectEmptyFrom(record, 1);
}

TEST(RoutingRecord, SameTextAgainDoesNothing) {
    SRoutingRecord record;
    record.Set(Document("4,5"));
    record.SetPair(0, 9, 9);
    record.type = ERoutingType::Mono;
    record.Set(Document("4,5"));
    ExpectPair(record, 0, 9, 9);
    EXPECT_EQ(ERoutingType{record.type}, ERoutingType::Mono);
    record.Set(std::string_view(record.text));
    EXPECT_EQ(record.text, Document("4,5"));
}

TEST(RoutingRecord, SameMapInAnotherTextKeepsThePairs) {
    SRoutingRecord record;
    record.Set(Document("4,5"));
    record.SetPair(0, 9, 9);
    const auto renamed = Document("4,5", "\t<ch_names>x</ch_names>\r\n");
    record.Set(renamed);
    EXPECT_EQ(record.text, renamed);
    ExpectPair(record, 0, 9, 9);
}

TEST(RoutingRecord, TypeTakesEffectWithTheSameMapAndEndsWithItsElement) {
    SRoutingRecord record;
    record.Set(Document("0,-1|*|1,-1"));
    const auto typeAfter = [&record](const std::string& name) {
        record.Set(Document("0,-1|*|1,-1", "\t<type>" + name + "</type>\r\n"));
        return ERoutingType{record.type};
    };
    EXPECT_EQ(typeAfter("mid/side"), ERoutingType::MidSide);
    EXPECT_EQ(typeAfter("stereo"), ERoutingType::Stereo);
    EXPECT_EQ(typeAfter("mono"), ERoutingType::Mono);
    EXPECT_EQ(typeAfter("dualmono"), ERoutingType::DualMono);
    EXPECT_EQ(typeAfter("Mid/Side"), ERoutingType::None);
    EXPECT_EQ(typeAfter("mid/side"), ERoutingType::MidSide);
    record.Set(Document("0,-1|*|1,-1"));
    EXPECT_EQ(ERoutingType{record.type}, ERoutingType::None);
}

TEST(RoutingRecord, DocumentWithoutAMapClearsAllEntriesAndKeepsThemClear) {
    SRoutingRecord record;
    record.Set("anything");
    ExpectEmptyFrom(record, 0);
    record.SetPair(0, 3, -1);
    record.Set(""); // no map then, no map now
    ExpectPair(record, 0, 3, -1);
    EXPECT_EQ(record.text, "");
}

TEST(RoutingRecord, EntriesAfterTheSixteenthAreIgnored) {
    SRoutingRecord record;
    std::string map;
    for (int entry = 0; entry < 20; ++entry)
        map += std::to_string(entry) + "," + std::to_string(-entry) + "|*|";
    record.Set(Document(map));
    ExpectPair(record, 0, 0, 0);
    for (int entry = 1; entry < RoutingEntries; ++entry) ExpectPair(record, entry, entry, -1);
}

TEST(RoutingRecord, NumbersThatCannotBeReadAreChannelZero) {
    SRoutingRecord record;
    record.Set(Document("x,y|*|99999999999,-99999999999|*||*| 3 ,\t+4b|*|5|*|,6|*|1,2,3|*|-7,--1"));
    ExpectPair(record, 0, 0, 0);
    ExpectPair(record, 1, 0, 0);
    ExpectPair(record, 2, 0, 0);
    ExpectPair(record, 3, 3, 4);
    ExpectPair(record, 4, 5, 0);
    ExpectPair(record, 5, 0, 6);
    ExpectPair(record, 6, 1, 2);
    ExpectPair(record, 7, -1, 0);
}

TEST(RoutingRecord, BytesOfAnyKindAndNumberGiveADefinedRecord) {
    SRoutingRecord record;
    for (const std::string_view cut : {"<map>1,2", "<map", "<map>", "<", "<map><map>3,4", "<type>mid/side"}) {
        record.Set(cut);
        ExpectEmptyFrom(record, 0);
        EXPECT_EQ(ERoutingType{record.type}, ERoutingType::None) << cut;
    }
    constexpr char Zeros[] = "<map>1\0,2|*|\0003,4</map>\0<type>\0mono</type>";
    const std::string zeros(Zeros, sizeof(Zeros) - 1);
    record.Set(zeros);
    ExpectPair(record, 0, 1, 2);
    ExpectPair(record, 1, 0, 4);
    EXPECT_EQ(record.text.size(), zeros.size());

    std::string million;
    for (int entry = 0; entry < 1'000'000; ++entry) million += "2147483647,8|*|";
    record.Set(Document(million)); // some 15 MB
    for (int entry = 0; entry < RoutingEntries; ++entry) ExpectPair(record, entry, INT_MAX, 8);
}
