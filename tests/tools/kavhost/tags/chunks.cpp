#include "tests/tools/kavhost/tags/chunks.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

namespace KAV::Tests {

namespace {

std::uint64_t NumberOf(std::string_view bytes, bool isBig) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[isBig ? i : bytes.size() - 1 - i]);
    return value;
}

std::string Padded(std::string content) {
    if ((content.size() & 1) != 0) content.push_back('\0');
    return content;
}

std::string Joined(const ChunkRecords& chunks, std::string (*make)(const std::string&, const std::string&)) {
    std::string all;
    for (const auto& [name, content] : chunks) all += make(name, content);
    return all;
}

std::string SoftNoise(bool isBig) {
    std::string bytes;
    for (const float sample : Noise(2, 4800, 0.1f).samples) {
        const auto number = static_cast<std::uint64_t>(static_cast<std::int64_t>(sample * 32767));
        bytes += isBig ? Big(number, 2) : Little(number, 2);
    }
    return bytes;
}

} // namespace

std::string Little(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
    return text;
}

std::string Big(std::uint64_t value, int bytes) {
    const auto text = Little(value, bytes);
    return {text.rbegin(), text.rend()};
}

std::string WavChunk(const std::string& name, const std::string& content) {
    return name + Little(content.size(), 4) + Padded(content);
}

std::string AiffChunk(const std::string& name, const std::string& content) {
    return name + Big(content.size(), 4) + Padded(content);
}

std::string WavWith(const ChunkRecords& before, const ChunkRecords& after) {
    const auto format =
        Little(1, 2) + Little(2, 2) + Little(48000, 4) + Little(192000, 4) + Little(4, 2) + Little(16, 2);
    const auto body = "WAVE" + WavChunk("fmt ", format) + Joined(before, WavChunk) +
                      WavChunk("data", SoftNoise(false)) + Joined(after, WavChunk);
    return "RIFF" + Little(body.size(), 4) + body;
}

std::string AiffWith(const ChunkRecords& after) {
    const auto rate = Big(0x400E, 2) + Big(0xBB80, 2) + std::string(6, '\0'); // 48000 in 80 bits
    const auto body = "AIFF" + AiffChunk("COMM", Big(2, 2) + Big(4800, 4) + Big(16, 2) + rate) +
                      AiffChunk("SSND", std::string(8, '\0') + SoftNoise(true)) + Joined(after, AiffChunk);
    return "FORM" + Big(body.size(), 4) + body;
}

ChunkRecords ChunksOf(const std::string& file) {
    ChunkRecords chunks;
    const bool isBig = file.starts_with("FORM");
    const auto number = [&](std::size_t place) { return NumberOf(file.substr(place, 4), isBig); };
    if (file.starts_with("RF64")) {
        EXPECT_EQ(number(4), 0xFFFFFFFFu);
        EXPECT_EQ(NumberOf(file.substr(20, 8), false), file.size() - 8);
    } else {
        EXPECT_EQ(number(4), file.size() - 8);
    }
    std::size_t place = 12;
    while (place + 8 <= file.size()) {
        const auto name = file.substr(place, 4);
        auto size = static_cast<std::size_t>(number(place + 4));
        if (name == "data" && size == 0xFFFFFFFFu)
            size = static_cast<std::size_t>(NumberOf(file.substr(28, 8), false));
        EXPECT_LE(size, file.size() - place - 8) << name;
        constexpr std::array storage{"fmt ", "fact", "data", "ds64", "JUNK", "COMM", "SSND"};
        if (std::ranges::find(storage, name) == storage.end())
            chunks.emplace_back(name, file.substr(place + 8, size));
        place += 8 + size + (size & 1);
    }
    EXPECT_EQ(place, file.size());
    return chunks;
}

std::vector<std::string> Contents(const ChunkRecords& chunks, const std::string& name) {
    std::vector<std::string> contents;
    for (const auto& [other, content] : chunks) {
        if (other == name) contents.push_back(content);
    }
    return contents;
}

std::string Bext(unsigned version, const std::string& history) {
    const auto field = [](std::string text, std::size_t size) {
        text.resize(size);
        return text;
    };
    return field("A take of the bells", 256) + field("Tower", 32) + field("DE-2024-17", 32) + "2024-05-06" +
           "10:11:12" + Little(172'800'000, 8) + Little(version, 2) +
           std::string(64, version > 0 ? 'u' : '\0') + Little(0xF704, 2) + Little(500, 2) +
           Little(0xFF9C, 2) + Little(0xF8F8, 2) + Little(0xF830, 2) + std::string(180, '\0') + history;
}

std::string InfoText(const std::string& name, const std::string& text) {
    return WavChunk(name, text + '\0');
}

std::string Cues(const std::vector<std::uint32_t>& frames) {
    auto cue = Little(frames.size(), 4);
    for (std::size_t i = 0; i < frames.size(); ++i)
        cue += Little(i + 1, 4) + Little(frames[i], 4) + "data" + Little(0, 8) + Little(frames[i], 4);
    return cue;
}

std::string CueLabels(const std::vector<std::string>& labels) {
    std::string list = "adtl";
    for (std::size_t i = 0; i < labels.size(); ++i)
        list += WavChunk("labl", Little(i + 1, 4) + labels[i] + '\0');
    return list;
}

std::string Id3(const std::string& frames) {
    const auto size = frames.size();
    std::string tag("ID3\x03\x00\x00", 6);
    for (int shift = 21; shift >= 0; shift -= 7) tag.push_back(static_cast<char>(size >> shift & 0x7F));
    return tag + frames;
}

std::string Id3Frame(const std::string& name, const std::string& content) {
    return name + Big(content.size(), 4) + std::string(2, '\0') + content;
}

std::string Id3Text(const std::string& name, const std::string& text) {
    return Id3Frame(name, '\0' + text);
}

std::string Id3UserText(const std::string& name, const std::string& text) {
    return Id3Frame("TXXX", '\0' + name + '\0' + text);
}

} // namespace KAV::Tests
