#include "gui/screen.h"

#include "gui/settings.h"
#include "tests/gui/recording_root.h"
#include "tests/support/own_settings.h"
#include "tests/support/recording_gpu.h"
#include "utils/location.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

using Lines = std::vector<std::string>;

struct SWindowWithBoxes final : IWindow {
    bool Exists() const noexcept override { return exists; }
    void SetRate(std::uint32_t rate) noexcept override { rates.push_back(rate); }
    void ShowBox(std::u16string_view, std::u16string_view text) noexcept override {
        boxes.push_back(Utils::ToUtf8(text));
    }

    bool exists = true;
    std::vector<std::uint32_t> rates;
    Lines boxes;
};

/// Four renderers, of which those work that the test names.
class Screen : public testing::Test {
protected:
    COwnSettings settings;
    SWindowWithBoxes window;
    static inline std::vector<std::uint32_t> made;
    static inline std::vector<std::uint32_t> working;

    Screen() {
        made.clear();
        working = {0, 1, 2, 3};
        GFX::UseRenderers(&Table);
    }
    ~Screen() override { GFX::UseRenderers(nullptr); }

    static std::optional<std::uint32_t> Stored(const char16_t* name) { return StoredNumber(name); }

private:
    template<std::uint32_t Number>
    static std::unique_ptr<GFX::GPU> Make(const GFX::SRendererTarget&, GFX::EReason) {
        made.push_back(Number);
        auto gpu = std::make_unique<CRecordingGpu>();
        gpu->ready = std::find(working.begin(), working.end(), Number) != working.end();
        return gpu;
    }
    static constexpr GFX::RendererTable Table{{{u"Software", Make<0>, true}, {u"OpenGL", Make<1>, true},
        {u"Direct3D9", Make<2>, true}, {u"Direct2D", Make<3>, true}}};
};

using Numbers = std::vector<std::uint32_t>;

} // namespace

TEST_F(Screen, BeginsWithTheDefaultsWhenNothingIsStored) {
    CRecordingRoot root({&window, nullptr});
    EXPECT_EQ(root.Screen().Renderer(), 2u);
    EXPECT_EQ(root.FPS(), 60u);
    EXPECT_TRUE(root.Screen().Create());
    EXPECT_EQ(made, Numbers{2});
    EXPECT_EQ(Stored(u"GFX"), std::nullopt) << "nothing that the user chose";
}

TEST_F(Screen, TakesWhatIsStoredIfItIsSane) {
    StoreNumber(u"GFX", 1);
    for (const std::uint32_t rate : {30u, 60u, 100u}) {
        StoreNumber(u"FPS", rate);
        EXPECT_EQ(CRecordingRoot().FPS(), rate);
    }
    EXPECT_EQ(CRecordingRoot().Screen().Renderer(), 1u);
    for (const std::uint32_t none : {0u, 1u, 59u, 61u, 0xFFFFFFFFu}) {
        StoreNumber(u"FPS", none);
        EXPECT_EQ(CRecordingRoot().FPS(), 60u) << none;
    }
    for (const std::uint32_t none : {4u, 0xFFFFFFFFu}) {
        StoreNumber(u"GFX", none);
        EXPECT_EQ(CRecordingRoot().Screen().Renderer(), 2u) << none;
    }
}

TEST_F(Screen, AValueOfAnotherLengthIsNone) {
    Utils::WriteUniversal(settings.At(u"GFX"), "\1\0\0", 3);
    Utils::WriteUniversal(settings.At(u"FPS"), "\x1E\0\0\0\0", 5);
    CRecordingRoot root;
    EXPECT_EQ(root.Screen().Renderer(), 2u);
    EXPECT_EQ(root.FPS(), 60u);
}

TEST_F(Screen, WithoutAWindowNoRendererIsMade) {
    window.exists = false;
    CRecordingRoot root({&window, nullptr});
    EXPECT_FALSE(root.Screen().Create());
    EXPECT_FALSE(root.GPU().IsReady());
    EXPECT_EQ(made, Numbers{});
}

TEST_F(Screen, KeepsWhatItFellBackToForTheNextSession) {
    working = {3};
    CRecordingRoot root({&window, nullptr});
    EXPECT_TRUE(root.Screen().Create());
    EXPECT_EQ(made, (Numbers{2, 1, 3}));
    EXPECT_EQ(root.Screen().Renderer(), 3u);
    EXPECT_EQ(Stored(u"GFX"), 3u);
    EXPECT_EQ(window.boxes.size(), 2u);
}

TEST_F(Screen, WithoutAnyRendererNothingIsDrawnAndNothingStored) {
    working = {};
    CRecordingRoot root({&window, nullptr});
    EXPECT_FALSE(root.Screen().Create());
    EXPECT_EQ(made, (Numbers{2, 1, 3, 0}));
    EXPECT_EQ(Stored(u"GFX"), std::nullopt);
    EXPECT_EQ(window.boxes.size(), 4u);
    root.Render(16);
    EXPECT_TRUE(root.Frame().IsRedrawDue());
}

TEST_F(Screen, AChoiceOfTheUserIsStoredOnceItWorks) {
    CRecordingRoot root({&window, nullptr});
    root.Screen().Create();
    EXPECT_TRUE(root.Screen().SetRenderer(0));
    EXPECT_EQ(Stored(u"GFX"), 0u);
    EXPECT_EQ(made, (Numbers{2, 0}));
    EXPECT_TRUE(root.Screen().SetRenderer(0)) << "the present one";
    EXPECT_EQ(made, (Numbers{2, 0}));
}

TEST_F(Screen, AChoiceThatFailsStoresTheOneThatWorked) {
    working = {0, 2};
    CRecordingRoot root({&window, nullptr});
    root.Screen().Create();
    EXPECT_TRUE(root.Screen().SetRenderer(1));
    EXPECT_EQ(made, (Numbers{2, 1, 3, 0}));
    EXPECT_EQ(Stored(u"GFX"), 0u);
    EXPECT_EQ(root.Screen().Renderer(), 0u);
}

TEST_F(Screen, AnotherRendererGetsAllTexturesBackFirst) {
    struct SOnePicture final : IPictures {
        std::unique_ptr<Pixels::SBitmap> LoadImage(
            const std::u16string&, std::int32_t, std::int32_t, std::int32_t) override {
            return std::make_unique<Pixels::SBitmap>(Pixels::TransparentBitmap(8, 8));
        }
    } pictures;
    CRecordingRoot root({&window, &pictures});
    root.Screen().Create();
    SWidgetInfo info;
    info.sImage = u"Any.png";
    CWidget widget(root, info);
    widget.Draw(0);
    auto* const first = dynamic_cast<CRecordingGpu*>(&root.GPU());
    ASSERT_NE(first, nullptr);
    first->MakeBackdrop(root.Screen().Backdrop(), 4, 4);
    EXPECT_EQ(first->LiveTextures().size(), 2u);
    root.Screen().Release();
    EXPECT_EQ(widget.sTexture.piGDIP, 0u);
    EXPECT_EQ(root.Screen().Backdrop().piGDIP, 0u);
    EXPECT_EQ(root.Textures().Held(), std::vector<std::u16string>{});
    EXPECT_FALSE(root.GPU().IsReady());
    root.Screen().Create();
    widget.Draw(0);
    EXPECT_NE(widget.sTexture.piGDIP, 0u) << "fetched again";
}

TEST_F(Screen, ALostDeviceIsMadeAnewAtTheNextTickAndStoresNothing) {
    StoreNumber(u"GFX", 1);
    CRecordingRoot root({&window, nullptr});
    root.Screen().Create();
    root.Frame().Tick(1000);
    EXPECT_EQ(made, Numbers{1}) << "nothing is due";
    dynamic_cast<CRecordingGpu&>(root.GPU()).renewalDue = true;
    root.Frame().Tick(1016);
    EXPECT_EQ(made, (Numbers{1, 1}));
    EXPECT_EQ(root.Screen().Renderer(), 1u);
    EXPECT_FALSE(dynamic_cast<CRecordingGpu&>(root.GPU()).lines.empty()) << "it draws in the same tick";
    root.Frame().Tick(1032);
    EXPECT_EQ(made, (Numbers{1, 1}));
    working = {0};
    dynamic_cast<CRecordingGpu&>(root.GPU()).renewalDue = true;
    root.Frame().Tick(5000);
    EXPECT_EQ(made, (Numbers{1, 1, 1, 3, 0}));
    EXPECT_EQ(Stored(u"GFX"), 1u);
}

TEST_F(Screen, ADeviceThatIsLostAtOnceIsMadeOnceASecond) {
    CRecordingRoot root({&window, nullptr});
    root.Screen().Create();
    for (std::uint32_t n = 0; n < 100; ++n) {
        dynamic_cast<CRecordingGpu&>(root.GPU()).renewalDue = true;
        root.Frame().Tick(0xFFFFFF00u + 16 * n); // the time wraps meanwhile
    }
    EXPECT_EQ(made.size(), 3u) << "the first, and two in 1.6 seconds";
}

TEST_F(Screen, TheRateIsStoredAndReachesTheWindowIfThereIsOne) {
    CRecordingRoot root({&window, nullptr});
    root.SetFPS(100);
    EXPECT_EQ(root.FPS(), 100u);
    EXPECT_EQ(window.rates, Numbers{100});
    EXPECT_EQ(Stored(u"FPS"), 100u);
    StoreNumber(u"FPS", 30);
    root.SetFPS(100);
    EXPECT_EQ(window.rates, Numbers{100});
    EXPECT_EQ(Stored(u"FPS"), 30u) << "the present rate does nothing";
    root.SetFPS(0);
    EXPECT_EQ(root.FPS(), 100u);
    window.exists = false;
    root.SetFPS(60);
    EXPECT_EQ(window.rates, Numbers{100});
    EXPECT_EQ(Stored(u"FPS"), 60u);
}
