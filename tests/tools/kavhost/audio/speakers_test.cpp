#include "tests/tools/kavhost/child.h"
#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/audio/speaker_layout.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <numbers>
#include <sndfile.h>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

constexpr double Rate = 48000;
constexpr std::size_t Frames = 9'600;

/// The layouts that Vorbis and Opus define, by count of channels from one on.
const std::vector<std::string> OggLayouts{"mono", "stereo", "3.0", "quad", "5.0", "5.1", "6.1", "7.1"};

/// The frequency of a channel's own tone; that of an LFE is in the range that coders keep of it.
double ToneOf(std::size_t channel, std::uint32_t mask) {
    std::size_t place = 0;
    for (std::uint32_t bit = 1; bit != 0; bit <<= 1) {
        if ((mask & bit) == 0) continue;
        if (place++ == channel && bit == Speakers::Lfe) return 70;
    }
    return 300 + 250 * static_cast<double>(channel);
}

/// A tone of its own in each channel.
SAudio Tones(const std::string& layout) {
    const auto mask = *MaskOf(layout);
    const auto channels = static_cast<std::size_t>(std::popcount(mask));
    SAudio audio{{static_cast<int>(Rate), static_cast<int>(channels), ESampleFormat::Int16}, {}};
    audio.format.mask = mask;
    for (std::size_t i = 0; i < Frames; ++i) {
        for (std::size_t c = 0; c < channels; ++c) {
            const double phase = 2 * std::numbers::pi * ToneOf(c, mask) * static_cast<double>(i) / Rate;
            audio.samples.push_back(static_cast<float>(0.2 * std::sin(phase)));
        }
    }
    return audio;
}

/// How much of a frequency a channel has in its middle.
double Share(const SAudio& audio, std::size_t channel, double frequency) {
    double cosine = 0, sine = 0;
    const auto channels = static_cast<std::size_t>(audio.format.channels);
    for (std::size_t i = audio.Frames() / 4; i < audio.Frames() * 3 / 4; ++i) {
        const double phase = 2 * std::numbers::pi * frequency * static_cast<double>(i) / Rate;
        cosine += static_cast<double>(audio.samples[i * channels + channel]) * std::cos(phase);
        sine += static_cast<double>(audio.samples[i * channels + channel]) * std::sin(phase);
    }
    return std::hypot(cosine, sine);
}

/// For each channel the number of the channel whose tone it has.
std::vector<std::size_t> OriginsIn(const SAudio& audio, std::uint32_t mask) {
    std::vector<std::size_t> origins;
    for (std::size_t c = 0; c < static_cast<std::size_t>(audio.format.channels); ++c) {
        std::size_t loudest = 0;
        for (std::size_t other = 0; other < static_cast<std::size_t>(audio.format.channels); ++other) {
            if (Share(audio, c, ToneOf(other, mask)) > Share(audio, c, ToneOf(loudest, mask)))
                loudest = other;
        }
        origins.push_back(loudest);
    }
    return origins;
}

std::vector<std::size_t> InOrder(int channels) {
    std::vector<std::size_t> order;
    for (int c = 0; c < channels; ++c) order.push_back(static_cast<std::size_t>(c));
    return order;
}

void RunProgram(const std::string& name, const std::vector<std::string>& arguments) {
    CChild child(arguments, {.program = "/usr/bin/" + name});
    const auto run = child.Wait();
    ASSERT_EQ(run.code, 0) << name << ": " << run.errors;
}

class Speaker : public testing::Test {
protected:
    std::string At(const std::string& name) const { return Utf8(_folder / name); }

    SRun Run(const std::string& input, const std::string& output,
        const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"render", "-p", EffectFile("keeper"), At(input), "-o", At(output),
            "--no-dither", "--no-align", "--no-preroll"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunHost(arguments);
    }

    void MakeWav(const std::string& name, int channels, std::optional<std::uint32_t> mask) const {
        auto audio = Noise(channels, 100, 0.5f, ESampleFormat::Int16);
        audio.format.mask = mask;
        WriteWav(At(name), audio);
    }

    SAudioFormat FormatOf(const std::string& name) const { return CAudioReader(At(name)).Format(); }

    /// The speakers that a reader of another project sees.
    std::string Probe(const std::string& name) const {
        CChild child({"-v", "error", "-show_entries", "stream=channel_layout", "-of", "csv=p=0", At(name)},
            {.program = "/usr/bin/ffprobe"});
        auto text = child.Wait().out;
        text.erase(text.find_last_not_of("\n,") + 1);
        return text;
    }

    std::filesystem::path _folder = NewFolder();
};

/// In the 64-bit form, which kavhost otherwise chooses beyond 4 GiB.
void WriteWide(const std::string& file, const SAudio& audio) {
    CAudioWriter writer(file, EContainer::Wav, audio.format, false, std::uint64_t{1} << 31);
    auto samples = audio.samples;
    writer.Write(samples);
    writer.Commit();
}

} // namespace

TEST_F(Speaker, OfOggIsWhereOthersHearIt) {
    for (const auto& layout : OggLayouts) {
        const auto audio = Tones(layout);
        WriteWav(At("in.wav"), audio);
        ASSERT_EQ(Run("in.wav", "out.ogg").code, 0);
        RunProgram(
            "ffmpeg", {"-v", "error", "-y", "-i", At("out.ogg"), "-c:a", "pcm_s16le", At("heard.wav")});
        const auto heard = ReadWav(At("heard.wav"));
        ASSERT_EQ(heard.format.channels, audio.format.channels);
        EXPECT_EQ(OriginsIn(heard, *audio.format.mask), InOrder(audio.format.channels)) << layout;
        EXPECT_EQ(Probe("out.ogg"), layout);
    }
}

TEST_F(Speaker, OfAnOggOfOthersIsInWavOrder) {
    for (const auto& layout : OggLayouts) {
        const auto audio = Tones(layout);
        WriteWav(At("in.wav"), audio);
        RunProgram("ffmpeg",
            {"-v", "error", "-y", "-i", At("in.wav"), "-c:a", "libvorbis", "-q:a", "8", At("in.ogg")});
        ASSERT_EQ(Run("in.ogg", "out.wav").code, 0);
        const auto out = ReadWav(At("out.wav"));
        EXPECT_EQ(OriginsIn(out, *audio.format.mask), InOrder(audio.format.channels)) << layout;
        const bool isPlain = audio.format.channels <= 2; // needs no mask
        EXPECT_EQ(out.format.mask, isPlain ? std::nullopt : audio.format.mask) << layout;
    }
}

TEST_F(Speaker, OfOpusIsInWavOrder) {
    for (const auto& layout : OggLayouts) {
        const auto audio = Tones(layout);
        WriteWav(At("in.wav"), audio);
        RunProgram("opusenc", {"--quiet", "--bitrate", std::to_string(64 * audio.format.channels),
                                  At("in.wav"), At("in.opus")});
        ASSERT_EQ(Run("in.opus", "out.wav").code, 0);
        const auto out = ReadWav(At("out.wav"));
        EXPECT_EQ(OriginsIn(out, *audio.format.mask), InOrder(audio.format.channels)) << layout;
        const bool isPlain = audio.format.channels <= 2; // needs no mask
        EXPECT_EQ(out.format.mask, isPlain ? std::nullopt : audio.format.mask) << layout;
    }
}

TEST_F(Speaker, OfAnOpusFileWithoutMeaningStaysInItsPlace) {
    const auto audio = Tones("5.0");
    WriteWav(At("in.wav"), audio);
    RunProgram("ffmpeg", {"-v", "error", "-y", "-i", At("in.wav"), "-c:a", "libopus", "-mapping_family",
                             "255", At("in.opus")});
    ASSERT_EQ(Run("in.opus", "out.wav").code, 0);
    const auto out = ReadWav(At("out.wav"));
    EXPECT_EQ(OriginsIn(out, *audio.format.mask), InOrder(5));
    EXPECT_FALSE(out.format.mask);
}

TEST_F(Speaker, MaskComesThroughEveryContainerThatHasOne) {
    struct SCase {
        int channels;
        std::vector<std::uint32_t> masks;
    };
    // Also 0, fewer bits than channels, more, and bits without a speaker.
    const SCase cases[] = {{1, {0x4, 0x1, 0}}, {2, {0x3, 0x600, 0}}, {3, {0x7, 0xB, 0x103}},
        {4, {0x33, 0x107, 0x603}}, {5, {0x37, 0x607}},
        {6, {0x3F, 0x60F, 0x707, 0, 0x3, 0x63F, 0x80000000, 0xFFFFFFFF}}, {7, {0x70F, 0x13F}},
        {8, {0x63F, 0xFF, 0x503F}}, {12, {0x2D63F, 0}}};
    for (const auto& [channels, masks] : cases) {
        for (const auto mask : masks) {
            MakeWav("in.wav", channels, mask);
            for (const std::string middle : {"a.wav", "a.flac", "a.aiff"}) {
                if (middle == "a.flac" && channels > 8) continue;
                ASSERT_EQ(Run("in.wav", middle).code, 0);
                EXPECT_EQ(FormatOf(middle).mask, mask) << middle;
                ASSERT_EQ(Run(middle, "out.wav").code, 0);
                EXPECT_EQ(ReadWav(At("out.wav")).format.mask, mask) << middle;
                EXPECT_EQ(ReadWav(At("out.wav")).samples, ReadWav(At("in.wav")).samples) << middle;
            }
        }
    }
}

TEST_F(Speaker, MaskComesThroughTheWideFormOfWav) {
    for (const auto& mask :
        std::vector<std::optional<std::uint32_t>>{0x60F, 0x3, 0, 0xFFFFFFFF, std::nullopt}) {
        for (const auto samples : {ESampleFormat::Int16, ESampleFormat::Int24, ESampleFormat::Float32}) {
            auto audio = Noise(6, 1000, 0.5f, samples);
            audio.format.mask = mask;
            WriteWide(At("in.wav"), audio);
            EXPECT_EQ(BytesOf(At("in.wav")).substr(0, 4), "RF64");
            EXPECT_EQ(FormatOf("in.wav").mask, mask);
            ASSERT_EQ(Run("in.wav", "out.wav").code, 0);
            const auto out = ReadWav(At("out.wav"));
            EXPECT_EQ(out.format.mask, mask);
            EXPECT_EQ(out.format.samples, samples);
            EXPECT_EQ(out.Frames(), 1000u);
            RunProgram(
                "ffmpeg", {"-v", "error", "-y", "-i", At("in.wav"), "-c:a", "pcm_f32le", At("heard.wav")});
            const auto heard = ReadWav(At("heard.wav"));
            ASSERT_EQ(heard.samples.size(), out.samples.size());
            for (std::size_t i = 0; i < heard.samples.size(); ++i)
                ASSERT_NEAR(heard.samples[i], out.samples[i], 1e-6);
        }
    }
}

TEST_F(Speaker, MaskIsSeenByOthers) {
    for (const std::string layout : {"2.1", "4.0", "quad", "5.0(side)", "5.1(side)", "7.1(wide)"}) {
        const auto mask = *MaskOf(layout);
        MakeWav("in.wav", std::popcount(mask), mask);
        for (const std::string out : {"out.wav", "out.flac", "out.aiff"}) {
            ASSERT_EQ(Run("in.wav", out).code, 0);
            EXPECT_EQ(Probe(out), layout) << out;
        }
    }
}

TEST_F(Speaker, MaskThatIsMissingStaysSo) {
    for (const int channels : {1, 2, 3, 6, 8}) {
        for (const auto samples : {ESampleFormat::Int16, ESampleFormat::Int24, ESampleFormat::Float32}) {
            WriteWav(At("in.wav"), Noise(channels, 100, 0.5f, samples));
            ASSERT_EQ(Run("in.wav", "out.wav").code, 0);
            EXPECT_FALSE(ReadWav(At("out.wav")).format.mask) << channels;
            EXPECT_NE(BytesOf(At("out.wav")).substr(20, 2), "\xFE\xFF") << channels;
            ASSERT_EQ(Run("in.wav", "out.aiff").code, 0);
            EXPECT_EQ(BytesOf(At("out.aiff")).find("CHAN"), std::string::npos);
            ASSERT_EQ(Run("out.aiff", "back.wav").code, 0);
            EXPECT_FALSE(ReadWav(At("back.wav")).format.mask) << channels;
            ASSERT_EQ(Run("in.wav", "out.flac").code, 0);
            EXPECT_EQ(BytesOf(At("out.flac")).find("CHANNEL_MASK"), std::string::npos);
        }
    }
}

TEST_F(Speaker, OfAFlacWithoutAMaskIsAsItsFormatDefines) {
    const std::pair<int, std::uint32_t> defined[] = {
        {3, 0x7}, {4, 0x33}, {5, 0x607}, {6, 0x60F}, {7, 0x70F}, {8, 0x63F}};
    for (const auto& [channels, mask] : defined) {
        MakeWav("in.wav", channels, std::nullopt);
        ASSERT_EQ(Run("in.wav", "a.flac").code, 0);
        ASSERT_EQ(Run("a.flac", "b.flac").code, 0);
        EXPECT_EQ(BytesOf(At("b.flac")).find("CHANNEL_MASK"), std::string::npos);
        ASSERT_EQ(Run("b.flac", "out.wav").code, 0);
        EXPECT_EQ(ReadWav(At("out.wav")).format.mask, mask);
        EXPECT_EQ(Probe("b.flac"), LayoutName(mask));
    }
}

TEST_F(Speaker, MaskOfFlacIsTheCommentThatOthersWrite) {
    MakeWav("in.wav", 6, 0x60F);
    ASSERT_EQ(Run("in.wav", "out.flac").code, 0);
    const auto bytes = BytesOf(At("out.flac"));
    EXPECT_NE(bytes.find("WAVEFORMATEXTENSIBLE_CHANNEL_MASK=0x060F"), std::string::npos);
    EXPECT_EQ(bytes.find("title"), std::string::npos);
    RunProgram("flac", {"-s", "-t", At("out.flac")});
    RunProgram("flac", {"-s", "-f", "-d", At("out.flac"), "-o", At("heard.wav")});
    EXPECT_EQ(ReadWav(At("heard.wav")).format.mask, 0x60Fu);
    EXPECT_EQ(ReadWav(At("heard.wav")).samples, ReadWav(At("in.wav")).samples);
}

TEST_F(Speaker, MaskComesThroughAFileWithoutAFrame) {
    auto audio = Noise(6, 0, 0.5f, ESampleFormat::Int16);
    audio.format.mask = 0x60F;
    WriteWav(At("in.wav"), audio);
    for (const std::string middle : {"a.wav", "a.flac", "a.aiff"}) {
        ASSERT_EQ(Run("in.wav", middle).code, 0) << middle;
        EXPECT_EQ(FormatOf(middle).mask, 0x60Fu) << middle;
        ASSERT_EQ(Run(middle, "out.wav").code, 0) << middle;
        EXPECT_EQ(FormatOf("out.wav").mask, 0x60Fu) << middle;
    }
}

TEST_F(Speaker, OfAnAiffOfOthersIsInWavOrder) {
    const auto write = [this](const std::vector<unsigned char>& layout, int channels) {
        SF_INFO info{.frames = 0,
            .samplerate = 48000,
            .channels = channels,
            .format = SF_FORMAT_AIFF | SF_FORMAT_PCM_16,
            .sections = 0,
            .seekable = 0};
        SNDFILE* const file = sf_open(At("in.aiff").c_str(), SFM_WRITE, &info);
        ASSERT_NE(file, nullptr);
        SF_CHUNK_INFO chunk{};
        std::ranges::copy(std::string_view("CHAN"), chunk.id);
        chunk.id_size = 4;
        auto content = layout;
        chunk.data = content.data();
        chunk.datalen = static_cast<unsigned>(content.size());
        EXPECT_EQ(sf_set_chunk(file, &chunk), 0);
        std::vector<short> frame;
        for (int c = 0; c < channels; ++c) frame.push_back(static_cast<short>(1000 * (c + 1)));
        sf_writef_short(file, frame.data(), 1);
        sf_close(file);
    };
    write({0, 124, 0, 6, 0, 0, 0, 0, 0, 0, 0, 0}, 6); // C L R Ls Rs LFE
    ASSERT_EQ(Run("in.aiff", "out.wav").code, 0);
    const auto out = ReadWav(At("out.wav"));
    EXPECT_EQ(out.format.mask, 0x60Fu);
    ASSERT_EQ(out.samples.size(), 6u);
    const float expected[] = {2000, 3000, 1000, 6000, 4000, 5000};
    for (std::size_t c = 0; c < 6; ++c) EXPECT_EQ(out.samples[c] * 32768, expected[c]) << c;
}

TEST_F(Speaker, ThatTheContainerCannotHoldIsNoted) {
    struct SCase {
        int channels;
        std::optional<std::uint32_t> mask;
        std::string output;
        std::string note; ///< empty: none
        bool isGrave;
    };
    const SCase cases[] = {
        {6, 0x60F, "out.ogg", "OGG cannot hold the speakers 5.1(side); its readers take the channels for 5.1",
            false},
        {4, 0x107, "out.ogg", "OGG cannot hold the speakers 4.0; its readers take the channels for quad",
            true},
        {8, 0xFF, "out.ogg", "OGG cannot hold the speakers 7.1(wide); its readers take the channels for 7.1",
            true},
        {6, 0, "out.ogg", "OGG cannot leave the speakers unspecified; its readers take the channels for 5.1",
            false},
        {10, 0x2D03F, "out.ogg",
            "OGG cannot hold the speakers 5.1.4; it names none for more than eight channels", true},
        {1, 0x1, "out.ogg", "OGG cannot hold the speakers FL; its readers take the channels for mono", true},
        {6, std::nullopt, "out.ogg",
            "the input names no speakers; readers of OGG take its 6 channels for 5.1", false},
        {6, std::nullopt, "out.flac",
            "the input names no speakers; readers of FLAC take its 6 channels for 5.1(side)", false},
        {6, 0x3F, "out.ogg", "", false},
        {1, 0x4, "out.ogg", "", false},
        {2, 0x3, "out.ogg", "", false},
        {2, std::nullopt, "out.ogg", "", false},
        {10, std::nullopt, "out.ogg", "", false},
        {6, 0x60F, "out.flac", "", false},
        {6, std::nullopt, "out.aiff", "", false},
        {6, 0x63F, "out.aiff", "", false},
    };
    for (const auto& row : cases) {
        MakeWav("in.wav", row.channels, row.mask);
        std::filesystem::remove(At(row.output));
        const auto run = Run("in.wav", row.output, {"--json"});
        ASSERT_EQ(run.code, 0) << run.errors;
        const auto notes = nlohmann::json::parse(run.out)[0]["notes"];
        EXPECT_EQ(notes, row.note.empty() ? nlohmann::json::array() : nlohmann::json{row.note});
        std::filesystem::remove(At(row.output));
        const auto strict = Run("in.wav", row.output, {"--strict"});
        EXPECT_EQ(strict.code, row.isGrave ? 1 : 0) << row.note;
        EXPECT_EQ(std::filesystem::exists(At(row.output)), !row.isGrave) << row.note;
        EXPECT_EQ(strict.errors.find("in.wav: " + row.note) != std::string::npos, row.isGrave)
            << strict.errors;
    }
}
