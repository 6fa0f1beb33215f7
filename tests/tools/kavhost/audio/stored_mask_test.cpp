#include "tools/kavhost/audio/stored_mask.h"

#include <gtest/gtest.h>
#include <sstream>

using namespace KAV::Host;

namespace {

std::string Big(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i) text.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
    return text;
}

std::string Little(std::uint64_t value, int bytes) {
    const auto big = Big(value, bytes);
    return {big.rbegin(), big.rend()};
}

std::span<const unsigned char> BytesIn(const std::string& text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

std::optional<std::uint32_t> MaskOfFlac(const std::string& bytes) {
    std::istringstream stream(bytes);
    return MaskInFlac(stream);
}

std::string Comment(const std::string& text) {
    return Little(text.size(), 4) + text;
}

std::string Block(int kind, const std::string& content, bool isLast = false) {
    return Big(static_cast<std::uint64_t>(kind) | (isLast ? 0x80u : 0u), 1) + Big(content.size(), 3) +
           content;
}

const std::string Vendor = Comment("a program");
const std::string Mask = "WAVEFORMATEXTENSIBLE_CHANNEL_MASK=0x060F";

/// The channels 0, 1, 2... of a file, as they are in WAV order.
std::vector<float> Ordered(CChannelOrder order, int channels) {
    std::vector<float> frame;
    for (int c = 0; c < channels; ++c) frame.push_back(static_cast<float>(c));
    order.ToWav(frame);
    return frame;
}

std::string Tag(std::uint32_t number, std::uint32_t channels) {
    return Big(number << 16 | channels, 4) + Big(0, 8);
}

/// The channel layout that names each channel.
std::string Labels(const std::vector<std::uint32_t>& labels) {
    auto chunk = Big(0, 8) + Big(labels.size(), 4);
    for (const auto label : labels) chunk += Big(label, 4) + std::string(16, '\0');
    return chunk;
}

/// A header in the extensible form as it stands at a file's front.
std::string Head(const std::string& before, std::uint32_t coding) {
    return before + "fmt " + Little(40, 4) + Little(0xFFFE, 2) + Little(6, 2) + Little(48000, 4) +
           Little(48000 * 12, 4) + Little(12, 2) + Little(16, 2) + Little(22, 2) + Little(16, 2) +
           Little(0x3F, 4) + Little(coding, 2) + std::string(14, 'g') + "data" + Little(0, 4);
}

const std::string Riff = "RIFF" + Little(100, 4) + "WAVE";

} // namespace

TEST(StoredMask, IsInTheExtensibleFormAlone) {
    const auto head = Head(Riff, 1);
    const auto format = head.substr(20, 40);
    EXPECT_EQ(MaskInWavFormat(BytesIn(format)), 0x3Fu);
    EXPECT_FALSE(MaskInWavFormat(BytesIn(format.substr(0, 39))));
    EXPECT_FALSE(MaskInWavFormat(BytesIn(Little(1, 2) + format.substr(2))));
    EXPECT_FALSE(MaskInWavFormat({}));
    const auto turned = Big(0xFFFE, 2) + format.substr(2, 18) + Big(0x60F, 4) + format.substr(24);
    EXPECT_EQ(MaskInWavFormat(BytesIn(turned)), 0x60Fu);
}

TEST(StoredMask, IsSetInFourBytesOfAHead) {
    const auto wide = "RF64" + Little(0xFFFFFFFF, 4) + "WAVEds64" + Little(28, 4) + std::string(28, 'd');
    for (const auto& before : {Riff, wide}) {
        const auto old = Head(before, 1);
        auto head = old;
        ASSERT_TRUE(SetMaskInWavHead(head, 0x80000102));
        EXPECT_EQ(head.size(), old.size());
        const std::size_t place = before.size() + 8 + 20;
        EXPECT_EQ(head.substr(place, 4), Little(0x80000102, 4));
        EXPECT_EQ(head.substr(0, place), old.substr(0, place));
        EXPECT_EQ(head.substr(place + 4), old.substr(place + 4));
    }
}

TEST(StoredMask, LeavesAPlainHeadAndAChunkToSkip) {
    for (const std::uint32_t coding : {1u, 3u}) {
        const auto old = Head(Riff, coding);
        auto head = old;
        ASSERT_TRUE(SetMaskInWavHead(head, std::nullopt));
        const std::size_t size = coding == 1 ? 16 : 18;
        EXPECT_EQ(head.substr(0, 16), old.substr(0, 16));
        EXPECT_EQ(head.substr(16, 4), Little(size, 4));
        EXPECT_EQ(head.substr(20, 2), Little(coding, 2));
        EXPECT_EQ(head.substr(22, 14), old.substr(22, 14));
        EXPECT_EQ(head.substr(36, size - 16), std::string(size - 16, '\0'));
        EXPECT_EQ(head.substr(20 + size, 8), "JUNK" + Little(32 - size, 4));
        EXPECT_EQ(head.substr(60), old.substr(60)); // the audio stays where it was
    }
}

TEST(StoredMask, LeavesOtherHeadsAlone) {
    for (const std::string& other : {std::string(), std::string("RIFF"), Riff, Head(Riff, 1).substr(0, 50),
             Riff + "junk" + Little(0xFFFFFFFF, 4) + std::string(100, 'j'),
             Riff + "fmt " + Little(16, 4) + std::string(60, '\1'), std::string(200, '\0')}) {
        auto head = other;
        EXPECT_FALSE(SetMaskInWavHead(head, 0x3));
        EXPECT_EQ(head, other);
    }
}

TEST(StoredMask, IsAnyInAChannelChunk) {
    for (const std::uint32_t mask : {0u, 0x3u, 0x3Fu, 0x60Fu, 0xFFFFFFFFu}) {
        const auto layout = LayoutInChannelChunk(ChannelChunkOf(mask), 6);
        ASSERT_TRUE(layout);
        EXPECT_EQ(layout->mask, mask);
        EXPECT_TRUE(layout->order.IsKept());
    }
}

TEST(StoredMask, OfANumberedLayoutPutsChannelsInOrder) {
    const auto layout = [](std::uint32_t number, int channels) {
        return LayoutInChannelChunk(BytesIn(Tag(number, static_cast<std::uint32_t>(channels))), channels);
    };
    EXPECT_EQ(layout(100, 1)->mask, 0x4u);
    EXPECT_EQ(layout(101, 2)->mask, 0x3u);
    EXPECT_EQ(layout(121, 6)->mask, 0x60Fu); // L R C LFE Ls Rs
    EXPECT_TRUE(layout(121, 6)->order.IsKept());
    EXPECT_EQ(layout(124, 6)->mask, 0x60Fu); // C L R Ls Rs LFE
    EXPECT_EQ(Ordered(layout(124, 6)->order, 6), (std::vector<float>{1, 2, 0, 5, 3, 4}));
    EXPECT_EQ(layout(128, 8)->mask, 0x63Fu); // L R C LFE Ls Rs Rls Rrs
    EXPECT_EQ(Ordered(layout(128, 8)->order, 8), (std::vector<float>{0, 1, 2, 3, 6, 7, 4, 5}));
    EXPECT_EQ(layout(147, 5)->mask, 0u); // channels without speakers
    EXPECT_FALSE(layout(200, 6));
    EXPECT_FALSE(LayoutInChannelChunk(BytesIn(Tag(121, 6)), 5));
}

TEST(StoredMask, OfNamedChannelsPutsThemInOrder) {
    const auto film = LayoutInChannelChunk(BytesIn(Labels({1, 3, 2, 5, 6, 4})), 6); // L C R Ls Rs LFE
    ASSERT_TRUE(film);
    EXPECT_EQ(film->mask, 0x3Fu);
    EXPECT_EQ(Ordered(film->order, 6), (std::vector<float>{0, 2, 1, 5, 3, 4}));
    const auto rears = LayoutInChannelChunk(BytesIn(Labels({1, 2, 5, 6, 33, 34})), 6);
    ASSERT_TRUE(rears);
    EXPECT_EQ(rears->mask, 0x633u);
    EXPECT_EQ(Ordered(rears->order, 6), (std::vector<float>{0, 1, 4, 5, 2, 3}));
    EXPECT_FALSE(LayoutInChannelChunk(BytesIn(Labels({1, 1})), 2));
    EXPECT_FALSE(LayoutInChannelChunk(BytesIn(Labels({1, 99})), 2));
}

TEST(StoredMask, OfADamagedChannelChunkIsNone) {
    const auto labels = Labels({1, 2});
    for (std::size_t length = 0; length < labels.size(); ++length)
        EXPECT_FALSE(LayoutInChannelChunk(BytesIn(labels.substr(0, length)), 2)) << length;
    EXPECT_FALSE(LayoutInChannelChunk(BytesIn(labels), 3));
}

TEST(StoredMask, IsACommentOfFlac) {
    const auto comments = Vendor + Little(2, 4) + Comment("TITLE=a song") + Comment(Mask);
    const auto flac = "fLaC" + Block(0, std::string(34, 's')) + Block(1, std::string(99, '\0'));
    EXPECT_EQ(MaskOfFlac(flac + Block(4, comments, true)), 0x60Fu);
    EXPECT_EQ(
        MaskOfFlac("ID3" + std::string(6, '\0') + "\x05" + "12345" + flac + Block(4, comments)), 0x60Fu);
    const auto lower = Vendor + Little(1, 4) + Comment("waveformatextensible_channel_mask=0x3f");
    EXPECT_EQ(MaskOfFlac(flac + Block(4, lower)), 0x3Fu);
    const auto large = Vendor + Little(2, 4) + Comment(std::string(100'000, 'p')) + Comment(Mask);
    EXPECT_EQ(MaskOfFlac(flac + Block(4, large)), 0x60Fu);
}

TEST(StoredMask, OfADamagedFlacIsNone) {
    const auto flac = "fLaC" + Block(0, std::string(34, 's'));
    const auto whole = flac + Block(4, Vendor + Little(1, 4) + Comment(Mask), true);
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(MaskOfFlac(whole.substr(0, length))) << length;
    for (const std::string& comments :
        {Little(0xFFFFFFFF, 4), Vendor + Little(0xFFFFFFFF, 4), Vendor + Little(9, 4) + Little(0xFFFFFFF0, 4),
            Vendor + Little(1, 4) + Little(45, 4) + Mask, // longer than the block
            Vendor + Little(1, 4) + Comment(Mask.substr(0, Mask.size() - 6)),
            Vendor + Little(1, 4) + Comment(Mask + "G"), Vendor + Little(0, 4) + Comment(Mask)}) {
        EXPECT_FALSE(MaskOfFlac(flac + Block(4, comments) + Block(1, std::string(60, 'x'), true)));
    }
    // The last digit is beyond the block.
    const auto cut = Vendor + Little(1, 4) + Comment(Mask);
    EXPECT_FALSE(MaskOfFlac(flac + Block(4, cut.substr(0, cut.size() - 1)) + cut.back()));
}

TEST(StoredMask, IsWrittenForFlacWithFourDigitsAtLeast) {
    const std::string key = "WAVEFORMATEXTENSIBLE_CHANNEL_MASK=";
    EXPECT_EQ(FlacMaskComment(0x60F), key + "0x060F");
    EXPECT_EQ(FlacMaskComment(0), key + "0x0000");
    EXPECT_EQ(FlacMaskComment(0x2D63F), key + "0x2D63F");
    EXPECT_EQ(FlacMaskComment(0xFFFFFFFF), key + "0xFFFFFFFF");
}

TEST(StoredMask, OfOpusIsThatOfItsFamily) {
    const auto opus = [](int family) {
        std::istringstream stream(std::string(28, 'p') + "OpusHead" + std::string(10, '\1') +
                                  Big(static_cast<unsigned>(family), 1));
        return HasOpusSpeakers(stream);
    };
    EXPECT_TRUE(opus(0));
    EXPECT_TRUE(opus(1));
    EXPECT_FALSE(opus(2));
    EXPECT_FALSE(opus(255));
    std::istringstream cut(std::string(28, 'p') + "OpusHead" + std::string(10, '\1'));
    EXPECT_FALSE(HasOpusSpeakers(cut));
}

TEST(ChannelOrder, GoesBackAsItCame) {
    for (int channels = 1; channels <= 9; ++channels) {
        auto order = OggOrder(channels);
        std::vector<float> frames;
        for (int i = 0; i < 2 * channels; ++i) frames.push_back(static_cast<float>(i));
        const auto before = frames;
        order.ToFile(frames);
        order.ToWav(frames);
        EXPECT_EQ(frames, before) << channels;
    }
}
