#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/audio/wav_reader.h"
#include "tools/kavhost/audio/wav_writer.h"
#include "tools/kavhost/base/errors.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

std::string Little(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
    return text;
}

std::string Chunk(const std::string& name, const std::string& content) {
    return name + Little(content.size(), 4) + content + std::string(content.size() & 1, '\0');
}

struct SHeader {
    std::uint64_t tag = 1;
    std::uint64_t channels = 1;
    std::uint64_t rate = 48000;
    std::uint64_t frameBytes = 2;
    std::uint64_t bits = 16;
};

std::string Format(const SHeader& header) {
    return Little(header.tag, 2) + Little(header.channels, 2) + Little(header.rate, 4) +
           Little(header.rate * header.frameBytes, 4) + Little(header.frameBytes, 2) + Little(header.bits, 2);
}

std::string Riff(const std::string& chunks) {
    return "RIFF" + Little(4 + chunks.size(), 4) + "WAVE" + chunks;
}

struct SParsed {
    SAudioFormat format;
    std::vector<float> samples;
};

SParsed Parse(const std::string& bytes) {
    std::istringstream stream(bytes);
    CWavReader reader(stream);
    SParsed parsed{reader.Format(), {}};
    parsed.samples.resize(reader.Frames() * static_cast<std::size_t>(reader.Format().channels));
    EXPECT_EQ(reader.Read(parsed.samples), reader.Frames());
    float more[64];
    EXPECT_EQ(reader.Read(more), 0u);
    return parsed;
}

std::string Error(const std::string& bytes) {
    try {
        Parse(bytes);
    } catch (const CFailure& failure) {
        return failure.what();
    }
    return "no error";
}

const std::string TwoSamples = std::string("\x00\x40\x00\xC0", 4); // a half and minus a half in 16 bits

/// With the extensible form of header.
SAudio NoiseWithMask(int channels, std::size_t frames, ESampleFormat samples, std::uint32_t mask = 0x7) {
    auto audio = Noise(channels, frames, 0.5f, samples);
    audio.format.mask = mask;
    return audio;
}

std::string Written(const SAudio& audio) {
    std::ostringstream stream;
    CWavWriter writer(stream, audio.format, false);
    auto samples = audio.samples;
    writer.Write(samples);
    writer.Finish();
    return stream.str();
}

} // namespace

TEST(WavReader, ReadsAllPlainFormats) {
    const auto samples = [](std::uint64_t tag, std::uint64_t bits, const std::string& data) {
        return Parse(Riff(Chunk("fmt ", Format({tag, 1, 48000, bits / 8, bits})) + Chunk("data", data)))
            .samples;
    };
    EXPECT_EQ(samples(1, 8, std::string("\x00\x80\xC0", 3)), (std::vector{-1.0f, 0.0f, 0.5f}));
    EXPECT_EQ(samples(1, 16, std::string("\x00\x80\x00\x40", 4)), (std::vector{-1.0f, 0.5f}));
    EXPECT_EQ(samples(1, 24, std::string("\x00\x00\x80\x00\x00\x40", 6)), (std::vector{-1.0f, 0.5f}));
    EXPECT_EQ(samples(1, 32, std::string("\x00\x00\x00\x80\x00\x00\x00\x40", 8)), (std::vector{-1.0f, 0.5f}));
    EXPECT_EQ(samples(3, 32, std::string("\x00\x00\x80\xBF\x00\x00\x00\x3F", 8)), (std::vector{-1.0f, 0.5f}));
    EXPECT_EQ(samples(3, 64, std::string("\x00\x00\x00\x00\x00\x00\xE0\x3F", 8)), (std::vector{0.5f}));
}

TEST(WavReader, SkipsOtherChunksEvenThoseOfOddLength) {
    const auto parsed = Parse(Riff(
        Chunk("LIST", "abc") + Chunk("fmt ", Format({})) + Chunk("junk", "x") + Chunk("data", TwoSamples)));
    EXPECT_EQ(parsed.samples, (std::vector{0.5f, -0.5f}));
}

TEST(WavReader, ReadsWhatACutFileHas) {
    const auto whole = Riff(Chunk("fmt ", Format({})) + Chunk("data", TwoSamples));
    EXPECT_EQ(
        Parse(whole.substr(0, whole.size() - 1)).samples, (std::vector{0.5f})); // the half sample is left out
    EXPECT_EQ(Parse(whole.substr(0, whole.size() - 4)).samples.size(), 0u);
}

TEST(WavReader, TrustsNoSize) {
    // What a program leaves if it is stopped while writing, and what a hostile file claims.
    const auto endless = "RIFF" + Little(0xFFFFFFFF, 4) + "WAVE" + Chunk("fmt ", Format({})) + "data" +
                         Little(0xFFFFFFFF, 4) + TwoSamples;
    EXPECT_EQ(Parse(endless).samples, (std::vector{0.5f, -0.5f}));
    const auto emptyRiff =
        "RIFF" + Little(0, 4) + "WAVE" + Chunk("fmt ", Format({})) + Chunk("data", TwoSamples);
    EXPECT_EQ(Parse(emptyRiff).samples, (std::vector{0.5f, -0.5f}));
    const auto hugeChunk = "RIFF" + Little(100, 4) + "WAVE" + Chunk("fmt ", Format({})) + "junk" +
                           Little(0xFFFFFFFE, 4) + Chunk("data", TwoSamples);
    EXPECT_EQ(Error(hugeChunk), "no audio in this WAV file");
    EXPECT_EQ(Error("RIFF" + Little(100, 4) + "WAVEfmt " + Little(0xFFFFFFFF, 4) + Format({})),
        "no audio in this WAV file");
}

TEST(WavReader, RefusesWhatIsNoWavFile) {
    EXPECT_EQ(Error(""), "not a WAV file");
    EXPECT_EQ(Error("RIFF"), "not a WAV file");
    EXPECT_EQ(Error("RIFX" + Little(4, 4) + "WAVE"), "not a WAV file");
    EXPECT_EQ(Error("RIFF" + Little(4, 4) + "AVI "), "not a WAV file");
    EXPECT_EQ(Error(Riff("")), "no audio in this WAV file");
    EXPECT_EQ(Error(Riff(Chunk("fmt ", Format({})))), "no audio in this WAV file");
    EXPECT_EQ(Error(Riff(Chunk("data", TwoSamples))), "no format before this WAV file's audio");
}

TEST(WavReader, RefusesFormatsThatMakeNoSense) {
    const auto error = [](const SHeader& header) {
        return Error(Riff(Chunk("fmt ", Format(header)) + Chunk("data", TwoSamples)));
    };
    EXPECT_EQ(error({.channels = 0, .frameBytes = 0}), "a damaged WAV file: no usable channel count");
    EXPECT_EQ(error({.channels = 65535}), "a damaged WAV file: no usable channel count");
    EXPECT_EQ(error({.rate = 0}), "a damaged WAV file: no usable sample rate");
    EXPECT_EQ(error({.rate = 0xFFFFFFFF}), "a damaged WAV file: no usable sample rate");
    EXPECT_EQ(error({.frameBytes = 3}), "a damaged WAV file: its frame size does not fit its channels");
    EXPECT_EQ(error({.bits = 0}), "a WAV file with an unsupported coding (0 bits)");
    EXPECT_EQ(error({.tag = 3}), "a WAV file with an unsupported coding (16 bits)");
    EXPECT_EQ(error({.tag = 2, .bits = 4}), "a WAV file with an unsupported coding (4 bits)");
    EXPECT_EQ(
        error({.tag = 0xFFFE}), "a damaged WAV file: its format is cut off"); // extensible, but too short
    EXPECT_EQ(Error(Riff(Chunk("fmt ", "abc") + Chunk("data", TwoSamples))),
        "a damaged WAV file: its format is cut off");
}

TEST(WavReader, GivesTheWholeFramesOfAFileCutAnywhere) {
    const auto whole = Written(NoiseWithMask(3, 5, ESampleFormat::Int24));
    const std::size_t header = whole.size() - 46; // 5 frames of 9 bytes, and one byte of padding
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const auto cut = whole.substr(0, length);
        if (length < header) {
            EXPECT_NE(Error(cut), "no error") << length;
        } else {
            EXPECT_EQ(Parse(cut).samples.size(), (length - header) / 9 * 3) << length;
        }
    }
}

TEST(WavReader, SurvivesEveryByteOfAHeaderGoneWrong) {
    const auto whole = Written(NoiseWithMask(3, 5, ESampleFormat::Int24));
    for (std::size_t place = 0; place < whole.size() - 46; ++place) {
        for (const char value : {'\x00', '\x01', '\x7F', '\x80', '\xFF'}) {
            auto damaged = whole;
            damaged[place] = value;
            try {
                EXPECT_LE(Parse(damaged).samples.size(), whole.size());
            } catch (const CFailure&) {}
        }
    }
}

TEST(WavReader, RefusesAnUnknownExtensibleCoding) {
    auto bytes = Written(NoiseWithMask(3, 5, ESampleFormat::Int24));
    bytes[12 + 8 + 30] = 'x'; // in the tail of the coding's name
    EXPECT_EQ(Error(bytes), "a WAV file with an unsupported coding (24 bits)");
}

TEST(WavWriter, WritesWhatTheReaderReads) {
    for (const auto format : {ESampleFormat::Int8, ESampleFormat::Int16, ESampleFormat::Int24,
             ESampleFormat::Int32, ESampleFormat::Float32, ESampleFormat::Float64}) {
        for (const int channels : {1, 2, 3, 16}) {
            auto audio = Noise(channels, 7, 0.9f, format);
            if (const int bits = IntegerBits(format); bits > 0) { // put the samples on the format's steps
                CQuantiser quantiser(bits, false);
                for (float& sample : audio.samples) sample = SampleOf(quantiser.Quantise(sample));
            }
            const auto parsed = Parse(Written(audio));
            EXPECT_EQ(parsed.format.samples, format);
            EXPECT_EQ(parsed.format.channels, channels);
            EXPECT_EQ(parsed.format.rateHz, 48000);
            EXPECT_EQ(parsed.samples, audio.samples);
        }
    }
}

TEST(WavWriter, CountsItsBytesRight) {
    for (const std::size_t frames : {0u, 1u, 2u}) { // one frame of one 8-bit channel needs a byte of padding
        const auto bytes = Written(Noise(1, frames, 0.5f, ESampleFormat::Int8));
        EXPECT_EQ(bytes.substr(4, 4), Little(bytes.size() - 8, 4));
        EXPECT_EQ(bytes.size() % 2, 0u);
        EXPECT_EQ(bytes.substr(40, 4), Little(frames, 4));
    }
}

TEST(WavWriter, WritesTheHeaderOfA16BitFile) {
    SAudio audio{{44100, 2, ESampleFormat::Int16}, {0.5f, -0.5f}};
    EXPECT_EQ(Written(audio), Riff(Chunk("fmt ", Format({1, 2, 44100, 4, 16})) + Chunk("data", TwoSamples)));
}

TEST(WavWriter, ReplacesTheSamplesByThoseOfTheFile) {
    std::ostringstream stream;
    CWavWriter writer(stream, {48000, 1, ESampleFormat::Int8}, false);
    std::vector samples{0.3f, 2.0f, -2.0f};
    writer.Write(samples);
    EXPECT_EQ(samples, (std::vector{38 / 128.0f, 127 / 128.0f, -1.0f})); // 0.3 is 38.4 steps
    EXPECT_EQ(writer.Clipped(), 2u);
}

TEST(WavWriter, RefusesFormatsThatWavDoesNotHave) {
    std::ostringstream stream;
    EXPECT_THROW(CWavWriter(stream, {48000, 1, ESampleFormat::Coded}, false), CFailure);
}

TEST(WavWriter, StoresEverySpeakerMask) {
    for (const int channels : {1, 2, 6, 16}) {
        for (const auto samples : {ESampleFormat::Int16, ESampleFormat::Int24, ESampleFormat::Float32}) {
            for (const std::uint32_t mask : {0u, 0x3u, 0x4u, 0x3Fu, 0x60Fu, 0x80000000u, 0xFFFFFFFFu}) {
                const auto parsed = Parse(Written(NoiseWithMask(channels, 4, samples, mask)));
                EXPECT_EQ(parsed.format.mask, mask);
                EXPECT_FALSE(parsed.format.isMaskDefined);
            }
        }
    }
}

TEST(WavWriter, WritesAPlainHeaderWithoutAMask) {
    for (const int channels : {1, 2, 6}) {
        for (const auto samples : {ESampleFormat::Int16, ESampleFormat::Int24, ESampleFormat::Float32}) {
            const auto bytes = Written(Noise(channels, 4, 0.5f, samples));
            EXPECT_FALSE(Parse(bytes).format.mask);
            EXPECT_EQ(bytes.substr(20, 2), Little(samples == ESampleFormat::Float32 ? 3 : 1, 2));
        }
    }
}

TEST(WavReader, ReadsOnFromAnyFrame) {
    const auto folder = NewFolder();
    const auto audio = Noise(3, 1000, 0.5f, ESampleFormat::Int24);
    WriteWav(folder / "in.wav", audio);
    const auto whole = ReadWav(folder / "in.wav").samples;
    std::ifstream stream(folder / "in.wav", std::ios::binary);
    CWavReader reader(stream);
    for (const std::size_t frame : {700u, 0u, 999u, 1u}) {
        reader.Seek(frame);
        std::vector<float> read(3);
        ASSERT_EQ(reader.Read(read), 1u);
        for (std::size_t c = 0; c < 3; ++c) EXPECT_EQ(read[c], whole[3 * frame + c]) << frame;
    }
    reader.Seek(5000); // beyond the end
    std::vector<float> none(3);
    EXPECT_EQ(reader.Read(none), 0u);
    reader.Seek(990);
    std::vector<float> rest(300);
    EXPECT_EQ(reader.Read(rest), 10u);
}
