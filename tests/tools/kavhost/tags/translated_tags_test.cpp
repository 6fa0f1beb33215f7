#include "tests/tools/kavhost/support.h"
#include "tests/tools/kavhost/tags/chunks.h"
#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/tags/tags.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <sndfile.h>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

class TranslatedTags : public testing::Test {
protected:
    void Render(const std::string& input, const std::string& output, std::vector<std::string> more = {}) {
        std::vector<std::string> arguments{"render", "-p", EffectFile("fader").string(),
            (_folder / input).string(), "-o", (_folder / output).string(), "--no-align"};
        if (more.empty()) arguments.emplace_back("--no-measure");
        arguments.insert(arguments.end(), more.begin(), more.end());
        const auto run = RunHost(arguments);
        EXPECT_EQ(run.code, 0) << run.errors;
        _said = run.out;
    }

    std::string Bytes(const std::string& name) const { return BytesOf(_folder / name); }
    ChunkRecords Chunks(const std::string& name) const { return ChunksOf(Bytes(name)); }
    bool Said(const std::string& text) const { return _said.find(text) != std::string::npos; }

    /// An MP3 file of noise after `tag`.
    void WriteMp3(const std::string& name, const std::string& tag, const std::string& end = {}) const {
        auto audio = Noise(2, 10'000, 0.5f);
        SF_INFO info{};
        info.samplerate = 48000;
        info.channels = 2;
        info.format = SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III;
        SNDFILE* const mp3 = sf_open((_folder / "plain.mp3").string().c_str(), SFM_WRITE, &info);
        ASSERT_NE(mp3, nullptr);
        sf_writef_float(mp3, audio.samples.data(), 10'000);
        sf_close(mp3);
        WriteBytes(_folder / name, tag + Bytes("plain.mp3") + end);
    }

    std::filesystem::path _folder = NewFolder();
    std::string _said;
};

using Comments = std::multimap<std::string, std::string>;

/// A number of four bytes, from which `place` goes on.
std::size_t Next(const std::string& bytes, std::size_t& place, bool isBig) {
    std::size_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8 | static_cast<unsigned char>(bytes.at(place + (isBig ? i : 3 - i)));
    place += 4;
    return value;
}

/// A block of Vorbis comments.
Comments ParseComments(const std::string& block) {
    Comments comments;
    std::size_t place = 0;
    place += Next(block, place, false); // who wrote it
    for (auto count = Next(block, place, false); count > 0; --count) {
        const auto size = Next(block, place, false);
        const auto text = block.substr(place, size);
        comments.emplace(text.substr(0, text.find('=')), text.substr(text.find('=') + 1));
        place += size;
    }
    return comments;
}

struct SPictureBlock {
    std::size_t type = 0;
    std::string mime, description, bytes;
};

SPictureBlock ParsePicture(const std::string& block) {
    SPictureBlock picture;
    std::size_t place = 0;
    const auto text = [&] {
        const auto size = Next(block, place, true);
        place += size;
        return block.substr(place - size, size);
    };
    picture.type = Next(block, place, true);
    picture.mime = text();
    picture.description = text();
    place += 16; // width, height, depth, colours
    picture.bytes = text();
    return picture;
}

/// The blocks of a FLAC file of one type.
std::vector<std::string> FlacBlocks(const std::string& file, unsigned char type) {
    std::vector<std::string> blocks;
    EXPECT_EQ(file.substr(0, 4), "fLaC");
    for (std::size_t place = 4;;) {
        const auto head = static_cast<unsigned char>(file.at(place));
        const auto size = Next(file, place, true) & 0xFFFFFF;
        if ((head & 0x7F) == type) blocks.push_back(file.substr(place, size));
        place += size;
        if (head > 0x7F) return blocks;
    }
}

Comments FlacComments(const std::string& file) {
    const auto blocks = FlacBlocks(file, 4);
    EXPECT_EQ(blocks.size(), 1u);
    return blocks.empty() ? Comments() : ParseComments(blocks.front());
}

/// The comments of a Vorbis file, whose second packet must lie in one page.
Comments OggComments(const std::string& file) {
    const auto place = file.find("\x03vorbis");
    EXPECT_NE(place, std::string::npos);
    return ParseComments(file.substr(place + 7));
}

bool Has(const Comments& comments, const std::string& key, const std::string& value) {
    const auto [begin, end] = comments.equal_range(key);
    return std::any_of(begin, end, [&](const auto& entry) { return entry.second == value; });
}

const ChunkRecords Plain{
    {"LIST", "INFO" + InfoText("INAM", "Bells") + InfoText("IART", "The Tower") + InfoText("IPRD", "Towers") +
                 InfoText("ICMT", "at noon") + InfoText("ICRD", "2024-05-06") + InfoText("ITRK", "7") +
                 InfoText("ICOP", "(c) us")}};
const std::map<std::string, std::string> PlainFields{{"TITLE", "Bells"}, {"ARTIST", "The Tower"},
    {"ALBUM", "Towers"}, {"COMMENT", "at noon"}, {"DATE", "2024-05-06"}, {"TRACKNUMBER", "7"},
    {"COPYRIGHT", "(c) us"}};

const std::string Jpeg = "\xFF\xD8\xFF" + std::string(3000, 'j');
const std::string Cover = Id3Frame("APIC", std::string("\0image/jpeg\0\x03the front\0", 23) + Jpeg);

/// A library that fails in each operation.
class CFailingLibrary final : public ITagLibrary {
public:
    STagSet ReadFile(const std::filesystem::path&) const override { throw std::bad_alloc(); }
    STagSet ReadId3(const std::string&) const override { throw 42; }
    std::string MakeId3(const STagSet&) const override { throw 42; }
    bool WriteComments(const std::filesystem::path&, EContainer, const STagSet&) const override {
        return false;
    }
};

} // namespace

TEST_F(TranslatedTags, AreCommentsInFlacAndOgg) {
    WriteBytes(_folder / "in.wav", WavWith(Plain));
    Render("in.wav", "a.flac");
    EXPECT_FALSE(Said("note")) << _said;
    Render("in.wav", "a.ogg");
    EXPECT_FALSE(Said("note")) << _said;
    for (const auto& [key, value] : PlainFields) {
        EXPECT_TRUE(Has(FlacComments(Bytes("a.flac")), key, value)) << key;
        EXPECT_TRUE(Has(OggComments(Bytes("a.ogg")), key, value)) << key;
    }
}

TEST_F(TranslatedTags, ComeBackFromEveryContainer) {
    WriteBytes(_folder / "in.wav", WavWith(Plain));
    const auto sorted = [](std::string list) { // texts that may come in any order
        std::vector<std::string> texts;
        for (std::size_t place = 4; place < list.size();) {
            auto at = place + 4;
            const auto size = Next(list, at, false);
            texts.push_back(list.substr(place, 4) + list.substr(at, size));
            place = at + size + (size & 1);
        }
        std::ranges::sort(texts);
        return texts;
    };
    auto expected = sorted(Plain[0].second);
    std::ranges::replace(
        expected, std::string("ITRK7\0", 6), std::string("IPRT7\0", 6)); // both mean the track
    std::ranges::sort(expected);
    for (const std::string way : {"a.flac", "a.ogg", "a.aiff"}) {
        Render("in.wav", way);
        Render(way, "back.wav");
        auto texts = sorted(Contents(Chunks("back.wav"), "LIST").at(0));
        std::erase_if(
            texts, [](const std::string& text) { return text.starts_with("ISFT"); }); // a coder's name
        EXPECT_EQ(texts, expected) << way;
    }
}

TEST_F(TranslatedTags, OfABroadcastChunkComeBackWithTheNewLoudness) {
    const auto bext = Bext(2, "A=PCM,F=48000\r\n");
    WriteBytes(_folder / "in.wav", WavWith({{"bext", bext}}));
    for (const std::string way : {"a.flac", "a.ogg", "a.aiff"}) {
        Render("in.wav", way);
        Render(way, "back.wav", {"--json"});
        const auto back = Contents(Chunks("back.wav"), "bext").at(0);
        EXPECT_EQ(back.substr(0, 412), bext.substr(0, 412)) << way; // texts, time reference, version, UMID
        const auto lufs = nlohmann::json::parse(_said)[0]["after"]["loudness_lufs"];
        EXPECT_TRUE(lufs.is_null() || std::abs(lufs.get<double>()) < 99);
        const auto figure = lufs.is_null() ? 0x7FFF : std::lround(100 * lufs.get<double>());
        EXPECT_EQ(back.substr(412, 2), Little(static_cast<std::uint64_t>(figure), 2)) << way;
        const auto history = back.substr(602);
        EXPECT_TRUE(history.starts_with("A=PCM,F=48000\r\nA=")) << history;
        EXPECT_EQ(std::ranges::count(history, '\n'), 3) << "one line for each rendering: " << history;
    }
    EXPECT_EQ(FlacComments(Bytes("a.flac")).find("TIME_REFERENCE")->second, "172800000");
    EXPECT_TRUE(Has(FlacComments(Bytes("a.flac")), "ORIGINATOR", "Tower"));
}

TEST_F(TranslatedTags, NameWhatTheContainerHasNoPlaceFor) {
    const ChunkRecords all{{"iXML", "<a/>"}, {"axml", "<b/>"}, {"cue ", Cues({7})}, {"_PMX", "<x/>"},
        {"inst", "abcdefg"}, {"LIST", "INFO" + InfoText("INAM", "x") + InfoText("IXYZ", "y")}};
    WriteBytes(_folder / "in.wav", WavWith({}, all));
    Render("in.wav", "a.flac");
    EXPECT_TRUE(Said("dropped because FLAC can't store them: iXML, axml, cue, _PMX, inst, INFO IXYZ\n"))
        << _said;
    Render("in.wav", "a.ogg");
    EXPECT_TRUE(Said("dropped because OGG can't store them: iXML")) << _said;
    Render("in.wav", "a.aiff", {"--strict"});
    EXPECT_TRUE(Said("dropped because AIFF can't store them: iXML, axml, _PMX, INFO IXYZ\n")) << _said;
}

TEST_F(TranslatedTags, PutNoRiffChunkIntoAForm) {
    ChunkRecords all = Plain;
    for (const char* name : {"bext", "iXML", "axml", "chna", "cart", "acid", "_PMX", "cue "})
        all.emplace_back(name, "\1");
    WriteBytes(_folder / "in.wav", WavWith({}, all));
    Render("in.wav", "a.aiff");
    for (const auto& [name, content] : Chunks("a.aiff")) EXPECT_EQ(name, "ID3 ");
}

TEST_F(TranslatedTags, TakeMarkersFromWavToAiffAndBack) {
    WriteBytes(_folder / "in.wav",
        WavWith({{"cue ", Cues({100, 2400, 70'000})}, {"LIST", CueLabels({"Verse", "Refrain"})}}));
    Render("in.wav", "a.aiff");
    EXPECT_FALSE(Said("note")) << _said;
    const auto text = [](const std::string& label) { return static_cast<char>(label.size()) + label; };
    EXPECT_EQ(Chunks("a.aiff"), (ChunkRecords{{"MARK", Big(3, 2) + Big(1, 2) + Big(100, 4) + text("Verse") +
                                                           Big(2, 2) + Big(2400, 4) + text("Refrain") +
                                                           Big(3, 2) + Big(70'000, 4) + Big(0, 2)}}));
    Render("a.aiff", "back.wav");
    EXPECT_EQ(Chunks("back.wav"), Chunks("in.wav"));
}

TEST_F(TranslatedTags, TakeASamplersLoopFromWavToAiffAndBack) {
    const auto smpl = Little(0, 8) + Little(20833, 4) + Little(61, 4) + Little(0x40000000, 4) + Little(0, 8) +
                      Little(1, 4) + Little(0, 4) + Little(0, 4) + Little(1, 4) + Little(1000, 4) +
                      Little(1999, 4) + Little(0, 8);
    const std::string inst("\x3D\x19\xFA\x0C\x60\x05\x70", 7); // 61, +25 cents, -6 dB, notes and velocities
    WriteBytes(_folder / "in.wav", WavWith({{"inst", inst}, {"smpl", smpl}}));
    Render("in.wav", "a.aiff");
    EXPECT_FALSE(Said("note")) << _said;
    EXPECT_EQ(Contents(Chunks("a.aiff"), "INST").at(0), std::string("\x3D\x19\x0C\x60\x05\x70\xFF\xFA", 8) +
                                                            Big(2, 2) + Big(1, 2) + Big(2, 2) +
                                                            std::string(6, '\0'));
    EXPECT_EQ(Contents(Chunks("a.aiff"), "MARK").at(0), // an AIFF loop ends at the frame after its last one
        Big(2, 2) + Big(1, 2) + Big(1000, 4) + Big(0, 2) + Big(2, 2) + Big(2000, 4) + Big(0, 2));
    Render("a.aiff", "back.wav");
    EXPECT_EQ(Chunks("back.wav"), Chunks("in.wav"));
}

TEST_F(TranslatedTags, KeepTheChunksOfAnAiffByteForByte) {
    const ChunkRecords all{{"NAME", "Bells"}, {"AUTH", "Tower"}, {"(c) ", "us"}, {"ANNO", "odd"},
        {"ANNO", "again"}, {"COMT", Big(1, 2) + Big(7, 4) + Big(0, 2) + Big(2, 2) + "hi"},
        {"MARK", Big(0, 2)}, {"MIDI", "\xF0\xF7"}, {"ID3 ", Id3(Id3Text("TIT2", "Bells"))}};
    auto with = all;
    with.emplace_back("APPL", "abcd");
    WriteBytes(_folder / "in.aiff", AiffWith(with));
    Render("in.aiff", "a.aiff");
    EXPECT_EQ(Chunks("a.aiff"), all);
    EXPECT_TRUE(Said("dropped because kavhost doesn't know what they mean: APPL\n")) << _said;
    std::filesystem::remove(_folder / "in.aiff");
    WriteBytes(_folder / "in.aiff", AiffWith({{"NAME", "Bells"}, {"AUTH", "Tower"}, {"(c) ", "us"}, all[5]}));
    Render("in.aiff", "a.flac");
    EXPECT_EQ(FlacComments(Bytes("a.flac")),
        (Comments{{"TITLE", "Bells"}, {"ARTIST", "Tower"}, {"COPYRIGHT", "us"}, {"COMMENT", "hi"}}));
}

TEST_F(TranslatedTags, OfAnMp3ComeWithItsPicture) {
    WriteMp3("in.mp3", Id3(Id3Text("TIT2", "Bells") + Id3Text("TPE2", "All of us") + Cover +
                           Id3UserText("MOOD", "calm") + Id3Frame("PRIV", std::string("a\0b", 3))));
    for (const std::string name : {"a.flac", "b.ogg"}) {
        Render("in.mp3", name);
        EXPECT_TRUE(Said("can't store them: PRIV")) << _said;
        if (name == "b.ogg") Render("b.ogg", "a.flac"); // the picture in a comment
        const auto flac = Bytes("a.flac");
        const auto comments = FlacComments(flac);
        EXPECT_TRUE(Has(comments, "TITLE", "Bells") && Has(comments, "ALBUMARTIST", "All of us") &&
                    Has(comments, "MOOD", "calm"));
        const auto blocks = FlacBlocks(flac, 6);
        ASSERT_EQ(blocks.size(), 1u) << name;
        const auto picture = ParsePicture(blocks[0]);
        EXPECT_EQ(picture.type, 3u);
        EXPECT_EQ(picture.mime, "image/jpeg");
        EXPECT_EQ(picture.description, "the front");
        EXPECT_EQ(picture.bytes, Jpeg);
    }
    Render("in.mp3", "a.aiff");
    const auto id3 = Contents(Chunks("a.aiff"), "ID3 ").at(0);
    for (const auto& part : {Jpeg, std::string("PRIV"), std::string("calm"), std::string("All of us")})
        EXPECT_NE(id3.find(part), std::string::npos) << part.substr(0, 20);
    Render("in.mp3", "a.wav");
    EXPECT_EQ(Contents(Chunks("a.wav"), "id3 ").at(0), id3);
    EXPECT_EQ(Contents(Chunks("a.wav"), "LIST").at(0), "INFO" + InfoText("INAM", "Bells"));
}

TEST_F(TranslatedTags, OfAnMp3MayBeOldOnes) {
    auto old = "TAG" + std::string("An old title");
    old.resize(128);
    WriteMp3("in.mp3", "", old);
    Render("in.mp3", "a.flac");
    EXPECT_TRUE(Has(FlacComments(Bytes("a.flac")), "TITLE", "An old title"));
}

TEST_F(TranslatedTags, LeaveOutWhatDescribesTheLoudnessAsItWas) {
    const auto itunes = Id3Frame("COMM", std::string("\0engiTunNORM\0", 13) + " 00000A2B 00000C3D");
    const auto stale = Id3UserText("replaygain_track_gain", "-7.5 dB") +
                       Id3UserText("REPLAYGAIN_ALBUM_PEAK", "1.1") + itunes +
                       Id3UserText("R128_TRACK_GAIN", "5") + Id3Frame("RVA2", std::string("x\0\1\0\0\0", 6));
    WriteMp3("in.mp3", Id3(Id3Text("TIT2", "Bells") + stale));
    const auto isClean = [](std::string bytes) {
        std::erase(bytes, '\0');
        std::ranges::transform(bytes, bytes.begin(),
            [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
        for (const char* name : {"replaygain", "itunnorm", "r128_", "rva2"})
            if (bytes.find(name) != std::string::npos) return false;
        return bytes.find("bells") != std::string::npos;
    };
    for (const std::string name : {"a.flac", "a.ogg", "a.aiff", "a.wav"}) {
        Render("in.mp3", name, {"--strict"});
        EXPECT_TRUE(isClean(Bytes(name))) << name;
        EXPECT_TRUE(Said("dropped because they describe the old loudness or coding: ")) << _said;
        for (const char* key :
            {"REPLAYGAIN_TRACK_GAIN", "REPLAYGAIN_ALBUM_PEAK", "ITUNNORM", "R128_TRACK_GAIN", "RVA2"})
            EXPECT_TRUE(Said(key)) << key << ": " << _said;
    }
    // Chunks of the same kind of file, twice.
    const auto id3 = Id3(Id3Text("TIT2", "Bells") + stale);
    WriteBytes(
        _folder / "in.wav", WavWith({}, {{"id3 ", id3}, {"iXML", "x"}, {"ID3 ", id3}, {"id3 ", Id3(stale)}}));
    Render("in.wav", "b.wav");
    EXPECT_TRUE(isClean(Bytes("b.wav")));
    EXPECT_EQ(Chunks("b.wav").size(), 3u) << "of the last one nothing is left";
    WriteBytes(_folder / "in.aiff", AiffWith({{"ID3 ", id3}}));
    Render("in.aiff", "b.aiff");
    EXPECT_TRUE(isClean(Bytes("b.aiff")));
    EXPECT_EQ(Chunks("b.aiff").size(), 1u);
}

TEST_F(TranslatedTags, OfFlacAndOggKeepEveryValue) {
    WriteMp3("in.mp3", Id3(Id3Text("TIT2", "Bells")));
    Render("in.mp3", "a.flac");
    auto file = Bytes("a.flac");
    // More comments, in a block of their own making.
    const std::vector<std::string> texts{"ARTIST=One", "ARTIST=Two", "TITLE=\xC3\x9C", "MY OWN=x",
        "REPLAYGAIN_TRACK_GAIN=1", "R128_ALBUM_GAIN=2"};
    auto block = Little(1, 4) + "k" + Little(texts.size(), 4);
    for (const auto& text : texts) block += Little(text.size(), 4) + text;
    const auto insert = "\x04" + Big(block.size(), 3) + block + "\x02" + Big(8, 3) + "abcdefgh" + "\x05" +
                        Big(396, 3) + std::string(396, '\0');
    const auto info = file.substr(0, 42); // the mark and the stream's description
    auto place = info.size();
    for (;;) { // to the audio
        const auto head = static_cast<unsigned char>(file[place]);
        const auto size = Next(file, place, true) & 0xFFFFFF;
        place += size;
        if (head > 0x7F) break;
    }
    WriteBytes(
        _folder / "b.flac", info + insert + "\x81" + Big(16, 3) + std::string(16, '\0') + file.substr(place));
    const Comments expected{{"ARTIST", "One"}, {"ARTIST", "Two"}, {"TITLE", "\xC3\x9C"}, {"MY OWN", "x"}};
    Render("b.flac", "c.flac");
    EXPECT_EQ(FlacComments(Bytes("c.flac")), expected);
    EXPECT_TRUE(Said("REPLAYGAIN_TRACK_GAIN") && Said("R128_ALBUM_GAIN")) << _said;
    EXPECT_TRUE(Said("can't store them: APPLICATION abcd, CUESHEET")) << _said;
    Render("b.flac", "c.ogg");
    auto comments = OggComments(Bytes("c.ogg"));
    comments.erase("ENCODER"); // the coder's own
    EXPECT_EQ(comments, expected);
    Render("b.flac", "c.wav"); // all values in the one place, what fits in the other
    EXPECT_EQ(Contents(Chunks("c.wav"), "LIST").at(0),
        "INFO" + InfoText("INAM", "\xC3\x9C") + InfoText("IART", "One; Two"));
    Render("c.wav", "d.flac");
    EXPECT_EQ(FlacComments(Bytes("d.flac")), expected);
}

TEST_F(TranslatedTags, LeaveTheAudioOfTheirFileAlone) {
    WriteBytes(_folder / "in.wav", WavWith({}));
    WriteBytes(_folder / "tagged.wav", WavWith(Plain, {{"id3 ", Id3(Cover)}}));
    for (const std::string extension : {"flac", "ogg", "aiff"}) {
        Render("in.wav", "a." + extension);
        Render("tagged.wav", "b." + extension);
        const auto samples = [&](const std::string& name) {
            CAudioReader reader(_folder / name);
            std::vector<float> read(20'000);
            read.resize(2 * reader.Read(read));
            return read;
        };
        EXPECT_EQ(samples("a." + extension), samples("b." + extension)) << extension;
        EXPECT_GT(Bytes("b." + extension).size(), Bytes("a." + extension).size() + 3000);
    }
}

TEST_F(TranslatedTags, ThatTheLibraryCannotReadAreLeftOutAndNamed) {
    WriteMp3("in.mp3", Id3(Id3Text("TIT2", "Bells")));
    const CFailingLibrary failing;
    const CTags tags(_folder / "in.mp3", &failing);
    SRenderReport report;
    report.format = {48000, 2, ESampleFormat::Int16};
    WriteBytes(_folder / "a.wav", WavWith({}));
    tags.AddTo(_folder / "a.wav", EContainer::Wav, "x", report);
    ASSERT_EQ(report.notes.size(), 1u);
    EXPECT_EQ(report.notes[0].text, "left out: tags: they cannot be read");
    EXPECT_TRUE(report.notes[0].isGrave);
    EXPECT_EQ(Bytes("a.wav"), WavWith({}));

    // Chunks need no library; their outdated parts do.
    report.notes.clear();
    const auto id3 = Id3(Id3Text("TIT2", "Bells"));
    WriteBytes(_folder / "in.wav",
        WavWith({{"id3 ", id3}, {"iXML", "x"}, {"id3 ", Id3(Id3UserText("ReplayGain_Track_Gain", "1"))}}));
    CTags(_folder / "in.wav", &failing).AddTo(_folder / "a.wav", EContainer::Wav, "x", report);
    EXPECT_EQ(Chunks("a.wav"), (ChunkRecords{{"id3 ", id3}, {"iXML", "x"}}));
    ASSERT_EQ(report.notes.size(), 1u);
    EXPECT_EQ(report.notes[0].text, "left out: id3: they cannot be read");
}

TEST_F(TranslatedTags, ThatCannotBeWrittenAreLeftOutAndNamed) {
    WriteBytes(_folder / "in.wav", WavWith(Plain));
    const CFailingLibrary failing;
    for (const auto container : {EContainer::Flac, EContainer::Aiff}) {
        SRenderReport report;
        report.format = {48000, 2, ESampleFormat::Int16};
        WriteBytes(_folder / "a", AiffWith({}));
        CTags(_folder / "in.wav", &failing).AddTo(_folder / "a", container, "x", report);
        EXPECT_EQ(Bytes("a"), AiffWith({}));
        ASSERT_EQ(report.notes.size(), 1u);
        EXPECT_TRUE(report.notes[0].text.starts_with("left out: tags: ")) << report.notes[0].text;
        EXPECT_TRUE(report.notes[0].isGrave);
    }
}

TEST_F(TranslatedTags, SurviveEveryDamage) {
    WriteMp3("in.mp3", Id3(Id3Text("TIT2", "Bells") + Cover + Id3UserText("MOOD", "calm")));
    Render("in.mp3", "in.flac");
    Render("in.mp3", "in.ogg");
    SRenderReport report;
    report.format = {48000, 2, ESampleFormat::Int16};
    for (const std::string name : {"in.mp3", "in.flac", "in.ogg"}) {
        const auto whole = Bytes(name);
        for (std::size_t i = 0; i < 40; ++i) {
            auto damaged = whole.substr(0, i % 3 == 0 ? i * 41 : whole.size());
            for (std::size_t k = 0; k < 4 && !damaged.empty(); ++k)
                damaged[(i * 7 + k * 3) % std::min<std::size_t>(damaged.size(), 500)] =
                    static_cast<char>(255 - i * k);
            WriteBytes(_folder / "damaged", damaged);
            WriteBytes(_folder / "a.wav", WavWith({}));
            CTags(_folder / "damaged").AddTo(_folder / "a.wav", EContainer::Wav, "x", report);
            ChunksOf(Bytes("a.wav"));
        }
    }
}

TEST_F(TranslatedTags, ThatAreLargerThanAnyTagAreLeftOutAndNamed) {
    // A file of 1 GiB, nearly all of it one FLAC block after the other, each as large as it may be.
    WriteBytes(_folder / "in.wav", WavWith({}));
    Render("in.wav", "a.flac");
    const auto info = Bytes("a.flac").substr(0, 42);
    {
        std::ofstream file(_folder / "huge.flac", std::ios::binary);
        file << info;
        for (std::streamoff i = 0; i < 64; ++i) {
            file.seekp(42 + i * (4 + 0xFFFFFF));
            file << (i == 63 ? '\x86' : '\x06') << "\xFF\xFF\xFF";
        }
        file.seekp((std::streamoff{1} << 30) + 1000);
        file << 'x';
    }
    WriteBytes(_folder / "out.wav", WavWith({}));
    SRenderReport report;
    report.format = {48000, 2, ESampleFormat::Int16};
    CTags(_folder / "huge.flac").AddTo(_folder / "out.wav", EContainer::Wav, "x", report);
    ASSERT_EQ(report.notes.size(), 1u);
    EXPECT_EQ(report.notes[0].text, "left out: tags: too large");
}

TEST_F(TranslatedTags, DoNotMakeAFileTooLong) {
    WriteBytes(_folder / "a.wav", WavWith({}));
    std::filesystem::resize_file(_folder / "a.wav", 0xFFFFFFF0u);
    EXPECT_FALSE(AppendChunks(_folder / "a.wav", std::vector<SChunk>{{"iXML", "abcdefghijklmno"}}));
    EXPECT_EQ(std::filesystem::file_size(_folder / "a.wav"), 0xFFFFFFF0u);
    EXPECT_TRUE(AppendChunks(_folder / "a.wav", std::vector<SChunk>{{"iXML", "abcdefghijklmn"}}));
}

TEST_F(TranslatedTags, OfAWideFileAreCountedInSixtyFourBits) {
    CAudioWriter writer(
        _folder / "a.wav", EContainer::Wav, {48000, 2, ESampleFormat::Int16}, false, std::uint64_t{1} << 30);
    auto audio = Noise(2, 1000, 0.5f);
    writer.Write(audio.samples);
    WriteBytes(_folder / "in.wav", WavWith({{"bext", Bext(1, "x")}, {"iXML", "abc"}}));
    SRenderReport report;
    CTags(_folder / "in.wav").AddTo(writer.Complete(), EContainer::Wav, "x", report);
    writer.Commit();
    ASSERT_EQ(Bytes("a.wav").substr(0, 4), "RF64");
    EXPECT_EQ(Chunks("a.wav"), Chunks("in.wav"));
    CAudioReader reader(_folder / "a.wav");
    std::vector<float> samples(4000);
    EXPECT_EQ(reader.Read(samples), 1000u);
    Render("a.wav", "b.wav");
    EXPECT_EQ(Chunks("b.wav"), Chunks("in.wav"));
}

TEST_F(TranslatedTags, GainInTheHeaderOfAnOpusFileIsApplied) {
    auto audio = Noise(2, 24'000, 0.1f);
    SF_INFO info{};
    info.samplerate = 48000;
    info.channels = 2;
    info.format = SF_FORMAT_OGG | SF_FORMAT_OPUS;
    SNDFILE* const opus = sf_open((_folder / "a.opus").string().c_str(), SFM_WRITE, &info);
    ASSERT_NE(opus, nullptr);
    sf_writef_float(opus, audio.samples.data(), 24'000);
    sf_close(opus);
    auto file = Bytes("a.opus");
    file.replace(file.find("OpusHead") + 16, 2, Little(6 * 256, 2)); // +6 dB
    // The page's checksum, after the format's description: polynomial 0x04c11db7, with its own field at 0.
    const auto segments = static_cast<std::size_t>(static_cast<unsigned char>(file[26]));
    std::size_t size = 27 + segments;
    for (std::size_t i = 0; i < segments; ++i) size += static_cast<unsigned char>(file[27 + i]);
    file.replace(22, 4, Little(0, 4));
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < size; ++i) {
        sum ^= static_cast<std::uint32_t>(static_cast<unsigned char>(file[i])) << 24;
        for (int bit = 0; bit < 8; ++bit) sum = (sum & 0x80000000u) != 0 ? sum << 1 ^ 0x04C11DB7u : sum << 1;
    }
    file.replace(22, 4, Little(sum, 4));
    WriteBytes(_folder / "b.opus", file);
    const auto power = [&](const std::string& name) {
        Render(name, name + ".wav", {"--format", "float"});
        double sumOfSquares = 0;
        for (const float sample : ReadWav(_folder / (name + ".wav")).samples)
            sumOfSquares += static_cast<double>(sample * sample);
        return 10 * std::log10(sumOfSquares);
    };
    EXPECT_NEAR(power("b.opus") - power("a.opus"), 6, 0.01);
}
