#include "tests/tools/kavhost/support.h"
#include "tests/tools/kavhost/tags/chunks.h"
#include "tools/kavhost/tags/chunk_file.h"

#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

class WavTags : public testing::Test {
protected:
    SRun Run(const std::string& input, std::vector<std::string> more = {}) const {
        WriteBytes(_folder / "in.wav", input);
        std::vector<std::string> arguments{"render", "-p", EffectFile("fader").string(),
            (_folder / "in.wav").string(), "-o", (_folder / "out.wav").string(), "--no-align"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunHost(arguments);
    }

    /// The chunks that arrive, after a run that works.
    ChunkRecords Rendered(const std::string& input, std::vector<std::string> more = {}) {
        const auto run = Run(input, std::move(more));
        EXPECT_EQ(run.code, 0) << run.errors;
        _said = run.out;
        return ChunksOf(BytesOf(_folder / "out.wav"));
    }

    bool Said(const std::string& text) const { return _said.find(text) != std::string::npos; }

    std::filesystem::path _folder = NewFolder();
    std::string _said;
};

std::int16_t Figure(const std::string& bext, std::size_t place) {
    return static_cast<std::int16_t>(
        static_cast<unsigned char>(bext[place]) | static_cast<unsigned char>(bext[place + 1]) << 8);
}

/// A stream of zeros as large as any file, with a few bytes here and there.
class CSparse final : public std::streambuf {
public:
    explicit CSparse(std::streamoff size) : _size(size) {}

    void Put(std::streamoff place, const std::string& bytes) { _pieces.emplace_back(place, bytes); }

private:
    pos_type seekoff(off_type offset, std::ios::seekdir way, std::ios::openmode) override {
        _place = way == std::ios::beg ? offset : way == std::ios::end ? _size + offset : _place + offset;
        return _place;
    }
    pos_type seekpos(pos_type place, std::ios::openmode mode) override {
        return seekoff(place, std::ios::beg, mode);
    }
    std::streamsize xsgetn(char* bytes, std::streamsize count) override {
        count = std::min<std::streamsize>(count, _size - _place);
        std::fill_n(bytes, count, '\0');
        for (const auto& [place, piece] : _pieces) {
            const auto begin = std::max(place, _place),
                       end = std::min(place + std::ssize(piece), _place + count);
            for (auto i = begin; i < end; ++i) bytes[i - _place] = piece[static_cast<std::size_t>(i - place)];
        }
        _place += count;
        return count;
    }

    std::vector<std::pair<std::streamoff, std::string>> _pieces;
    std::streamoff _size;
    std::streamoff _place = 0;
};

} // namespace

TEST_F(WavTags, KeepEveryKindOfChunkByteForByte) {
    ChunkRecords all;
    std::size_t size = 700;
    for (const char* name :
        {"bext", "iXML", "axml", "chna", "cue ", "smpl", "inst", "cart", "acid", "_PMX"}) {
        std::string content;
        for (std::size_t i = 0; i < size; ++i) content.push_back(static_cast<char>(i * 37 + size));
        if (name == std::string("bext")) content.replace(346, 2, Little(1, 2)); // no loudness in this version
        if (name == std::string("smpl")) content.assign(60, '\0');              // libraries look at its loops
        all.emplace_back(name, content);
        ++size; // odd ones, too
    }
    all.emplace_back("LIST", "INFO" + InfoText("INAM", "Bells") + InfoText("IXYZ", "odd"));
    all.emplace_back("LIST", "adtl" + std::string("\0\xFF not a chunk", 14));
    all.emplace_back("id3 ", Id3(Id3Text("TIT2", "Bells") + Id3Frame("PRIV", "a\0b")));
    EXPECT_EQ(Rendered(WavWith(all)), all);
    EXPECT_FALSE(Said("note")) << _said;
    EXPECT_EQ(Rendered(WavWith({}, all)), all) << "after the audio";
    const ChunkRecords front(all.begin(), all.begin() + 5), back(all.begin() + 5, all.end());
    EXPECT_EQ(Rendered(WavWith(front, back)), all) << "on both sides";
}

TEST_F(WavTags, KeepTheirOrderAndTheirRepetitions) {
    const ChunkRecords all{{"iXML", "b"}, {"LIST", "INFO" + InfoText("INAM", "1")}, {"iXML", "a"},
        {"iXML", "b"}, {"LIST", "INFO" + InfoText("INAM", "2")}, {"cue ", ""}};
    EXPECT_EQ(Rendered(WavWith(all)), all);
}

TEST_F(WavTags, KeepTheAudioAsItIsWithoutThem) {
    Rendered(WavWith({}));
    const auto plain = ReadWav(_folder / "out.wav").samples;
    Rendered(WavWith({{"iXML", "abc"}, {"id3 ", "x"}}, {{"bext", Bext(2, "x")}}));
    EXPECT_EQ(ReadWav(_folder / "out.wav").samples, plain);
}

TEST_F(WavTags, FollowAudioOfAnyLength) {
    for (const std::size_t frames : {std::size_t{1}, std::size_t{4}, std::size_t{4801}}) {
        WriteWav(_folder / "odd.wav", Noise(1, frames, 0.1f, ESampleFormat::Int8));
        auto bytes = BytesOf(_folder / "odd.wav") + WavChunk("iXML", "<a/>");
        bytes.replace(4, 4, Little(bytes.size() - 8, 4));
        EXPECT_EQ(Rendered(bytes), (ChunkRecords{{"iXML", "<a/>"}})) << frames;
        EXPECT_EQ(ReadWav(_folder / "out.wav").Frames(), frames);
    }
}

TEST_F(WavTags, AreFoundWhereTheByteAfterAnOddChunkIsMissing) {
    WriteWav(_folder / "odd.wav", Noise(1, 4801, 0.1f, ESampleFormat::Int8));
    auto bytes = BytesOf(_folder / "odd.wav");
    bytes.pop_back();
    EXPECT_EQ(Rendered(bytes + WavChunk("iXML", "<a/>")), (ChunkRecords{{"iXML", "<a/>"}}));
}

TEST_F(WavTags, NameWhatIsDropped) {
    const auto input =
        WavWith({{"PEAK", std::string(24, 'p')}, {"JUNK", std::string(28, '\0')}, {"levl", "l"}},
            {{"MD5 ", std::string(16, 'm')}, {"xyzw", "abc"}, {"xyzw", "d"}, {"LIST", "wavl12"},
                {"iXML", "kept"}});
    EXPECT_EQ(Rendered(input), (ChunkRecords{{"iXML", "kept"}}));
    EXPECT_TRUE(Said("dropped because they describe the old samples: PEAK, levl, MD5\n")) << _said;
    EXPECT_TRUE(Said("dropped because kavhost doesn't know what they mean: xyzw, LIST wavl\n")) << _said;
    EXPECT_FALSE(Said("JUNK"));
    EXPECT_EQ(Rendered(input, {"--strict"}).size(), 1u) << "what is dropped for good reason is no failure";
    const auto run = Run(input, {"--json"});
    const auto notes = nlohmann::json::parse(run.out)[0]["notes"].dump();
    EXPECT_NE(notes.find("PEAK, levl, MD5"), std::string::npos) << notes;
    EXPECT_NE(notes.find("xyzw, LIST wavl"), std::string::npos) << notes;
}

TEST_F(WavTags, GiveABroadcastChunkTheNewLoudnessAndALineOfHistory) {
    const std::string history = "A=ANALOGUE,M=stereo,T=Bell\r\n";
    auto noise = Noise(1, 28'000, 0.2f, ESampleFormat::Int16);
    noise.format.rateHz = 8000; // longer than the three seconds of short-term loudness
    WriteWav(_folder / "noise.wav", noise);
    for (const auto& old :
        {history, history + std::string(25, '\0'), history.substr(0, history.size() - 2)}) {
        const auto before = Bext(2, old);
        auto input = BytesOf(_folder / "noise.wav") + WavChunk("bext", before);
        input.replace(4, 4, Little(input.size() - 8, 4));
        const auto run = Run(input, {"--json", "--format", "24"});
        ASSERT_EQ(run.code, 0) << run.errors;
        const auto after = nlohmann::json::parse(run.out)[0]["after"];
        const auto bext = Contents(ChunksOf(BytesOf(_folder / "out.wav")), "bext").at(0);
        EXPECT_EQ(bext.substr(0, 412), before.substr(0, 412));
        EXPECT_EQ(bext.substr(422, 180), before.substr(422, 180));
        for (const auto& [key, place] :
            {std::pair{"loudness_lufs", 412u}, {"loudness_range_lu", 414u}, {"true_peak_dbtp", 416u},
                {"highest_momentary_lufs", 418u}, {"highest_short_term_lufs", 420u}}) {
            if (after[key].is_null()) { // as in a build that doesn't measure it
                EXPECT_EQ(Figure(bext, place), 0x7FFF) << key;
            } else {
                EXPECT_EQ(Figure(bext, place), std::lround(after[key].get<double>() * 100)) << key;
                EXPECT_NE(Figure(bext, place), Figure(before, place)) << key;
            }
        }
        const auto lines = bext.substr(602);
        EXPECT_TRUE(lines.starts_with(history + "A=PCM,F=8000,W=24,M=mono,T=Test Fader; kavhost ")) << lines;
        EXPECT_TRUE(lines.ends_with("\r\n") && lines.find('\n', history.size()) == lines.size() - 1) << lines;
    }
}

TEST_F(WavTags, SayNothingOfLoudnessThatWasNotMeasured) {
    const auto bext = Contents(Rendered(WavWith({{"bext", Bext(2, "")}}), {"--no-measure"}), "bext").at(0);
    EXPECT_EQ(bext.substr(412, 10),
        Little(0x7FFF, 2) + Little(0x7FFF, 2) + Little(0x7FFF, 2) + Little(0x7FFF, 2) + Little(0x7FFF, 2));
}

TEST_F(WavTags, LeaveOtherBroadcastChunksAlone) {
    for (const auto& bext : {Bext(0, "A=PCM\r\n"), Bext(1, "x"), Bext(2, "").substr(0, 500),
             Bext(2, "").substr(0, 300), std::string("short")}) {
        EXPECT_EQ(Rendered(WavWith({{"bext", bext}})), (ChunkRecords{{"bext", bext}})) << bext.size();
    }
}

TEST_F(WavTags, ThatClaimTooMuchAreLeftOutAndNamed) {
    const auto whole = WavWith({}, {{"iXML", "kept"}});
    for (const std::uint64_t claim :
        {std::uint64_t{5}, std::uint64_t{0xFFFFFFFE}, std::uint64_t{0xFFFFFFFF}}) {
        const auto input = whole + "bext" + Little(claim, 4) + "abcd";
        EXPECT_EQ(Rendered(input), (ChunkRecords{{"iXML", "kept"}})) << claim;
        EXPECT_TRUE(Said("left out: bext: cut off\n")) << _said;
        std::filesystem::remove(_folder / "out.wav");
        const auto run = Run(input, {"--strict"});
        EXPECT_EQ(run.code, 1);
        EXPECT_NE(run.errors.find("in.wav: left out: bext: cut off"), std::string::npos) << run.errors;
        EXPECT_EQ(FilesIn(_folder), std::vector<std::string>{"in.wav"});
    }
}

TEST_F(WavTags, EndWhereNoChunkFollows) {
    const auto whole = WavWith({}, {{"iXML", "kept"}});
    EXPECT_EQ(Rendered(whole + std::string(128, 'T') + std::string("\0\1\2", 3)).size(), 1u);
    auto damaged = whole + std::string("\xFF\xFF\xFF\xFF\x10\0\0\0", 8) + std::string(16, '\0');
    EXPECT_EQ(Rendered(damaged), (ChunkRecords{{"iXML", "kept"}}));
    EXPECT_FALSE(Said("damaged")) << "what follows the end that the file states is not ours: " << _said;
    damaged.replace(4, 4, Little(damaged.size() - 8, 4));
    EXPECT_EQ(Rendered(damaged), (ChunkRecords{{"iXML", "kept"}}));
    EXPECT_TRUE(Said("left out: what follows the last readable chunk: damaged")) << _said;
}

TEST_F(WavTags, ByTheThousandsAreReadUpToABound) {
    ChunkRecords all(3000, {"iXML", "x"});
    EXPECT_EQ(Rendered(WavWith({}, all)), all);
    all.resize(20'000, {"abcd", ""});
    EXPECT_EQ(Rendered(WavWith({}, all)).size(), 3000u);
    EXPECT_TRUE(Said("left out: everything after the first 10000 chunks: too many")) << _said;
}

TEST_F(WavTags, NamesInANoteAreFew) {
    ChunkRecords all;
    for (char letter = 'a'; letter <= 'z'; ++letter) all.emplace_back(std::string(4, letter), "");
    Rendered(WavWith(all));
    EXPECT_TRUE(Said("aaaa, bbbb, cccc, dddd, eeee, ffff, gggg, hhhh, iiii, jjjj, kkkk, llll and 14 more\n"))
        << _said;
}

TEST(ChunkFile, AllocatesNoMoreThanItsBound) {
    const auto head = "RIFF" + Little(0xFFFFFFFF, 4) + "WAVE";
    CSparse huge(std::streamoff{2} << 30);
    huge.Put(0, head + "axml" + Little(1 << 30, 4));
    std::istream hugeStream(&huge);
    const auto list = ReadChunks(hugeStream);
    EXPECT_TRUE(list.carried.empty());
    EXPECT_EQ(list.leftOut.at(0), "axml: too large");

    // Of ten chunks of 15 MiB, eight.
    constexpr std::streamoff size = 15 << 20;
    CSparse several(12 + 10 * (8 + size));
    several.Put(0, head);
    for (int i = 0; i < 10; ++i) several.Put(12 + i * (8 + size), "iXML" + Little(size, 4));
    std::istream severalStream(&several);
    const auto some = ReadChunks(severalStream);
    EXPECT_EQ(some.carried.size(), 8u);
    EXPECT_EQ(some.leftOut, std::vector<std::string>(2, "iXML: too large"));
}

TEST(ChunkFile, ReadsAnyBytesToAnEnd) {
    const auto wav =
        WavWith({{"iXML", "abc"}, {"bext", Bext(2, "x")}}, {{"LIST", "INFO" + InfoText("INAM", "x")}});
    const auto aiff = AiffWith({{"MARK", "abc"}, {"NAME", "x"}});
    for (const auto& whole : {wav.substr(0, 900) + wav.substr(wav.size() - 100), aiff.substr(0, 100)}) {
        for (std::size_t place = 0; place < whole.size(); ++place) {
            for (const char value : {'\x00', '\x7F', '\xFF'}) {
                auto damaged = whole;
                damaged[place] = value;
                std::istringstream stream(damaged), cut(whole.substr(0, place));
                EXPECT_LE(ReadChunks(stream).carried.size(), 5u);
                EXPECT_LE(ReadChunks(cut).carried.size(), 5u);
            }
        }
    }
}

TEST(ChunkFile, NamesWhatForeignFilesHold) {
    const auto caf = "caff" + Big(1, 2) + Big(0, 2) + "desc" + Big(4, 8) + "abcd" + "info" + Big(3, 8) +
                     "abc" + "strg" + Big(0, 8) + "data" + Big(~0ULL, 8) + "abcdefgh";
    std::istringstream stream(caf);
    const auto list = ReadChunks(stream);
    EXPECT_TRUE(list.carried.empty());
    EXPECT_EQ(list.unknown, (std::vector<std::string>{"info", "strg"}));
    const auto guid = [](const std::string& name) { return name + std::string(12, 'g'); };
    std::istringstream wave64(guid("riff") + Little(200, 8) + guid("wave") + guid("fmt ") +
                              Little(24 + 3, 8) + "abc" + std::string(5, '\0') + guid("bext") +
                              Little(24 + 8, 8) + "abcdefgh" + guid("data") + Little(24, 8));
    EXPECT_EQ(ReadChunks(wave64).unknown, (std::vector<std::string>{"bext"}));
}

TEST(ChunkFile, OfSixtyFourBitsHasItsSizeCorrected) {
    const auto folder = NewFolder();
    for (const auto* mark : {"RF64", "BW64"}) {
        const auto body = "ds64" + Little(28, 4) + Little(0, 8) + Little(5, 8) + Little(1, 8) + Little(0, 4) +
                          WavChunk("fmt ", std::string(16, '\0')) + "data" + Little(0xFFFFFFFF, 4) + "abcde";
        const auto file =
            mark + Little(0xFFFFFFFF, 4) + "WAVE" + body + std::string(1, '\0') + WavChunk("iXML", "x");
        std::istringstream stream(file);
        EXPECT_EQ(ReadChunks(stream).carried, (std::vector<SChunk>{{"iXML", "x"}}));
        WriteBytes(folder / "a.wav", "RF64" + Little(0xFFFFFFFF, 4) + "WAVE" + body);
        EXPECT_TRUE(AppendChunks(folder / "a.wav", std::vector<SChunk>{{"iXML", "abc"}, {"bext", "de"}}));
        EXPECT_EQ(ChunksOf(BytesOf(folder / "a.wav")), (ChunkRecords{{"iXML", "abc"}, {"bext", "de"}}));
    }
}
