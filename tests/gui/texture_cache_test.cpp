#include "gui/texture_cache.h"

#include "tests/support/added_log.h"
#include "tests/support/recording_gpu.h"
#include "tests/support/recording_pictures.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace KAV;
using namespace KAV::Tests;
using GUI::CTextureCache;

namespace {

const std::u16string KnobImage = u"Knob((63x8))##Sz-1x-1pxSb0.png";
const std::u16string HintImage = u"Hint##Sz-1x-1pxSb0.png";

class TextureCache : public testing::Test {
protected:
    TextureCache() {
        pictures.stored = {{KnobImage, {312, 300}}, {HintImage, {25, 20}}, {u"Empty.png", {0, 20}},
            {u"My picture.png", {4, 4}}};
    }

    GFX::STexture Get(const std::u16string& name) { return cache.Get(name, -1, -1, 0); }
    std::vector<std::string> Made() { return std::exchange(gpu.lines, {}); }

    CRecordingGpu gpu;
    CRecordingPictures pictures;
    CTextureCache cache{[this]() -> GFX::GPU& { return gpu; }, pictures};
};

} // namespace

TEST_F(TextureCache, LoadsAPictureOnceForAllWhoShowIt) {
    auto first = Get(KnobImage);
    auto second = Get(KnobImage);
    EXPECT_EQ(pictures.Count("LoadImage"), 1u);
    EXPECT_EQ(Made(), std::vector<std::string>{"CreateTexture 1 312x300 in 312x300"});
    EXPECT_EQ(first.piGDIP, second.piGDIP);
    EXPECT_EQ(first.nUses, 1);
    EXPECT_EQ(second.nUses, 2);
    EXPECT_EQ(cache.Held(), std::vector<std::u16string>{KnobImage});
}

TEST_F(TextureCache, EndsATextureWithTheLastOfItsUses) {
    auto first = Get(KnobImage);
    auto second = Get(KnobImage);
    auto third = Get(KnobImage);
    Made();
    cache.Release(second);
    cache.Release(first);
    EXPECT_EQ(Made(), std::vector<std::string>());
    EXPECT_EQ(first, GFX::FreedTexture());
    EXPECT_EQ(second, GFX::FreedTexture());
    EXPECT_EQ(gpu.LiveTextures().size(), 1u);
    cache.Release(third);
    EXPECT_EQ(Made(), std::vector<std::string>{"FreeTexture 1"});
    EXPECT_EQ(third, GFX::FreedTexture());
    EXPECT_TRUE(cache.Held().empty());
    EXPECT_EQ(Get(KnobImage).nUses, 1) << "and it is made anew after that";
    EXPECT_EQ(pictures.Count("LoadImage"), 2u);
}

TEST_F(TextureCache, ReleasingARecordTwiceTakesBackOneUse) {
    auto first = Get(KnobImage);
    const auto second = Get(KnobImage);
    cache.Release(first);
    cache.Release(first);
    EXPECT_EQ(cache.Held(), std::vector<std::u16string>{KnobImage});
    EXPECT_EQ(gpu.LiveTextures().count(second.piGDIP), 1u);
}

TEST_F(TextureCache, KeepsEachSizeAndBlurOfAPictureByItself) {
    const auto stored = Get(KnobImage);
    const auto sized = cache.Get(KnobImage, 60, 61, 0);
    const auto blurred = cache.Get(KnobImage, -1, -1, 5);
    const auto both = cache.Get(KnobImage, 60, 61, 5);
    EXPECT_EQ(gpu.LiveTextures().size(), 4u);
    EXPECT_EQ(cache.Get(KnobImage, 60, 61, 5).piGDIP, both.piGDIP);
    EXPECT_EQ(
        pictures.lines, (std::vector<std::string>{"LoadImage Knob((63x8))##Sz-1x-1pxSb0.png -1x-1 blur 0",
                            "LoadImage Knob((63x8))##Sz-1x-1pxSb0.png 60x61 blur 0",
                            "LoadImage Knob((63x8))##Sz-1x-1pxSb0.png -1x-1 blur 5",
                            "LoadImage Knob((63x8))##Sz-1x-1pxSb0.png 60x61 blur 5"}));
    EXPECT_EQ(stored.nW, 312);
    EXPECT_EQ(sized.nW, 60);
    EXPECT_EQ(blurred.nW, 352) << "with room for the blur";
    EXPECT_EQ(both.nH, 101);
    EXPECT_EQ(cache.Held(),
        (std::vector<std::u16string>{u"Knob((63x8))##Sz-1x-1pxSb0.png", u"Knob((63x8))##Sz-1x-1pxSb5.png",
            u"Knob((63x8))##Sz60x61pxSb0.png", u"Knob((63x8))##Sz60x61pxSb5.png"}));
}

TEST_F(TextureCache, AsksForAPictureByTheNameAsItStands) {
    Get(u"My picture.png");
    EXPECT_EQ(pictures.lines, std::vector<std::string>{"LoadImage My picture.png -1x-1 blur 0"});
    EXPECT_EQ(cache.Held(), std::vector<std::u16string>{u"My_picture##Sz-1x-1pxSb0.png"});
}

TEST_F(TextureCache, FillsTheRecord) {
    auto expected = GFX::STexture{1, 312, 300, 1.0f, 1.0f, 8, 8, 63, 1};
    EXPECT_EQ(Get(KnobImage), expected);
    expected = GFX::STexture{2, 25, 20, 1.0f, 1.0f, 1, 1, 1, 1};
    EXPECT_EQ(Get(HintImage), expected);
}

TEST_F(TextureCache, PadsToPowersOfTwoForARendererThatAsksForThem) {
    gpu.anySize = false;
    const auto knob = Get(KnobImage);
    EXPECT_EQ(knob.nW, 312);
    EXPECT_EQ(knob.nH, 300);
    EXPECT_EQ(knob.fU, 312.0f / 512.0f);
    EXPECT_EQ(knob.fV, 300.0f / 512.0f);
    EXPECT_EQ(Get(HintImage).fU, 25.0f / 32.0f);
    EXPECT_EQ(cache.Get(HintImage, 1, 64, 0).fU, 1.0f / 2.0f);
    EXPECT_EQ(Made(), (std::vector<std::string>{"CreateTexture 1 312x300 in 512x512",
                          "CreateTexture 2 25x20 in 32x32", "CreateTexture 3 1x64 in 2x64"}));
}

TEST_F(TextureCache, ChecksTheTexturesSizeNotThePictures) {
    gpu.maxWidth = 400;
    gpu.maxHeight = 1000;
    {
        const CAddedLog log;
        Get(KnobImage);
        EXPECT_EQ(log.Text(), "");
    }
    gpu.anySize = false;
    const CAddedLog log;
    EXPECT_NE(cache.Get(KnobImage, 312, 300, 0).piGDIP, 0u) << "a warning, and no more";
    EXPECT_EQ(log.Text(), "Error=TextureTooLarge:\"Knob((63x8))##Sz-1x-1pxSb0.png\", a_nW=512[nMaxW=400], "
                          "a_nH=512[nMaxH=1000]\r\n");
}

TEST_F(TextureCache, APictureThatDoesNotExistHasNoTextureAndNoUse) {
    EXPECT_EQ(Get(u"None.png"), GFX::FreedTexture());
    EXPECT_EQ(Get(u"Empty.png"), GFX::FreedTexture());
    EXPECT_TRUE(cache.Held().empty());
    EXPECT_EQ(Made(), std::vector<std::string>());
}

TEST_F(TextureCache, LooksAgainForAPictureThatWasNotThere) {
    Get(u"None.png");
    Get(u"None.png");
    EXPECT_EQ(pictures.Count("LoadImage None.png"), 2u);
    pictures.stored[u"None.png"] = {3, 3};
    EXPECT_EQ(Get(u"None.png").nUses, 1);
}

TEST_F(TextureCache, ATextureThatCouldNotBeMadeIsTriedAgain) {
    gpu.makesTextures = false;
    EXPECT_EQ(Get(KnobImage), GFX::FreedTexture());
    EXPECT_EQ(Get(KnobImage), GFX::FreedTexture());
    EXPECT_TRUE(cache.Held().empty());
    gpu.makesTextures = true;
    auto texture = Get(KnobImage);
    EXPECT_EQ(texture.nUses, 1);
    cache.Release(texture);
    EXPECT_TRUE(gpu.LiveTextures().empty());
}

TEST_F(TextureCache, KeepsNothingOfAPictureThatCannotBeRead) {
    pictures.throwIn = "LoadImage";
    EXPECT_THROW(Get(KnobImage), Exceptions::Std);
    pictures.throwIn.clear();
    gpu.throwIn = "AnySizeTextures";
    EXPECT_THROW(Get(KnobImage), Exceptions::Std);
    gpu.throwIn.clear();
    EXPECT_TRUE(cache.Held().empty());
    EXPECT_EQ(Get(KnobImage).nUses, 1);
    EXPECT_EQ(gpu.LiveTextures().size(), 1u);
}

TEST_F(TextureCache, EndsATextureThatIsNotItsOwnAtOnce) {
    const auto picture = Get(KnobImage);
    GFX::STexture ofText;
    gpu.CreateTexture({}, ofText, 8, 8);
    Made();
    cache.Release(ofText);
    EXPECT_EQ(Made(), std::vector<std::string>{"FreeTexture 2"});
    EXPECT_EQ(ofText, GFX::FreedTexture());
    EXPECT_EQ(gpu.LiveTextures().count(picture.piGDIP), 1u);
}

TEST_F(TextureCache, ReleasingNothingResetsTheRecordAndNoMore) {
    Get(KnobImage);
    Made();
    GFX::STexture nothing;
    nothing.nW = 5;
    nothing.nColumns = 3;
    cache.Release(nothing);
    EXPECT_EQ(nothing, GFX::FreedTexture());
    EXPECT_EQ(Made(), std::vector<std::string>());
}

TEST_F(TextureCache, EndsWhatIsStillHeldWithItsRenderer) {
    Get(KnobImage);
    Get(HintImage);
    Get(HintImage);
    EXPECT_EQ(cache.Held(), (std::vector<std::u16string>{HintImage, KnobImage}));
    cache.Clear();
    EXPECT_TRUE(cache.Held().empty());
    EXPECT_TRUE(gpu.LiveTextures().empty());
    EXPECT_EQ(Get(HintImage).nUses, 1);
}

// Whatever is asked for and given back, in any order: each record that is held counts once, and nothing
// stays.
TEST_F(TextureCache, CountsBalanceAfterAnyUse) {
    std::mt19937 random(20);
    const auto below = [&](std::uint32_t end) { return static_cast<std::int32_t>(random() % end); };
    const std::vector<std::u16string> names{
        KnobImage, HintImage, u"My picture.png", u"None.png", u"Empty.png"};
    std::vector<GFX::STexture> held;
    for (int step = 0; step < 20000; ++step) {
        gpu.makesTextures = below(8) != 0;
        if (below(100) < 52 && held.size() < 60) {
            const auto& name = names[static_cast<std::size_t>(below(5))];
            const auto texture = cache.Get(name, below(3) - 1, below(2) - 1, below(2));
            if (texture.piGDIP != 0) {
                held.push_back(texture);
            } else {
                EXPECT_EQ(texture, GFX::FreedTexture());
            }
        } else if (!held.empty()) {
            const auto place = held.begin() + below(static_cast<std::uint32_t>(held.size()));
            cache.Release(*place);
            ASSERT_EQ(*place, GFX::FreedTexture());
            held.erase(place);
        }
        std::set<std::uint64_t> expected;
        for (const auto& texture : held) expected.insert(texture.piGDIP);
        ASSERT_EQ(gpu.LiveTextures(), expected) << step;
        ASSERT_EQ(cache.Held().size(), expected.size()) << step;
    }
    for (auto& texture : held) cache.Release(texture);
    EXPECT_TRUE(gpu.LiveTextures().empty());
    EXPECT_TRUE(cache.Held().empty());
}
